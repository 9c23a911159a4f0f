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

/// Whether `name` may name a structure type: one or more ASCII letters or digits.
KESTREL_API bool IsValidStructName(const std::string& name);

/// Whether `name` may name a field: every name may, the empty one included.
KESTREL_API bool IsValidFieldName(const std::string& name);

/// A named record: a type name and named fields, each a value with an optional documentation text.
///
/// Fields are ordered by the bytes of their names, never by insertion. A structure may be bound to
/// a definition, another structure whose fields are the only ones that it may have, and it may be
/// locked, after which its set of fields stays. Values are shared with whoever else holds them.
///
/// Where a name or a text is taken as `const char*`, null counts as the empty text.
class KESTREL_API MetaStruct : public MetaObject {
 public:
  /// A value and its documentation text.
  struct KESTREL_API Field {
    Field(const std::shared_ptr<MetaObject>& value, const std::string& documentation);
    Field(Field&& other);
    Field& operator=(Field&& other);

    std::shared_ptr<MetaObject> value;
    std::string documentation;
  };

  /// For `New` alone, which can make the flag.
  MetaStruct(const std::string& typeName, FactoryFlag flag);
  MetaStruct(const std::shared_ptr<MetaStruct>& definition, FactoryFlag flag);
  MetaStruct(LayoutRef&& layout, FactoryFlag flag);
  ~MetaStruct() override;

  /// An empty, unlocked structure without definition.
  /// Throws KestrelException when IsValidStructName refuses the name.
  static std::shared_ptr<MetaStruct> New(const std::string& typeName);
  static std::shared_ptr<MetaStruct> New(std::string&& typeName);
  static std::shared_ptr<MetaStruct> New(const char* typeName);

  /// An empty, unlocked structure of the definition's type name, bound to the definition, which it
  /// keeps and locks. Throws KestrelException when `definition` is null.
  static std::shared_ptr<MetaStruct> New(const std::shared_ptr<MetaStruct>& definition);

  /// Stores `value` and `documentation` under `name`, in the place of what stood there.
  ///
  /// Throws KestrelException, with the structure unchanged, when `value` is null, when the
  /// definition has no field of that name, or when the structure is locked and has none itself.
  /// The kind of the value is not checked here.
  void SetField(const std::string& name, const std::shared_ptr<MetaObject>& value,
                const std::string& documentation);

  /// As above, without documentation. A value that is not an object yet becomes one; a vector
  /// becomes a list of its elements' kind.
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
  /// Always throws, as for every null value.
  void SetField(const std::string& name, std::nullptr_t value);

  /// As above, with the name as a text ended by a NUL.
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
  /// Always throws, as for every null value.
  void SetField(const char* name, std::nullptr_t value);

  /// An owner of the field's value, empty when there is no such field.
  std::shared_ptr<MetaObject> GetField(const std::string& name) const;

  /// Whether there is a field of that name.
  bool HasField(const std::string& name) const;

  /// The kind of the field's value. Throws the `int` 1, and no KestrelException, when there is no
  /// such field: ask HasField first.
  MetaType GetFieldType(const std::string& name) const;

  /// The field's documentation text, "Documentation missing" when it has none. The reference is
  /// good until the structure's fields change. Throws KestrelException when there is no such field.
  const std::string& GetFieldDocumentation(const std::string& name) const;

  /// The names of all fields in their order.
  std::vector<std::string> GetFieldNames() const;

  /// Removes the field; an unknown name is ignored.
  /// Throws KestrelException when the structure is locked, whether or not it has the field.
  void RemoveField(const std::string& name);

  /// The type name; the reference lives as long as this object.
  const std::string& GetTypeName() const;

  /// From now on no field can be added or removed; values may still be replaced. For good.
  void LockStructure();

  /// Whether the structure is bound to a definition.
  bool HasStructureDefinition() const;

  /// An owner of the definition, empty when there is none.
  std::shared_ptr<MetaStruct> GetStructureDefinition() const;

  /// Whether this structure has the shape of its definition; true when there is none.
  bool MatchesStructureDefinition() const;

  /// Whether `other` has as many fields, of the same names, with values of the same shapes. A null
  /// `other` is a match; another type name is reported in `errors` but is no mismatch.
  bool IsSameStructure(const std::shared_ptr<MetaObject>& other,
                       std::vector<std::string>* errors) const override;

  /// "{'name' => 'text', }" with one such pair, separator included, for each field.
  std::string ToString() const override;

  /// The documentation of a field that was set without one: the empty text.
  static const std::string _docEmpty;

  /// What GetFieldDocumentation answers for it: "Documentation missing".
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
  const FieldLayout* layout_;  // counted; the bare type when the structure has an index of its own
  std::unique_ptr<Overflow> overflow_;  // null while all values stand in the slots below
  std::array<std::shared_ptr<MetaObject>, kInlineSlots> inline_;
  std::shared_ptr<MetaStruct> definition_;
};

}  // namespace Kestrel::MetaObj
