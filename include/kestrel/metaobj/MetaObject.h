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

/// The kind of a value. The numbers never change.
enum MetaType : std::int32_t { Int = 0, Bool = 1, String = 2, Struct = 3, List = 4 };

/// Returns the display name of a kind: "Int", "Bool", "String", "Struct" or "List", and the empty
/// string for any other number. The reference stays valid until the library is unloaded.
KESTREL_API const std::string& MetaTypeString(const MetaType& type);

/// The base of all values: a kind, a comparison of shapes, and a conversion to a string.
///
/// Values are made by the static `New` operations of the five value classes and may have several
/// owners. A scalar never changes; a structure or list is filled first and, after it has been
/// passed on, only read. A value must not contain itself at any depth: comparing or printing it
/// would never end.
///
/// Values may be built, read and destroyed in several threads at the same time, as long as no
/// thread uses a value while another changes it. Only `SetField`, `RemoveField`, `LockStructure`,
/// `Add`, `AddAll`, `Delete`, `Reserve` and `EnsureCapacity` change a value. Several threads may
/// make structures and lists from one definition, although that locks the definition.
class KESTREL_API MetaObject {
 public:
  /// Passed to the constructors of the five value classes. Only these classes can make a flag, so
  /// their objects are made only by their `New` operations.
  class FactoryFlag;

  /// Whether `other` has the same shape as this value. For a scalar: whether both have the same
  /// kind; the values are not compared. A mismatch does not throw: messages that describe it are
  /// appended to `errors` unless that is null. A null `other` differs from a scalar, without a
  /// message.
  virtual bool IsSameStructure(const std::shared_ptr<MetaObject>& other,
                               std::vector<std::string>* errors) const;

  /// The value as a string.
  virtual std::string ToString() const = 0;

  /// Defined here, so that the compiler can inline it into the destructors of scalars.
  virtual ~MetaObject() = default;

  /// The kind; it never changes.
  MetaType GetType() const { return type_; }

 protected:
  /// For classes other than the five value classes.
  explicit MetaObject(MetaType type);

  /// For the five value classes, which can make the flag.
  MetaObject(MetaType type, FactoryFlag flag);

  MetaObject(const MetaObject&) = delete;
  MetaObject& operator=(const MetaObject&) = delete;

 private:
  friend class ValueAccess;

  MetaType type_;
  bool isValueClass_;  // made with a flag, so the kind determines the class
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

/// Writes `object.ToString()` to `out` and returns `out`.
KESTREL_API std::ostream& operator<<(std::ostream& out, const MetaObject& object);

}  // namespace Kestrel::MetaObj
