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

/// A homogeneous sequence: scalars of one kind, or structures of one declared shape.
///
/// Every element is checked when it is added, so a list is always well-formed. The element kind
/// and the declared structure stay as they were when the list was made. There are no lists of
/// lists. Elements are shared with whoever else holds them.
class KESTREL_API MetaList : public MetaObject {
 public:
  /// For `New` alone, which can make the flag.
  MetaList(MetaType elementKind, FactoryFlag flag);
  MetaList(MetaType elementKind, std::shared_ptr<MetaStruct>&& structure, FactoryFlag flag);
  ~MetaList() override;

  /// An empty list of integers, booleans or strings.
  /// Throws KestrelException for the kinds Struct and List.
  static std::shared_ptr<MetaList> New(MetaType elementKind);

  /// An empty list of structures of the shape of `structure`, which it keeps and locks. Without a
  /// structure (null) the list stays empty: it accepts no element.
  /// Throws KestrelException for every kind but Struct.
  static std::shared_ptr<MetaList> New(MetaType elementKind,
                                       const std::shared_ptr<MetaStruct>& structure);
  static std::shared_ptr<MetaList> New(MetaType elementKind,
                                       std::shared_ptr<MetaStruct>&& structure);
  /// As above; an object that is no structure counts as null.
  static std::shared_ptr<MetaList> New(MetaType elementKind,
                                       const std::shared_ptr<MetaObject>& structure);
  static std::shared_ptr<MetaList> New(MetaType elementKind, std::nullptr_t structure);

  /// Appends `item`.
  /// Throws KestrelException, with the list unchanged, when `item` is null, of another kind than
  /// the list's elements, or a structure that differs from the declared one.
  void Add(const std::shared_ptr<MetaObject>& item);
  void Add(const std::shared_ptr<MetaBool>& item);
  void Add(const std::shared_ptr<MetaInt>& item);
  void Add(const std::shared_ptr<MetaString>& item);
  void Add(const std::shared_ptr<MetaStruct>& item);

  /// Appends the value, made into an object. A null `const char*` counts as the empty text.
  void Add(bool value);
  void Add(long value);
  void Add(int value);
  void Add(const char* value);
  void Add(std::string&& value);
  void Add(const std::string& value);
  /// Always throws, as for every null item.
  void Add(std::nullptr_t item);

  /// Appends each value in turn; what was added before a failure stays.
  void AddAll(const std::vector<bool>& values);
  void AddAll(const std::vector<long>& values);
  void AddAll(const std::vector<std::string>& values);
  void AddAll(std::vector<std::string>&& values);

  /// The kind of the elements.
  MetaType GetListType() const { return elementKind_; }

  /// An owner of the declared structure, empty for a list of scalars and for one made without.
  std::shared_ptr<MetaStruct> GetListStructure() const;

  /// All elements; the reference lives as long as this object and follows its changes.
  const std::vector<std::shared_ptr<MetaObject>>& GetObjects() const { return items_; }

  /// How many elements there are.
  std::size_t GetCount() const { return items_.size(); }

  /// The element at `index`, which must be below GetCount(): there is no check.
  const std::shared_ptr<MetaObject>& operator[](unsigned int index) const { return items_[index]; }

  /// The element at `index`. Throws KestrelException at or past the end.
  std::shared_ptr<MetaObject> GetItem(unsigned int index) const;

  /// Removes the element at `index`; the later ones move down by one.
  /// Throws KestrelException at or past the end.
  void Delete(unsigned int index);

  /// Makes room for at least `n` elements in all.
  void Reserve(std::size_t n);

  /// Makes room for at least `n` elements more than there are.
  void EnsureCapacity(std::size_t n);

  /// Whether `item` may become an element; if not, one text per problem is appended to `errors`
  /// unless that is null. Never throws for a mismatch.
  bool Validate(const std::shared_ptr<MetaObject>& item, std::vector<std::string>* errors) const;

  /// Whether `other` is a list of the same element kind and, for structures, of the same declared
  /// shape; two lists of structures match also when either has no structure. Elements are not
  /// looked at. A null `other` is no match.
  bool IsSameStructure(const std::shared_ptr<MetaObject>& other,
                       std::vector<std::string>* errors) const override;

  /// The elements' texts, joined with ", ".
  std::string ToString() const override;

 private:
  friend class ValueAccess;

  void Append(std::shared_ptr<MetaObject>&& item);

  MetaType elementKind_;
  std::shared_ptr<MetaStruct> structure_;
  std::vector<std::shared_ptr<MetaObject>> items_;
};

}  // namespace Kestrel::MetaObj
