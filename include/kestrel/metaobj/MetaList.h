// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>

#include "kestrel/Export.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

class MetaBool;
class MetaInt;
class MetaString;
class MetaStruct;

/// A sequence of scalars of one kind, or of structures of one declared shape.
///
/// Every element is checked when it is added, so a list is well-formed unless another owner changes
/// an element later. The element kind and the declared structure never change. There are no lists
/// of lists. Elements are shared with their other owners. For use in several threads, see
/// MetaObject.
class KESTREL_API MetaList : public MetaObject {
 public:
  /// @{
  /// For `New` only; no other caller can make the flag.
  MetaList(MetaType elementKind, FactoryFlag flag);
  MetaList(MetaType elementKind, std::shared_ptr<MetaStruct>&& structure, FactoryFlag flag);
  /// @}
  ~MetaList() override;

  /// Makes an empty list of integers, booleans or strings.
  /// Throws KestrelException for every other kind.
  static std::shared_ptr<MetaList> New(MetaType elementKind);

  /// @{
  /// Makes an empty list of structures that have the shape of `structure`. The list shares and
  /// locks `structure`. If `structure` is null, the list accepts no element.
  /// Throws KestrelException for every kind except Struct.
  static std::shared_ptr<MetaList> New(MetaType elementKind,
                                       const std::shared_ptr<MetaStruct>& structure);
  static std::shared_ptr<MetaList> New(MetaType elementKind,
                                       std::shared_ptr<MetaStruct>&& structure);
  /// @}
  /// @{
  /// As above; an object that is not a structure counts as null.
  static std::shared_ptr<MetaList> New(MetaType elementKind,
                                       const std::shared_ptr<MetaObject>& structure);
  static std::shared_ptr<MetaList> New(MetaType elementKind, std::nullptr_t structure);
  /// @}

  /// @{
  /// Appends `item`.
  /// Throws KestrelException when `item` is null, when its kind is not that of the list's elements,
  /// or when it is a structure whose shape is not the declared one. The list is unchanged then.
  void Add(const std::shared_ptr<MetaObject>& item);
  void Add(const std::shared_ptr<MetaBool>& item);
  void Add(const std::shared_ptr<MetaInt>& item);
  void Add(const std::shared_ptr<MetaString>& item);
  void Add(const std::shared_ptr<MetaStruct>& item);
  /// @}

  /// @{
  /// Appends an object made of `value`. A null `const char*` counts as the empty string.
  void Add(bool value);
  void Add(long value);
  void Add(int value);
  void Add(const char* value);
  void Add(std::string&& value);
  void Add(const std::string& value);
  /// @}
  /// Always throws KestrelException, as for every null item.
  void Add(std::nullptr_t item);

  /// @{
  /// Appends each value in turn, as `Add` does. If adding one throws, those before it stay in the
  /// list.
  void AddAll(const std::vector<bool>& values);
  void AddAll(const std::vector<long>& values);
  void AddAll(const std::vector<std::string>& values);
  void AddAll(std::vector<std::string>&& values);
  /// @}

  /// The kind of the elements.
  MetaType GetListType() const { return elementKind_; }

  /// The declared structure; null for a list of scalars and for a list made without a structure.
  std::shared_ptr<MetaStruct> GetListStructure() const;

  /// All elements. The reference is valid as long as this object exists, and shows later changes.
  const std::vector<std::shared_ptr<MetaObject>>& GetObjects() const { return items_; }

  /// The number of elements.
  std::size_t GetCount() const { return items_.size(); }

  /// The element at `index`, which must be less than GetCount(): there is no check. The reference
  /// is valid until the list changes.
  const std::shared_ptr<MetaObject>& operator[](unsigned int index) const { return items_[index]; }

  /// The element at `index`. Throws KestrelException if `index` is not less than GetCount().
  std::shared_ptr<MetaObject> GetItem(unsigned int index) const;

  /// Removes the element at `index`; the later ones move down by one.
  /// Throws KestrelException if `index` is not less than GetCount().
  void Delete(unsigned int index);

  /// Reserves memory for at least `n` elements in total.
  void Reserve(std::size_t n);

  /// Reserves memory for at least `n` elements in addition to those in the list.
  void EnsureCapacity(std::size_t n);

  /// Whether `item` may be added. If not, messages that describe the mismatch are appended to
  /// `errors` unless that is null. Never throws for a mismatch.
  bool Validate(const std::shared_ptr<MetaObject>& item, std::vector<std::string>* errors) const;

  /// Whether `other` is a list of the same element kind and, for structures, of the same declared
  /// shape. Two lists of structures also match if either has no declared structure. The elements do
  /// not matter. A null `other` does not match.
  bool IsSameStructure(const std::shared_ptr<MetaObject>& other,
                       std::vector<std::string>* errors) const override;

  /// The `ToString()` of all elements, joined with ", ".
  std::string ToString() const override;

 private:
  friend class ValueAccess;

  void Append(std::shared_ptr<MetaObject>&& item);

  MetaType elementKind_;
  std::shared_ptr<MetaStruct> structure_;
  std::vector<std::shared_ptr<MetaObject>> items_;
};

}  // namespace Kestrel::MetaObj
