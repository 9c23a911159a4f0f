#pragma once

#include "kestrel/Export.h"
#include "kestrel/autocli/Formatter.h"

namespace Kestrel::AutoCli {

class KESTREL_API CliDispatcherHelpFormatter : public Formatter {
 public:
  CliDispatcherHelpFormatter();
  ~CliDispatcherHelpFormatter() override;
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;
  bool ExtractString(const std::string& field, std::shared_ptr<MetaObj::MetaStruct> record,
                     std::string& value);
  bool HandleList(const std::string& typeName, std::shared_ptr<MetaObj::MetaList> nodes,
                  DisplayContext& display, std::ostream& out);
};

}  // namespace Kestrel::AutoCli
