// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <string_view>

#include "kestrel/Export.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::MetaObj {

class FieldLayout;
class FieldName;
class LayoutRef;
class MetaBool;
class MetaInt;
class MetaString;
class MetaList;

/// Whether `name` is valid for a structure type: one or more ASCII letters or digits.
KESTREL_API bool IsValidStructName(const std::string& name);

/// Whether `name` is valid for a field: every name is, even the empty one.
KESTREL_API bool IsValidFieldName(const std::string& name);

/// A structure: a type name and named fields, each a value with optional documentation.
///
/// Fields are in ascending byte order of their names, whatever the order in which they were set. A
/// structure may be bound to another structure, its definition; it may then have only fields that
/// the definition has. After a structure is locked, no field can be added or removed. Values are
/// shared with their other owners. For use in several threads, see MetaObject.
///
/// A null `const char*` counts as the empty string.
class KESTREL_API MetaStruct : public MetaObject {
 public:
  /// A value and its documentation.
  struct KESTREL_API Field {
    /// A field with this value, which is shared, and this documentation.
    Field(const std::shared_ptr<MetaObject>& value, const std::string& documentation);
    /// @{
    /// Moves both.
    Field(Field&& other);
    Field& operator=(Field&& other);
    /// @}

    /// The value, which is shared with its other owners.
    std::shared_ptr<MetaObject> value;
    /// The documentation, empty if there is none.
    std::string documentation;
  };

  /// @{
  /// For `New` only; no other caller can make the flag.
  MetaStruct(const std::string& typeName, FactoryFlag flag);
  MetaStruct(const std::shared_ptr<MetaStruct>& definition, FactoryFlag flag);
  MetaStruct(LayoutRef&& layout, FactoryFlag flag);
  /// @}
  ~MetaStruct() override;

  /// @{
  /// Makes an empty, unlocked structure without a definition.
  /// Throws KestrelException when `IsValidStructName(typeName)` is false.
  static std::shared_ptr<MetaStruct> New(const std::string& typeName);
  static std::shared_ptr<MetaStruct> New(std::string&& typeName);
  static std::shared_ptr<MetaStruct> New(const char* typeName);
  /// @}

  /// Makes an empty, unlocked structure that has the type name of `definition` and is bound to it.
  /// The structure shares and locks `definition`.
  /// Throws KestrelException when `definition` is null.
  static std::shared_ptr<MetaStruct> New(const std::shared_ptr<MetaStruct>& definition);

  /// Sets the field `name` to `value` and `documentation`; replaces both if the field exists.
  ///
  /// Throws KestrelException when `value` is null, when the definition has no such field, or when
  /// the structure is locked and has no such field. The structure is unchanged then. The kind of
  /// the value is not checked here.
  void SetField(const std::string& name, const std::shared_ptr<MetaObject>& value,
                const std::string& documentation);

  /// @{
  /// As above, without documentation. A value that is not an object yet becomes one; a vector
  /// becomes a list of the matching element kind.
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
  /// @}
  /// Always throws KestrelException, as for every null value.
  void SetField(const std::string& name, std::nullptr_t value);

  /// @{
  /// Like the operations above, with a NUL-terminated name.
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
  /// @}
  /// Always throws KestrelException, as for every null value.
  void SetField(const char* name, std::nullptr_t value);

  /// The value of the field, null when there is no such field.
  std::shared_ptr<MetaObject> GetField(const std::string& name) const;

  /// Like `GetField`, but faster, because the value is not shared. The pointer is valid until the
  /// field is set again or removed, or this object is destroyed.
  const MetaObject* FindField(const std::string& name) const;

  /// Whether there is a field of that name.
  bool HasField(const std::string& name) const;

  /// The kind of the field's value. Throws the `int` 1, not a KestrelException, when there is no
  /// such field: call HasField first.
  MetaType GetFieldType(const std::string& name) const;

  /// The documentation of the field, or "Documentation missing" if it has none. The reference is
  /// valid until the structure changes.
  /// Throws KestrelException when there is no such field.
  const std::string& GetFieldDocumentation(const std::string& name) const;

  /// The names of all fields, in ascending byte order.
  std::vector<std::string> GetFieldNames() const;

  /// Removes the field; does nothing when there is no such field.
  /// Throws KestrelException when the structure is locked, whether or not it has the field.
  void RemoveField(const std::string& name);

  /// The type name. The reference is valid as long as this object exists.
  const std::string& GetTypeName() const;

  /// Locks the structure permanently: from now on no field can be added or removed. Values can
  /// still be replaced.
  void LockStructure();

  /// Whether the structure is bound to a definition.
  bool HasStructureDefinition() const;

  /// The definition, null when there is none.
  std::shared_ptr<MetaStruct> GetStructureDefinition() const;

  /// Whether this structure has the shape of its definition; true when there is none.
  bool MatchesStructureDefinition() const;

  /// Whether `other` is a structure with the same number of fields, with the same names and values
  /// of the same shapes. The comparison ends at the first field that is missing or differs.
  /// Messages that describe the mismatch are appended to `errors` unless that is null. A different
  /// type name appends a message but is not a mismatch. A null `other` matches, with a message.
  bool IsSameStructure(const std::shared_ptr<MetaObject>& other,
                       std::vector<std::string>* errors) const override;

  /// All fields, as in "{'a' => '1', 'b' => 'x', }". The separator ", " follows the last field too.
  std::string ToString() const override;

  /// The documentation of a field that was set without one: the empty string.
  static const std::string _docEmpty;

  /// What GetFieldDocumentation returns for such a field: "Documentation missing".
  static const std::string _docMissingStaticString;

 private:
  friend class FieldCursor;
  friend class ValueAccess;
  struct Overflow;

  static constexpr std::size_t kInlineSlots = 6;

  static std::shared_ptr<MetaStruct> Make(std::string_view typeName);

  void Store(std::string_view name, std::shared_ptr<MetaObject>&& value,
             std::string_view documentation);
  void StoreSlowly(std::string_view name, std::shared_ptr<MetaObject>&& value,
                   std::string_view documentation);
  void StoreOwn(std::string_view name, std::shared_ptr<MetaObject>&& value,
                std::string_view documentation);
  void RemoveOwn(std::string_view name);
  void CheckValue(std::string_view name, const std::shared_ptr<MetaObject>& value) const;
  void CheckNewField(std::string_view name) const;

  const std::shared_ptr<MetaObject>* Find(const FieldName& name) const;
  const std::shared_ptr<MetaObject>* FindOwn(std::string_view name) const;
  const std::string* FindDocumentation(const FieldName& name) const;
  const std::shared_ptr<MetaObject>* Slots() const;
  std::shared_ptr<MetaObject>* Slots();
  void InsertSlot(std::size_t position, std::shared_ptr<MetaObject>&& value);
  std::shared_ptr<MetaObject> TakeSlot(std::size_t position);
  std::shared_ptr<MetaObject>* AddOuterSlot();
  void UseOwnIndex();
  void UseLayout(LayoutRef&& layout);

  std::atomic<bool> locked_{false};  // several threads may lock one definition
  bool hasOwnIndex_ = false;
  const FieldLayout* layout_;  // shared; has no fields when the structure has its own index
  std::unique_ptr<Overflow> overflow_;  // if null, all values are in the slots below
  std::array<std::shared_ptr<MetaObject>, kInlineSlots> inline_;
  std::shared_ptr<MetaStruct> definition_;
};

}  // namespace Kestrel::MetaObj
