#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/autocli/Formatter.h"
#include "kestrel/autocli/Namespace.h"

namespace Kestrel::AutoCli {

class KESTREL_API Plugin {
 public:
  virtual ~Plugin();
  virtual void Initialize() = 0;
  virtual const std::string& GetName() const = 0;
  virtual void RegisterNamespaces(std::shared_ptr<Namespace> root) = 0;
  virtual bool HasFormatter(const std::string& name) = 0;
  virtual std::shared_ptr<Formatter> GetFormatter(const std::string& name) = 0;
  virtual const std::vector<std::shared_ptr<Formatter>>&
  GetFormatters() = 0;  // an override may return a non-const reference (covariant)
};

}  // namespace Kestrel::AutoCli
