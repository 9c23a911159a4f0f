#pragma once

#include "kestrel/Export.h"
#include "kestrel/autocli/Formatter.h"

namespace Kestrel::AutoCli {

class KESTREL_API PythonFormatter : public Formatter {
 public:
  PythonFormatter();
  ~PythonFormatter() override;
  void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
              DisplayContext& display, std::ostream& out) override;
  void Format(std::shared_ptr<MetaObj::MetaObject> value, std::ostream& out, int level);
  static bool IsAllAscii(const std::string& text);
};

}  // namespace Kestrel::AutoCli
