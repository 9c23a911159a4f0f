// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "metaobj/ValueText.h"

#include <deque>
#include <variant>
#include <vector>

#include "kestrel/metaobj/MetaString.h"
#include "metaobj/FieldCursor.h"
#include "metaobj/ValueAccess.h"

namespace Kestrel::MetaObj {

namespace {

class ValueText {
 public:
  explicit ValueText(std::string& text) : text_(text) {}

  void Append(const MetaObject& value) {
    Open(value);
    while (!levels_.empty()) {
      std::visit([this](auto& level) { Continue(level); }, levels_.back());
    }
  }

 private:
  struct StructLevel {
    FieldCursor fields;
    bool hasBegun = false;
  };
  struct ListLevel {
    const std::vector<std::shared_ptr<MetaObject>>& items;
    std::size_t next = 0;
  };

  void Open(const MetaObject& value) {
    if (const MetaStruct* const structure = ValueAccess::AsStruct(value)) {
      text_ += '{';
      levels_.emplace_back(StructLevel{FieldCursor(*structure)});
    } else if (const MetaList* const list = ValueAccess::AsList(value)) {
      levels_.emplace_back(ListLevel{list->GetObjects()});
    } else if (ValueAccess::IsScalarClass(value) && value.GetType() == MetaType::String) {
      text_ += static_cast<const MetaString&>(value).GetValue();
    } else {
      text_ += value.ToString();
    }
  }

  void Continue(StructLevel& level) {
    if (level.hasBegun) {
      text_ += "', ";
      level.fields.Next();
    }
    if (level.fields.AtEnd()) {
      text_ += '}';
      levels_.pop_back();
      return;
    }
    level.hasBegun = true;
    text_ += '\'';
    text_ += level.fields.Name();
    text_ += "' => '";
    Open(*level.fields.Value());
  }

  void Continue(ListLevel& level) {
    if (level.next == level.items.size()) {
      levels_.pop_back();
      return;
    }
    if (level.next > 0) {
      text_ += ", ";
    }
    Open(*level.items[level.next++]);
  }

  std::string& text_;
  std::deque<std::variant<StructLevel, ListLevel>> levels_;  // growing must not copy them
};

}  // namespace

void AppendText(const MetaObject& value, std::string& text) { ValueText(text).Append(value); }

}  // namespace Kestrel::MetaObj
