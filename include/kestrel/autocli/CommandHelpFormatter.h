#pragma once

#include "kestrel/Export.h"
#include "kestrel/autocli/Formatter.h"

namespace Kestrel::AutoCli {

class KESTREL_API CommandHelpFormatter : public Formatter {
 public:
  CommandHelpFormatter();
  ~CommandHelpFormatter() override;
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;
};
KESTREL_API std::string GetStringField(std::shared_ptr<MetaObj::MetaStruct> s,
                                       const std::string& name);

}  // namespace Kestrel::AutoCli
