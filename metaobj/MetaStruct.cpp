// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/metaobj/MetaStruct.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "kestrel/KestrelException.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "metaobj/FieldCursor.h"
#include "metaobj/FieldLayout.h"
#include "metaobj/MissingDocumentation.h"
#include "metaobj/NestedRelease.h"
#include "metaobj/ShapeComparison.h"
#include "metaobj/SlabAllocator.h"
#include "metaobj/ValueText.h"

namespace Kestrel::MetaObj {

namespace {

constexpr std::size_t kReservedPerField = 15;

std::string_view View(const char* text) { return text == nullptr ? std::string_view() : text; }

bool IsLetterOrDigit(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// Accepts every name. SetField has a message in case the rule becomes stricter.
bool AcceptsFieldName(std::string_view) { return true; }

std::string NullValueMessage(std::string_view field, const std::string& type) {
  return "Invalid NULL value was assigned to the field " + std::string(field) +
         " in the structure " + type;
}

std::string InvalidNameMessage(std::string_view field, const std::string& type) {
  return "Unable to set new field " + std::string(field) + " on structure " + type +
         ", because the field name contains invalid character. Can only be alphanumeric "
         "characters and '_'";
}

std::string LockedMessage(std::string_view field) {
  return "Unable to set new field " + std::string(field) +
         " on structure. Structure has been locked";
}

std::string NotInDefinitionMessage(std::string_view field) {
  return "Unable to set new field " + std::string(field) +
         " on structure.  The field does not match the Structure definition for this MetaStruct.";
}

template <typename Values>
std::shared_ptr<MetaObject> ListOf(MetaType kind, Values&& values) {
  std::shared_ptr<MetaList> list = MetaList::New(kind);
  list->AddAll(std::forward<Values>(values));
  return list;
}

bool IsStructName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), IsLetterOrDigit);
}

}  // namespace

const std::string MetaStruct::_docEmpty;
const std::string MetaStruct::_docMissingStaticString = MissingDocumentation();

bool IsValidStructName(const std::string& name) { return IsStructName(name); }

bool IsValidFieldName(const std::string& name) { return AcceptsFieldName(name); }

MetaStruct::Field::Field(const std::shared_ptr<MetaObject>& fieldValue,
                         const std::string& fieldDocumentation)
    : value(fieldValue), documentation(fieldDocumentation) {}

MetaStruct::Field::Field(Field&& other) = default;

MetaStruct::Field& MetaStruct::Field::operator=(Field&& other) = default;

MetaStruct::MetaStruct(const std::string& typeName, FactoryFlag flag)
    : MetaStruct(FieldLayout::Root(typeName), flag) {}

MetaStruct::MetaStruct(const std::shared_ptr<MetaStruct>& definition, FactoryFlag flag)
    : MetaStruct(definition->layout_->GetRoot(), flag) {
  definition_ = definition;
  if (definition->layout_->Count() > kInlineSlots) {
    overflow_ = std::make_unique<Overflow>();
    overflow_->slots.reserve(definition->layout_->Count());
  }
}

MetaStruct::MetaStruct(LayoutRef&& layout, FactoryFlag flag)
    : MetaObject(MetaType::Struct, flag), layout_(layout.Detach()) {}

MetaStruct::~MetaStruct() {
  if (hasOwnIndex_) {
    for (auto& [name, field] : overflow_->fields) {
      ReleaseNested(field.value);
    }
  } else {
    std::shared_ptr<MetaObject>* const slots = Slots();
    for (std::size_t position = layout_->Count(); position > 0; --position) {
      ReleaseNested(slots[position - 1]);
    }
  }
  if (definition_ != nullptr) {
    ReleaseContainer(std::move(definition_));
  }
  LayoutRef::Attach(layout_);
}

std::shared_ptr<MetaStruct> MetaStruct::New(const std::string& typeName) { return Make(typeName); }

std::shared_ptr<MetaStruct> MetaStruct::New(std::string&& typeName) { return Make(typeName); }

std::shared_ptr<MetaStruct> MetaStruct::New(const char* typeName) { return Make(View(typeName)); }

std::shared_ptr<MetaStruct> MetaStruct::Make(std::string_view typeName) {
  LayoutRef layout = FieldLayout::NewestRoot(typeName);
  if (!layout) {
    if (!IsStructName(typeName)) {
      throw KestrelException("Invalid name specified for MetaStruct: " + std::string(typeName));
    }
    layout = FieldLayout::Root(typeName);
  }
  return MakeInSlab<MetaStruct>(std::move(layout), FactoryFlag());
}

std::shared_ptr<MetaStruct> MetaStruct::New(const std::shared_ptr<MetaStruct>& definition) {
  if (definition == nullptr) {
    throw KestrelException("Invalid NULL structure definition for MetaStruct");
  }
  definition->LockStructure();
  return MakeInSlab<MetaStruct>(definition, FactoryFlag());
}

void MetaStruct::SetField(const std::string& name, const std::shared_ptr<MetaObject>& value,
                          const std::string& documentation) {
  Store(name, std::shared_ptr<MetaObject>(value), documentation);
}

void MetaStruct::SetField(const std::string& name, const std::shared_ptr<MetaObject>& value) {
  Store(name, std::shared_ptr<MetaObject>(value), {});
}

void MetaStruct::SetField(const std::string& name, const std::shared_ptr<MetaStruct>& value) {
  Store(name, value, {});
}

void MetaStruct::SetField(const std::string& name, const std::shared_ptr<MetaList>& value) {
  Store(name, value, {});
}

void MetaStruct::SetField(const std::string& name, const std::shared_ptr<MetaInt>& value) {
  Store(name, value, {});
}

void MetaStruct::SetField(const std::string& name, const std::shared_ptr<MetaBool>& value) {
  Store(name, value, {});
}

void MetaStruct::SetField(const std::string& name, const std::shared_ptr<MetaString>& value) {
  Store(name, value, {});
}

void MetaStruct::SetField(const std::string& name, long value) {
  Store(name, MetaInt::New(value), {});
}

void MetaStruct::SetField(const std::string& name, int value) {
  Store(name, MetaInt::New(value), {});
}

void MetaStruct::SetField(const std::string& name, bool value) {
  Store(name, MetaBool::New(value), {});
}

void MetaStruct::SetField(const std::string& name, const std::string& value) {
  Store(name, MetaString::New(value), {});
}

void MetaStruct::SetField(const std::string& name, std::string&& value) {
  Store(name, MetaString::New(std::move(value)), {});
}

void MetaStruct::SetField(const std::string& name, const char* value) {
  Store(name, MetaString::New(value), {});
}

void MetaStruct::SetField(const std::string& name, const std::vector<std::string>& value) {
  Store(name, ListOf(MetaType::String, value), {});
}

void MetaStruct::SetField(const std::string& name, std::vector<std::string>&& value) {
  Store(name, ListOf(MetaType::String, std::move(value)), {});
}

void MetaStruct::SetField(const std::string& name, const std::vector<long>& value) {
  Store(name, ListOf(MetaType::Int, value), {});
}

void MetaStruct::SetField(const std::string& name, const std::vector<bool>& value) {
  Store(name, ListOf(MetaType::Bool, value), {});
}

void MetaStruct::SetField(const std::string& name, std::nullptr_t) { Store(name, nullptr, {}); }

void MetaStruct::SetField(const char* name, const std::shared_ptr<MetaObject>& value) {
  Store(View(name), std::shared_ptr<MetaObject>(value), {});
}

void MetaStruct::SetField(const char* name, const std::shared_ptr<MetaStruct>& value) {
  Store(View(name), value, {});
}

void MetaStruct::SetField(const char* name, const std::shared_ptr<MetaList>& value) {
  Store(View(name), value, {});
}

void MetaStruct::SetField(const char* name, const std::shared_ptr<MetaInt>& value) {
  Store(View(name), value, {});
}

void MetaStruct::SetField(const char* name, const std::shared_ptr<MetaBool>& value) {
  Store(View(name), value, {});
}

void MetaStruct::SetField(const char* name, const std::shared_ptr<MetaString>& value) {
  Store(View(name), value, {});
}

void MetaStruct::SetField(const char* name, long value) {
  Store(View(name), MetaInt::New(value), {});
}

void MetaStruct::SetField(const char* name, int value) {
  Store(View(name), MetaInt::New(value), {});
}

void MetaStruct::SetField(const char* name, bool value) {
  Store(View(name), MetaBool::New(value), {});
}

void MetaStruct::SetField(const char* name, const std::string& value) {
  Store(View(name), MetaString::New(value), {});
}

void MetaStruct::SetField(const char* name, std::string&& value) {
  Store(View(name), MetaString::New(std::move(value)), {});
}

void MetaStruct::SetField(const char* name, const char* value) {
  Store(View(name), MetaString::New(value), {});
}

void MetaStruct::SetField(const char* name, const std::vector<std::string>& value) {
  Store(View(name), ListOf(MetaType::String, value), {});
}

void MetaStruct::SetField(const char* name, std::vector<std::string>&& value) {
  Store(View(name), ListOf(MetaType::String, std::move(value)), {});
}

void MetaStruct::SetField(const char* name, const std::vector<long>& value) {
  Store(View(name), ListOf(MetaType::Int, value), {});
}

void MetaStruct::SetField(const char* name, const std::vector<bool>& value) {
  Store(View(name), ListOf(MetaType::Bool, value), {});
}

void MetaStruct::SetField(const char* name, std::nullptr_t) { Store(View(name), nullptr, {}); }

std::shared_ptr<MetaObject> MetaStruct::GetField(const std::string& name) const {
  const std::shared_ptr<MetaObject>* const value = Find(FieldName(name));
  return value == nullptr ? nullptr : *value;
}

const MetaObject* MetaStruct::FindField(const std::string& name) const {
  const std::shared_ptr<MetaObject>* const value = Find(FieldName(name));
  return value == nullptr ? nullptr : value->get();
}

bool MetaStruct::HasField(const std::string& name) const {
  return Find(FieldName(name)) != nullptr;
}

MetaType MetaStruct::GetFieldType(const std::string& name) const {
  const std::shared_ptr<MetaObject>* const value = Find(FieldName(name));
  if (value == nullptr) {
    throw 1;  // A bare int: callers that probe unknown names catch this type.
  }
  return (*value)->GetType();
}

const std::string& MetaStruct::GetFieldDocumentation(const std::string& name) const {
  const std::string* const documentation = FindDocumentation(FieldName(name));
  if (documentation == nullptr) {
    throw KestrelException("Field " + name + " is not present in the structure " + GetTypeName());
  }
  return documentation->empty() ? MissingDocumentation() : *documentation;
}

std::vector<std::string> MetaStruct::GetFieldNames() const {
  std::vector<std::string> names;
  FieldCursor field(*this);
  names.reserve(field.CountLeft());
  for (; !field.AtEnd(); field.Next()) {
    names.push_back(field.Name());
  }
  return names;
}

void MetaStruct::RemoveField(const std::string& name) {
  if (locked_.load(std::memory_order_relaxed)) {
    throw KestrelException("Structure is locked, unable to remove fields");
  }
  if (hasOwnIndex_) {
    return RemoveOwn(name);
  }
  const std::size_t position = layout_->Find(FieldName(name));
  if (position == FieldLayout::kNotFound) {
    return;
  }
  LayoutRef shorter = layout_->Without(position);
  if (!shorter) {
    UseOwnIndex();
    return RemoveOwn(name);
  }
  const std::shared_ptr<MetaObject> removed = TakeSlot(position);
  UseLayout(std::move(shorter));
}

const std::string& MetaStruct::GetTypeName() const { return layout_->TypeName(); }

void MetaStruct::LockStructure() {
  // Written once, so that threads that share a definition do not fight for its cache line.
  if (!locked_.load(std::memory_order_relaxed)) {
    locked_.store(true, std::memory_order_relaxed);
  }
}

bool MetaStruct::HasStructureDefinition() const { return definition_ != nullptr; }

std::shared_ptr<MetaStruct> MetaStruct::GetStructureDefinition() const { return definition_; }

bool MetaStruct::MatchesStructureDefinition() const {
  return definition_ == nullptr || IsSameStructure(definition_, nullptr);
}

bool MetaStruct::IsSameStructure(const std::shared_ptr<MetaObject>& other,
                                 std::vector<std::string>* errors) const {
  return (other != nullptr && IsSurelySameShape(*this, *other)) ||
         IsSameShape(*this, other, errors);
}

std::string MetaStruct::ToString() const {
  std::string text;
  text.reserve(kReservedPerField * FieldCursor(*this).CountLeft());
  AppendText(*this, text);
  return text;
}

void MetaStruct::Store(std::string_view name, std::shared_ptr<MetaObject>&& value,
                       std::string_view documentation) {
  CheckValue(name, value);
  if (hasOwnIndex_) {
    return StoreOwn(name, std::move(value), documentation);
  }
  const FieldLayout::Transition* const known = layout_->KnownStep(FieldName(name), documentation);
  if (known == nullptr) {
    return StoreSlowly(name, std::move(value), documentation);
  }
  CheckNewField(name);
  LayoutRef next(known->next);
  InsertSlot(known->position, std::move(value));
  UseLayout(std::move(next));
}

// Replaces the value, adds a field by a step that `KnownStep` did not return, or makes an index for
// this structure.
void MetaStruct::StoreSlowly(std::string_view name, std::shared_ptr<MetaObject>&& value,
                             std::string_view documentation) {
  const LayoutRef kept(layout_);  // the arguments may be strings of this layout
  const std::size_t position = layout_->Find(name);
  if (position != FieldLayout::kNotFound) {
    if (LayoutRef next = layout_->WithDocumentation(position, documentation)) {
      Slots()[position].swap(value);
      return UseLayout(std::move(next));
    }
  } else {
    CheckNewField(name);
    if (FieldLayout::Step next = layout_->With(FieldName(name), documentation); next.layout) {
      InsertSlot(next.position, std::move(value));
      return UseLayout(std::move(next.layout));
    }
  }
  UseOwnIndex();
  StoreOwn(name, std::move(value), documentation);
}

void MetaStruct::CheckValue(std::string_view name, const std::shared_ptr<MetaObject>& value) const {
  if (value == nullptr) {
    throw KestrelException(NullValueMessage(name, GetTypeName()));
  }
  if (!AcceptsFieldName(name)) {
    throw KestrelException(InvalidNameMessage(name, GetTypeName()));
  }
}

// Called for a new field only. An existing field needs no check, because the fields of a definition
// never change.
inline void MetaStruct::CheckNewField(std::string_view name) const {
  if (locked_.load(std::memory_order_relaxed)) {
    throw KestrelException(LockedMessage(name));
  }
  if (definition_ != nullptr && definition_->Find(FieldName(name)) == nullptr) {
    throw KestrelException(NotInDefinitionMessage(name));
  }
}

void MetaStruct::StoreOwn(std::string_view name, std::shared_ptr<MetaObject>&& value,
                          std::string_view documentation) {
  Field field(value, std::string(documentation));
  auto& fields = overflow_->fields;
  // Fast path: fields are often set in the order of their names.
  const bool isLast = fields.empty() || fields.rbegin()->first < name;
  const auto place = isLast ? fields.end() : fields.lower_bound(name);
  if (place != fields.end() && place->first == name) {
    place->second = std::move(field);
    return;
  }
  CheckNewField(name);
  fields.emplace_hint(place, name, std::move(field));
}

void MetaStruct::RemoveOwn(std::string_view name) {
  const auto field = overflow_->fields.find(name);
  if (field != overflow_->fields.end()) {
    overflow_->fields.erase(field);
  }
}

// Not inline, so that the code for small structures stays short.
[[gnu::noinline]] const std::shared_ptr<MetaObject>* MetaStruct::FindOwn(
    std::string_view name) const {
  const auto field = overflow_->fields.find(name);
  return field == overflow_->fields.end() ? nullptr : &field->second.value;
}

const std::string* MetaStruct::FindDocumentation(const FieldName& name) const {
  if (!hasOwnIndex_) {
    const std::size_t position = layout_->Find(name);
    return position == FieldLayout::kNotFound ? nullptr : &layout_->At(position).documentation;
  }
  const auto field = overflow_->fields.find(name.Text());
  return field == overflow_->fields.end() ? nullptr : &field->second.documentation;
}

std::shared_ptr<MetaObject>* MetaStruct::Slots() {
  return const_cast<std::shared_ptr<MetaObject>*>(std::as_const(*this).Slots());
}

void MetaStruct::InsertSlot(std::size_t position, std::shared_ptr<MetaObject>&& value) {
  const std::size_t count = layout_->Count();
  std::shared_ptr<MetaObject>* slots = inline_.data();
  if (count == kInlineSlots || overflow_ != nullptr) {
    slots = AddOuterSlot();
  }
  slots[count] = std::move(value);
  for (std::size_t place = count; place > position; --place) {
    slots[place].swap(slots[place - 1]);
  }
}

std::shared_ptr<MetaObject> MetaStruct::TakeSlot(std::size_t position) {
  std::shared_ptr<MetaObject>* const slots = Slots();
  std::shared_ptr<MetaObject> taken = std::move(slots[position]);
  for (std::size_t place = position + 1; place < layout_->Count(); ++place) {
    slots[place].swap(slots[place - 1]);
  }
  if (overflow_ != nullptr && !overflow_->slots.empty()) {
    overflow_->slots.pop_back();
  }
  return taken;
}

// Adds an empty slot outside of the structure; moves the values there if they are still inside.
std::shared_ptr<MetaObject>* MetaStruct::AddOuterSlot() {
  if (overflow_ == nullptr) {
    overflow_ = std::make_unique<Overflow>();
  }
  Overflow::Slots& slots = overflow_->slots;
  if (slots.empty() && layout_->Count() > 0) {
    slots.reserve(2 * kInlineSlots);
    const auto first = inline_.begin();
    const auto last = first + static_cast<std::ptrdiff_t>(layout_->Count());
    slots.assign(std::make_move_iterator(first), std::make_move_iterator(last));
  }
  slots.emplace_back();
  return slots.data();
}

void MetaStruct::UseOwnIndex() {
  auto own = std::make_unique<Overflow>();
  for (FieldCursor field(*this); !field.AtEnd(); field.Next()) {
    own->fields.emplace_hint(own->fields.end(), field.Name(),
                             Field(field.Value(), field.Documentation()));
  }
  overflow_ = std::move(own);
  inline_.fill(nullptr);
  hasOwnIndex_ = true;
  UseLayout(layout_->GetRoot());
}

void MetaStruct::UseLayout(LayoutRef&& layout) {
  LayoutRef::Attach(std::exchange(layout_, layout.Detach()));
}

}  // namespace Kestrel::MetaObj
