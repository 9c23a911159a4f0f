// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "kestrel/Export.h"

namespace Kestrel::MetaObj {

/// The kind of a value. The numbers are fixed.
enum MetaType : std::int32_t { Int = 0, Bool = 1, String = 2, Struct = 3, List = 4 };

/// The display name of a kind: "Int", "Bool", "String", "Struct" or "List"; the empty text for a
/// number that names no kind. The reference stays valid until the library is unloaded.
KESTREL_API const std::string& MetaTypeString(const MetaType& type);

/// The base of all values: a kind, a comparison of shapes, a text.
///
/// Values are made by the static `New` operations of the five value classes alone and are held by
/// shared ownership. A scalar never changes; a structure or list is filled first and only read once
/// it has been passed on. A value that contains itself, however far down, must not be made:
/// comparing or printing it would never end.
///
/// Values may be built, read and destroyed in several threads at once, as long as no two threads
/// use the same value while one of them changes it. Only `SetField`, `RemoveField`,
/// `LockStructure`, `Add`, `AddAll`, `Delete`, `Reserve` and `EnsureCapacity` change a value. A
/// structure may serve as definition in several threads at once, although that locks it.
class KESTREL_API MetaObject {
 public:
  /// The pass-key of the value classes' constructors; only those classes can make one.
  class FactoryFlag;

  /// Whether `other` has the shape of this value. For a scalar: whether both are of one scalar
  /// kind; the values are not compared. Never throws for a mismatch: one text per problem is
  /// appended to `errors` unless that is null. A scalar differs from a null `other`, silently.
  virtual bool IsSameStructure(const std::shared_ptr<MetaObject>& other,
                               std::vector<std::string>* errors) const;

  /// The value as text.
  virtual std::string ToString() const = 0;

  /// Empty and here, so that letting go of a scalar costs no call.
  virtual ~MetaObject() = default;

  /// The kind, fixed when the value was made.
  MetaType GetType() const { return type_; }

 protected:
  /// For values that are not of the five classes.
  explicit MetaObject(MetaType type);

  /// For the five value classes, which alone have a flag to pass.
  MetaObject(MetaType type, FactoryFlag flag);

  MetaObject(const MetaObject&) = delete;
  MetaObject& operator=(const MetaObject&) = delete;

 private:
  friend class ValueAccess;

  MetaType type_;
  bool isValueClass_;  // made with a flag, so the kind tells the class
};

/// See MetaObject.
class MetaObject::FactoryFlag {
  explicit FactoryFlag() {}
  friend class MetaBool;
  friend class MetaInt;
  friend class MetaString;
  friend class MetaStruct;
  friend class MetaList;
};

inline MetaObject::MetaObject(MetaType type, FactoryFlag) : type_(type), isValueClass_(true) {}

/// Writes the text of `object` (its `ToString()`) to `out`.
KESTREL_API std::ostream& operator<<(std::ostream& out, const MetaObject& object);

}  // namespace Kestrel::MetaObj
