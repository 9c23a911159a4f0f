#pragma once

#include <cstddef>
#include <map>

#include "kestrel/Export.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

class MetaBool;
class MetaInt;
class MetaString;
class MetaList;
KESTREL_API bool IsValidStructName(const std::string& name);
KESTREL_API bool IsValidFieldName(const std::string& name);
class KESTREL_API MetaStruct : public MetaObject {
 public:
  struct Field {
    Field(const std::shared_ptr<MetaObject>& value, const std::string& documentation);
    Field(Field&& other);
    Field& operator=(Field&& other);
    std::shared_ptr<MetaObject> value;
    std::string documentation;
  };
  MetaStruct(const std::string& typeName, FactoryFlag flag);
  MetaStruct(const std::shared_ptr<MetaStruct>& definition, FactoryFlag flag);
  static std::shared_ptr<MetaStruct> New(const std::string& typeName);
  static std::shared_ptr<MetaStruct> New(std::string&& typeName);
  static std::shared_ptr<MetaStruct> New(const char* typeName);
  static std::shared_ptr<MetaStruct> New(const std::shared_ptr<MetaStruct>& definition);
  void SetField(const std::string& name, const std::shared_ptr<MetaObject>& value,
                const std::string& documentation);
  void SetField(const std::string& name, const std::shared_ptr<MetaObject>& value);
  void SetField(const std::string& name, const std::shared_ptr<MetaStruct>& value);
  void SetField(const std::string& name, const std::shared_ptr<MetaList>& value);
  void SetField(const std::string& name, const std::shared_ptr<MetaInt>& value);
  void SetField(const std::string& name, const std::shared_ptr<MetaBool>& value);
  void SetField(const std::string& name, const std::shared_ptr<MetaString>& value);
  void SetField(const std::string& name, long value);
  void SetField(const std::string& name, int value);
  void SetField(const std::string& name, bool value);
  void SetField(const std::string& name, const std::string& value);
  void SetField(const std::string& name, std::string&& value);
  void SetField(const std::string& name, const char* value);
  void SetField(const std::string& name, const std::vector<std::string>& value);
  void SetField(const std::string& name, std::vector<std::string>&& value);
  void SetField(const std::string& name, const std::vector<long>& value);
  void SetField(const std::string& name, const std::vector<bool>& value);
  void SetField(const std::string& name,
                std::nullptr_t value);
  void SetField(const char* name, const std::shared_ptr<MetaObject>& value);
  void SetField(const char* name, const std::shared_ptr<MetaStruct>& value);
  void SetField(const char* name, const std::shared_ptr<MetaList>& value);
  void SetField(const char* name, const std::shared_ptr<MetaInt>& value);
  void SetField(const char* name, const std::shared_ptr<MetaBool>& value);
  void SetField(const char* name, const std::shared_ptr<MetaString>& value);
  void SetField(const char* name, long value);
  void SetField(const char* name, int value);
  void SetField(const char* name, bool value);
  void SetField(const char* name, const std::string& value);
  void SetField(const char* name, std::string&& value);
  void SetField(const char* name, const char* value);
  void SetField(const char* name, const std::vector<std::string>& value);
  void SetField(const char* name, std::vector<std::string>&& value);
  void SetField(const char* name, const std::vector<long>& value);
  void SetField(const char* name, const std::vector<bool>& value);
  void SetField(const char* name, std::nullptr_t value);
  std::shared_ptr<MetaObject> GetField(const std::string& name) const;
  bool HasField(const std::string& name) const;
  MetaType GetFieldType(const std::string& name) const;  // throws int 1
  const std::string& GetFieldDocumentation(const std::string& name) const;
  std::vector<std::string> GetFieldNames() const;
  void RemoveField(const std::string& name);
  const std::string& GetTypeName() const;
  void LockStructure();
  bool HasStructureDefinition() const;
  std::shared_ptr<MetaStruct> GetStructureDefinition() const;
  bool MatchesStructureDefinition() const;
  bool IsSameStructure(const std::shared_ptr<MetaObject>& other,
                       std::vector<std::string>* errors) const override;
  std::string ToString() const override;
  static const std::string _docEmpty;
  static const std::string _docMissingStaticString;

 private:
  std::map<std::string, Field> fields_;
  std::shared_ptr<MetaStruct> definition_;
  std::string typeName_;
  bool locked_;
};

}  // namespace Kestrel::MetaObj
