// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/Selection.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaString.h"
#include "vexil/formats/Utf8.h"

namespace Kestrel::Formats {

namespace {

using MetaObj::MetaBool;
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

bool IsScalar(MetaType kind) { return kind != MetaType::Struct && kind != MetaType::List; }

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  return first == std::string_view::npos
             ? std::string_view()
             : text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

std::string UnknownField(std::string_view name) {
  return Concat({"Unknown field: ", ShownText(Trimmed(name))});
}

/// Returns the structure of the elements of a declared list; null if it is not a list of
/// structures.
std::shared_ptr<MetaStruct> StructureOf(const Value& declared) {
  const bool isList = declared != nullptr && KindOf(*declared) == MetaType::List;
  return isList ? static_cast<const MetaList&>(*declared).GetListStructure() : nullptr;
}

/// Finds the field that `name` refers to. A name may contain full stops, so it is first looked up
/// as a whole; otherwise its beginning must be the name of a structure and the rest a field inside
/// it.
bool FindField(const MetaStruct& shape, std::string_view name, FieldPath& path) {
  path.emplace_back(name);
  if (shape.FindField(path.back()) != nullptr) {
    return true;
  }
  for (std::size_t stop = name.find('.'); stop != std::string_view::npos;
       stop = name.find('.', stop + 1)) {
    path.back() = name.substr(0, stop);
    const Value inside = shape.GetField(path.back());
    if (inside != nullptr && KindOf(*inside) == MetaType::Struct &&
        FindField(static_cast<const MetaStruct&>(*inside), name.substr(stop + 1), path)) {
      return true;
    }
  }
  path.pop_back();
  return false;
}

/// Adds all other fields, including those of partly chosen structures.
void AddOthers(FieldChoice& choice) {
  choice.hasOthers = true;
  for (FieldChoice::Field& field : choice.fields) {
    AddOthers(field.inside);
  }
}

void AddPath(FieldChoice& root, const FieldPath& path) {
  FieldChoice* choice = &root;
  for (const std::string& name : path) {
    if (choice->hasOthers) {
      return;  // all of it is chosen already
    }
    auto field =
        std::find_if(choice->fields.begin(), choice->fields.end(),
                     [&name](const FieldChoice::Field& each) { return each.name == name; });
    if (field == choice->fields.end()) {
      field = choice->fields.insert(field, {name, {{}, false}});
    }
    choice = &field->inside;
  }
  AddOthers(*choice);
}

/// Returns the value in a row to which `path` leads. Throws ResultFault if there is none.
Value ValueAt(const Value& row, const FieldPath& path) {
  Value value = row;
  for (const std::string& name : path) {
    const bool isStruct = KindOf(*value) == MetaType::Struct;
    value = isStruct ? static_cast<const MetaStruct&>(*value).GetField(name) : nullptr;
    if (value == nullptr) {
      throw ResultFault{Concat({"The field ", ShownText(name), " is missing in an element"})};
    }
  }
  return value;
}

/// The value by which a row is sorted, in either `number` or `text`.
struct SortKey {
  long number;
  std::string_view text;
  std::size_t row;

  /// Returns a number below 0 if this value is smaller, above 0 if it is greater.
  int Compare(const SortKey& other) const {
    return number != other.number ? (number < other.number ? -1 : 1) : text.compare(other.text);
  }
};

SortKey MakeSortKey(const MetaObject& value, std::size_t row) {
  switch (KindOf(value)) {
    case MetaType::Int:
      return {static_cast<const MetaInt&>(value).GetValue(), {}, row};
    case MetaType::Bool:
      return {static_cast<const MetaBool&>(value).GetValue() ? 1 : 0, {}, row};
    default:
      return {0, static_cast<const MetaString&>(value).GetValue(), row};
  }
}

std::vector<Value> SortedRows(const Selection::Rows& rows, const FieldPath& path,
                              bool isDescending) {
  std::vector<Value> values;  // owns the strings that the keys refer to
  std::vector<SortKey> keys;
  values.reserve(rows.count);
  keys.reserve(rows.count);
  for (const Value& row : rows) {
    values.push_back(ValueAt(row, path));
    keys.push_back(MakeSortKey(*values.back(), keys.size()));
  }
  std::sort(keys.begin(), keys.end(), [isDescending](const SortKey& left, const SortKey& right) {
    const int order = isDescending ? right.Compare(left) : left.Compare(right);
    return order != 0 ? order < 0 : left.row < right.row;
  });
  std::vector<Value> sorted;
  sorted.reserve(keys.size());
  for (const SortKey& key : keys) {
    sorted.push_back(rows.first[key.row]);
  }
  return sorted;
}

}  // namespace

std::string JoinNames(const FieldPath& path) {
  std::string text;
  for (const std::string& name : path) {
    text += &name == path.data() ? "" : ".";
    text += name;
  }
  return text;
}

const FieldChoice* FieldChoice::Find(const std::string& name) const {
  const auto found = std::find_if(fields.begin(), fields.end(),
                                  [&name](const Field& field) { return field.name == name; });
  return found == fields.end() ? nullptr : &found->inside;
}

std::vector<ChosenField> ChosenFields(const MetaStruct& structure, const FieldChoice* choice) {
  const std::vector<std::string> names = structure.GetFieldNames();
  std::vector<ChosenField> chosen;
  if (choice != nullptr) {
    for (const FieldChoice::Field& field : choice->fields) {
      const auto place = std::lower_bound(names.begin(), names.end(), field.name);
      chosen.push_back(
          {field.name, static_cast<std::size_t>(place - names.begin()), &field.inside});
    }
  }
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (choice == nullptr || (choice->hasOthers && choice->Find(names[i]) == nullptr)) {
      chosen.push_back({names[i], i, nullptr});
    }
  }
  return chosen;
}

Selection::Selection(const Value& root, const DeclaredResult& declared,
                     const FormatOptions& options, std::vector<std::string>& errors) {
  ReadShape(root, declared);
  if (options.hasFields) {
    ChooseFields(options.fields, errors);
  }
  if (options.isSorted) {
    Sort(options, errors);
  }
  if (list_ != nullptr) {
    rows_.count = std::min(rows_.count, options.limit);
  }
}

void Selection::ReadShape(const Value& root, const DeclaredResult& declared) {
  const MetaType kind = KindOf(*root);
  if (kind == MetaType::List) {
    list_ = static_cast<const MetaList*>(root.get());
    shape_ = list_->GetListStructure();
    rows_ = {list_->GetObjects().data(), list_->GetCount()};
    hasScalarRows_ = IsScalar(list_->GetListType());
    if (!hasScalarRows_ && shape_ == nullptr && declared != nullptr) {
      shape_ = StructureOf(declared());
    }
    return;
  }
  ownRows_.push_back(root);
  rows_ = {ownRows_.data(), 1};
  hasScalarRows_ = IsScalar(kind);
  if (kind == MetaType::Struct) {
    shape_ = std::static_pointer_cast<MetaStruct>(root);
  }
}

/// Finds the field for a name in a parameter. For a scalar row, the path is empty.
bool Selection::Find(const std::string& name, FieldPath& path) const {
  if (hasScalarRows_) {
    return Trimmed(name) == kScalarName;
  }
  if (shape_ == nullptr) {
    path.assign(1, std::string(Trimmed(name)));  // the list is empty, so nothing can be wrong
    return true;
  }
  return FindField(*shape_, name, path) || FindField(*shape_, Trimmed(name), path);
}

void Selection::ChooseFields(const std::vector<std::string>& names,
                             std::vector<std::string>& errors) {
  choice_.hasOthers = false;
  for (const std::string& name : names) {
    FieldPath path;
    if (!Find(name, path)) {
      errors.push_back(UnknownField(name));
      continue;
    }
    AddPath(choice_, path);
    paths_.push_back(std::move(path));
  }
}

void Selection::Sort(const FormatOptions& options, std::vector<std::string>& errors) {
  FieldPath path;
  if (!Find(options.sortField, path)) {
    errors.push_back(UnknownField(options.sortField));
    return;
  }
  if (shape_ != nullptr && !IsScalar(KindOf(*ValueAt(shape_, path)))) {
    errors.push_back(Concat({"Unable to sort by ", ShownText(Trimmed(options.sortField)),
                             ": its values are structures or lists"}));
    return;
  }
  ownRows_ = SortedRows(rows_, path, options.isDescending);
  rows_.first = ownRows_.data();
}

}  // namespace Kestrel::Formats
