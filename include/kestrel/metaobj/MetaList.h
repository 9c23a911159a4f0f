#pragma once

#include <cstddef>

#include "kestrel/Export.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

class MetaBool;
class MetaInt;
class MetaString;
class MetaStruct;
class KESTREL_API MetaList : public MetaObject {
 public:
  MetaList(MetaType elementKind, FactoryFlag flag);
  MetaList(MetaType elementKind, std::shared_ptr<MetaStruct>&& structure, FactoryFlag flag);
  static std::shared_ptr<MetaList> New(MetaType elementKind);
  static std::shared_ptr<MetaList> New(MetaType elementKind,
                                       const std::shared_ptr<MetaStruct>& structure);
  static std::shared_ptr<MetaList> New(MetaType elementKind,
                                       std::shared_ptr<MetaStruct>&& structure);
  static std::shared_ptr<MetaList> New(MetaType elementKind,
                                       const std::shared_ptr<MetaObject>& structure);
  static std::shared_ptr<MetaList> New(
      MetaType elementKind,
      std::nullptr_t structure);
  void Add(const std::shared_ptr<MetaObject>& item);
  void Add(const std::shared_ptr<MetaBool>& item);
  void Add(const std::shared_ptr<MetaInt>& item);
  void Add(const std::shared_ptr<MetaString>& item);
  void Add(const std::shared_ptr<MetaStruct>& item);
  void Add(bool value);
  void Add(long value);
  void Add(int value);
  void Add(const char* value);
  void Add(std::string&& value);
  void Add(const std::string& value);
  void Add(std::nullptr_t item);
  void AddAll(const std::vector<bool>& values);
  void AddAll(const std::vector<long>& values);
  void AddAll(const std::vector<std::string>& values);
  void AddAll(std::vector<std::string>&& values);
  MetaType GetListType() const;
  std::shared_ptr<MetaStruct> GetListStructure() const;
  const std::vector<std::shared_ptr<MetaObject>>& GetObjects() const;
  std::size_t GetCount() const;
  const std::shared_ptr<MetaObject>& operator[](unsigned int index) const;
  std::shared_ptr<MetaObject> GetItem(unsigned int index) const;
  void Delete(unsigned int index);
  void Reserve(std::size_t n);
  void EnsureCapacity(std::size_t n);
  bool Validate(const std::shared_ptr<MetaObject>& item, std::vector<std::string>* errors) const;
  bool IsSameStructure(const std::shared_ptr<MetaObject>& other,
                       std::vector<std::string>* errors) const override;
  std::string ToString() const override;

 private:
  std::shared_ptr<MetaStruct> structure_;
  std::vector<std::shared_ptr<MetaObject>> items_;
  MetaType elementKind_;
};

}  // namespace Kestrel::MetaObj
