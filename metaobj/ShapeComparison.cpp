// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "metaobj/ShapeComparison.h"

#include <deque>
#include <utility>

#include "metaobj/ErrorList.h"
#include "metaobj/FieldCursor.h"
#include "metaobj/ValueAccess.h"

namespace Kestrel::MetaObj {

namespace {

// The fast path does not look deeper.
constexpr unsigned kMaxQuickDepth = 8;

bool IsSurelySame(const MetaObject& mine, const MetaObject& other, unsigned depth);

bool HasSameTexts(const FieldLayout& mine, const FieldLayout& other) {
  return mine.TypeName() == other.TypeName() && mine.HasSameNames(other);
}

bool IsSurelySameStruct(const MetaStruct& mine, const MetaStruct& other, unsigned depth) {
  const FieldLayout* const layout = ValueAccess::Layout(mine);
  const FieldLayout* const otherLayout = ValueAccess::Layout(other);
  if (layout == nullptr || otherLayout == nullptr ||
      (layout != otherLayout && !HasSameTexts(*layout, *otherLayout))) {
    return false;
  }
  const std::shared_ptr<MetaObject>* slot = ValueAccess::Slots(mine);
  const std::shared_ptr<MetaObject>* otherSlot = ValueAccess::Slots(other);
  for (std::size_t left = layout->Count(); left > 0; --left, ++slot, ++otherSlot) {
    if (!IsSurelySame(**slot, **otherSlot, depth)) {
      return false;
    }
  }
  return true;
}

bool IsSurelySameList(const MetaList& mine, const MetaList& other, unsigned depth) {
  const std::shared_ptr<MetaStruct>& structure = ValueAccess::Structure(mine);
  const std::shared_ptr<MetaStruct>& otherStructure = ValueAccess::Structure(other);
  if (mine.GetListType() != other.GetListType()) {
    return false;
  }
  return structure == nullptr || otherStructure == nullptr || structure == otherStructure ||
         IsSurelySameStruct(*structure, *otherStructure, depth);
}

bool IsSurelySame(const MetaObject& mine, const MetaObject& other, unsigned depth) {
  if (mine.GetType() != other.GetType() || !ValueAccess::IsValueClass(mine) ||
      !ValueAccess::IsValueClass(other)) {
    return false;
  }
  if (mine.GetType() < MetaType::Struct) {
    return true;
  }
  if (depth == 0) {
    return false;
  }
  return mine.GetType() == MetaType::Struct
             ? IsSurelySameStruct(static_cast<const MetaStruct&>(mine),
                                  static_cast<const MetaStruct&>(other), depth - 1)
             : IsSurelySameList(static_cast<const MetaList&>(mine),
                                static_cast<const MetaList&>(other), depth - 1);
}

// The exact comparison. Each pair of structures whose fields are being compared is a level. If a
// pair differs, the field that contains it differs in the level above, and so on to the top.
class ShapeComparison {
 public:
  explicit ShapeComparison(std::vector<std::string>* errors) : errors_(errors) {}

  bool Compare(const MetaObject& mine, const std::shared_ptr<MetaObject>& other) {
    Answer answer = Open(mine, other);
    while (!levels_.empty()) {
      answer = answer == Answer::Different ? FailField() : Continue();
    }
    return answer == Answer::Same;
  }

 private:
  enum class Answer { Same, Different, Opened };

  struct Level {
    FieldCursor fields;
    FieldCursor otherFields;
    bool isSame;    // so far
    bool isOfList;  // a pair of declared structures of lists
    bool hasBegun = false;
  };

  Answer Open(const MetaObject& mine, const std::shared_ptr<MetaObject>& other) {
    if (const MetaStruct* const structure = ValueAccess::AsStruct(mine)) {
      return OpenStruct(*structure, other.get());
    }
    if (const MetaList* const list = ValueAccess::AsList(mine)) {
      return OpenList(*list, other.get());
    }
    return mine.IsSameStructure(other, errors_) ? Answer::Same : Answer::Different;
  }

  Answer OpenStruct(const MetaStruct& mine, const MetaObject* other) {
    if (other == nullptr) {
      AppendError(errors_, "Invalid NULL input to MetaStruct validation.");
      return Answer::Same;
    }
    if (other->GetType() != mine.GetType()) {
      AppendError(errors_, "Type Mismatch in MetaStruct Validation: Expected type ",
                  MetaTypeString(mine.GetType()), " got type ", MetaTypeString(other->GetType()));
      return Answer::Different;
    }
    const MetaStruct* const structure = ValueAccess::AsStruct(*other);
    if (structure == nullptr) {
      AppendError(errors_, "Unable to cast to MetaStruct, runtime error?");
      return Answer::Different;
    }
    return OpenFields(mine, *structure, false);
  }

  Answer OpenFields(const MetaStruct& mine, const MetaStruct& other, bool isOfList) {
    if (errors_ != nullptr && mine.GetTypeName() != other.GetTypeName()) {
      AppendError(errors_, "Type names do not match.");
    }
    const FieldCursor fields(mine);
    const FieldCursor otherFields(other);
    const bool isSame = fields.CountLeft() == otherFields.CountLeft();
    if (!isSame) {
      AppendError(errors_, "Mismatch on number of fields set in struct. Expected ",
                  std::to_string(fields.CountLeft()), " found ",
                  std::to_string(otherFields.CountLeft()));
    }
    levels_.push_back({fields, otherFields, isSame, isOfList});
    return Answer::Opened;
  }

  Answer OpenList(const MetaList& mine, const MetaObject* other) {
    if (other == nullptr) {
      AppendError(errors_, "Mismatch on structure, NULL comparison");
      return Answer::Different;
    }
    if (other->GetType() != mine.GetType()) {
      AppendError(errors_, "Type mismatch!  Was expecting a ", MetaTypeString(mine.GetType()),
                  ", but got a ", MetaTypeString(other->GetType()));
      return Answer::Different;
    }
    const MetaList* const list = ValueAccess::AsList(*other);
    if (list == nullptr || list->GetListType() != mine.GetListType()) {
      AppendError(errors_, "Mismatch on list type");
      return Answer::Different;
    }
    const MetaStruct* const structure = ValueAccess::Structure(mine).get();
    const MetaStruct* const otherStructure = ValueAccess::Structure(*list).get();
    if (structure == nullptr || otherStructure == nullptr) {
      return Answer::Same;
    }
    return OpenFields(*structure, *otherStructure, true);
  }

  // Compares the next field of the innermost level, or ends the level.
  Answer Continue() {
    Level& level = levels_.back();
    if (level.hasBegun) {
      level.fields.Next();
    }
    level.hasBegun = true;
    if (level.fields.AtEnd()) {
      return Close(level.isSame);
    }
    const std::string& name = level.fields.Name();
    while (!level.otherFields.AtEnd() && level.otherFields.Name() < name) {
      level.otherFields.Next();
    }
    if (level.otherFields.AtEnd() || level.otherFields.Name() != name) {
      AppendError(errors_, "Missing field in input: ", name);
      return Close(false);
    }
    const std::shared_ptr<MetaObject>& mine = level.fields.Value();
    const std::shared_ptr<MetaObject>& other = level.otherFields.Value();
    return mine->GetType() == other->GetType() ? Open(*mine, other) : Answer::Different;
  }

  // Ends the innermost level because the values of its current field differ.
  Answer FailField() {
    AppendError(errors_, "Type mismatch on field: ", levels_.back().fields.Name());
    return Close(false);
  }

  Answer Close(bool isSame) {
    const bool isOfList = levels_.back().isOfList;
    levels_.pop_back();
    if (!isSame && isOfList) {
      AppendError(errors_, "List type mismatch list and input");
    }
    return isSame ? Answer::Same : Answer::Different;
  }

  std::vector<std::string>* const errors_;
  std::deque<Level> levels_;  // a deque, since growing must not copy them
};

}  // namespace

bool IsSameShape(const MetaObject& mine, const std::shared_ptr<MetaObject>& other,
                 std::vector<std::string>* errors) {
  return ShapeComparison(errors).Compare(mine, other);
}

bool IsSurelySameShape(const MetaObject& mine, const MetaObject& other) {
  return IsSurelySame(mine, other, kMaxQuickDepth);
}

}  // namespace Kestrel::MetaObj
