#pragma once

#include "kestrel/Export.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

class KESTREL_API MetaString : public MetaObject {
 public:
  MetaString(std::string&& value, FactoryFlag flag);
  static const std::shared_ptr<MetaString>& New();
  static std::shared_ptr<MetaString> New(std::string&& value);
  static std::shared_ptr<MetaString> New(const std::string& value);
  static std::shared_ptr<MetaString> New(const char* value);
  static std::shared_ptr<MetaString> NewUtf8WithEscapes(std::string&& value);
  const std::string& GetValue() const;
  std::string ToString() const override;
  static bool Init();
  static bool _sInitialized;

 private:
  std::string value_;
};

}  // namespace Kestrel::MetaObj
