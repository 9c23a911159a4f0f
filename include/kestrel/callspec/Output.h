#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::CallSpec {

class KESTREL_API Output {
 public:
  enum OutputType : std::int32_t { Ordinary = 0, Help = 2 };  // the values are fixed
  virtual ~Output();
  static std::shared_ptr<Output> New();
  void SetRootObject(const std::shared_ptr<MetaObj::MetaObject>& root);
  void SetRootObject(const std::shared_ptr<MetaObj::MetaBool>& root);
  void SetRootObject(const std::shared_ptr<MetaObj::MetaInt>& root);
  void SetRootObject(const std::shared_ptr<MetaObj::MetaString>& root);
  void SetRootObject(const std::shared_ptr<MetaObj::MetaList>& root);
  void SetRootObject(const std::shared_ptr<MetaObj::MetaStruct>& root);
  void SetRootObject(
      std::nullptr_t root);
  std::shared_ptr<MetaObj::MetaObject> GetRootObject() const;
  void AddErrorMessage(const std::string& message);
  void AddErrorMessage(const char* message);
  void AddErrorMessage(std::string&& message);
  bool HasError() const;
  const std::vector<std::string>& GetErrors() const;
  void SetOutputType(Output::OutputType type);
  Output::OutputType GetOutputType() const;

 protected:
  Output();

 private:
  std::vector<std::string> errors_;
  std::shared_ptr<MetaObj::MetaObject> root_;
  OutputType type_;
};

}  // namespace Kestrel::CallSpec
