#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "kestrel/Export.h"

namespace Kestrel::MetaObj {

enum MetaType : std::int32_t { Int = 0, Bool = 1, String = 2, Struct = 3, List = 4 };
KESTREL_API const std::string& MetaTypeString(const MetaType& type);
class KESTREL_API MetaObject {
 public:
  class FactoryFlag;  // completed in the class; explicit private constructor, friends are the five
                      // value classes
  virtual bool IsSameStructure(const std::shared_ptr<MetaObject>& other,
                               std::vector<std::string>* errors) const;
  virtual std::string ToString() const = 0;
  virtual ~MetaObject();
  MetaType GetType() const;

 protected:
  explicit MetaObject(MetaType type);  // reachable for test doubles ("a kind that lies")
  MetaObject(const MetaObject&) = delete;
  MetaObject& operator=(const MetaObject&) = delete;

 private:
  MetaType type_;
};
class MetaObject::FactoryFlag {
  explicit FactoryFlag() {}
  friend class MetaBool;
  friend class MetaInt;
  friend class MetaString;
  friend class MetaStruct;
  friend class MetaList;
};
KESTREL_API std::ostream& operator<<(std::ostream& out, const MetaObject& object);

}  // namespace Kestrel::MetaObj
