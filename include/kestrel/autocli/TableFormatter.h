#pragma once

#include "kestrel/Export.h"
#include "kestrel/autocli/Formatter.h"

namespace Kestrel::AutoCli {

class KESTREL_API TableFormatter : public Formatter {
 public:
  TableFormatter();
  ~TableFormatter() override;
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;
};
KESTREL_API std::shared_ptr<MetaObj::MetaObject> GetSubField(
    std::shared_ptr<MetaObj::MetaStruct> record, const std::string& path);

}  // namespace Kestrel::AutoCli
