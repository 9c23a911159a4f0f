#pragma once

#include "kestrel/Export.h"
#include "kestrel/callspec/Output.h"

namespace Kestrel::CallSpec {

class KESTREL_API OutputSpec {
 public:
  static std::shared_ptr<OutputSpec> New();
  void SetRootObject(std::shared_ptr<MetaObj::MetaObject>&& root);
  void SetRootObject(const std::shared_ptr<MetaObj::MetaObject>& root);
  void SetRootObject(const std::shared_ptr<MetaObj::MetaBool>& root);
  void SetRootObject(const std::shared_ptr<MetaObj::MetaInt>& root);
  void SetRootObject(const std::shared_ptr<MetaObj::MetaString>& root);
  void SetRootObject(const std::shared_ptr<MetaObj::MetaList>& root);
  void SetRootObject(const std::shared_ptr<MetaObj::MetaStruct>& root);
  void SetRootObject(std::nullptr_t root);
  std::shared_ptr<MetaObj::MetaObject> GetRootObject() const;
  void SetDescription(const std::string& description);
  const std::string& GetDescription() const;
  bool Validate(const std::shared_ptr<Output>& output, std::vector<std::string>* errors) const;
  static const std::string _docMissingStaticString;

 private:
  OutputSpec();
  std::shared_ptr<MetaObj::MetaObject> root_;
  std::string description_;
};

}  // namespace Kestrel::CallSpec
