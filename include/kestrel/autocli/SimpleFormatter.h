#pragma once

#include "kestrel/Export.h"
#include "kestrel/autocli/Formatter.h"

namespace Kestrel::AutoCli {

class KESTREL_API SimpleFormatter : public Formatter {
 public:
  SimpleFormatter();
  ~SimpleFormatter() override;
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;
  void Format(std::shared_ptr<MetaObj::MetaObject> value, FormatParameters& params,
              std::ostream& out, int level);
  void FormatStruct(std::shared_ptr<MetaObj::MetaStruct> record, FormatParameters& params,
                    std::ostream& out, int level);
  void FormatList(std::shared_ptr<MetaObj::MetaList> list, FormatParameters& params,
                  std::ostream& out, int level);
};
KESTREL_API std::string GetIndent(int level);

}  // namespace Kestrel::AutoCli
