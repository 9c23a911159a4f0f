#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/autocli/DisplayContext.h"
#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/autocli/FormatterParam.h"
#include "kestrel/callspec/Output.h"

namespace Kestrel::AutoCli {

class KESTREL_API Formatter {
 public:
  explicit Formatter(const std::string& name);
  virtual ~Formatter();
  virtual void Format(const std::shared_ptr<CallSpec::Output>& output, FormatParameters& params,
                      DisplayContext& display, std::ostream& out) = 0;
  const std::string& GetName() const;
  const std::string& GetDescription() const;
  const std::vector<FormatterParam>& GetParams() const;

 protected:
  std::string description;
  std::vector<FormatterParam> params;

 private:
  std::string name;
};

}  // namespace Kestrel::AutoCli
