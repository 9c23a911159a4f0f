// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "vexil/formats/EscapedText.h"
#include "vexil/formats/Faults.h"
#include "vexil/formats/Selection.h"
#include "vexil/formats/TextBuffer.h"
#include "vexil/formats/Values.h"

namespace Kestrel::Formats {

/// Room for a scalar of at most kMaxShort bytes, and for the quotes or tags around it in any
/// format.
inline constexpr std::size_t kMaxScalar = kMaxShort + 32;

/// The position of a structure within the output.
struct StructPlace {
  long level;      ///< the depth; the result is at level 0
  bool isElement;  ///< whether it is an element of a list
};

/// Prints values with all that they contain, for the formats that print nested values.
///
/// The printer keeps its own stack, so no depth of nesting can exhaust the program's. It prepares
/// what comes before each field once, because all elements of a list have the same fields. `Syntax`
/// has these members, which may throw ValueFault. `before` must be printed first; it is what
/// FieldPrefix returned, or empty. What is in a structure or list is one level deeper.
///
///   static std::string FieldPrefix(const std::string& name, bool isFirst, StructPlace place);
///       Returns the end of the previous field, if any, and the beginning of the field `name`.
///   TextBuffer& Out();
///   char* Bool(std::string_view before, bool value, char* place);
///   char* Int(std::string_view before, long value, char* place);
///   char* String(std::string_view before, const std::string& value, char* place);
///       Write `before` and the value at `place`, where there is room for `before` and kMaxScalar
///       bytes, and return the end. `String` returns null for a string of more than kMaxShort
///       bytes, and for any other that it does not write in this way.
///   void OtherString(std::string_view before, const std::string& value);
///       Appends a string for which `String` returned null.
///   void BeginStruct(std::string_view before, const MetaStruct& structure, bool isEmpty);
///   void EndStruct(bool isEmpty, long level);
///       Also ends the last field.
///   void BeginList(std::string_view before, const MetaList& list, bool isEmpty);
///   void BeginElement(bool isFirst, long level);
///       Also ends the element before it. `level` is that of the list.
///   void EndList(bool isEmpty, long level);
///       Also ends the last element.
template <typename Syntax>
class ValuePrinter {
 public:
  /// Prints with `syntax`, which must exist as long as the printer.
  explicit ValuePrinter(Syntax& syntax) : syntax_(syntax) {}

  /// Prints all rows as one value. Throws ResultFault if that is not possible.
  void PrintResult(const Selection& selection) {
    const MetaObj::MetaList* const list = selection.List();
    if (list == nullptr) {
      return PrintRows(selection, [] {});
    }
    const bool isEmpty = selection.GetRows().count == 0;
    syntax_.BeginList("", *list, isEmpty);
    ForEachRow(selection, [this, &selection](std::size_t row, const MetaObj::MetaObject& value) {
      syntax_.BeginElement(row == 0, 0);
      PrintWhole(value, &selection.Choice(), {1, true});
    });
    syntax_.EndList(isEmpty, 0);
  }

  /// Prints each row as a value and calls `endRow` after it. Throws ResultFault if that is not
  /// possible.
  template <typename EndRow>
  void PrintRows(const Selection& selection, const EndRow& endRow) {
    ForEachRow(selection, [&](std::size_t /*row*/, const MetaObj::MetaObject& value) {
      PrintWhole(value, &selection.Choice(), {0, false});
      endRow();
    });
  }

  /// Whether lists at the same position of the result contained structures of different shapes.
  /// That is possible if the declared list does not say what its elements are.
  bool HasMixedShapes() const { return hasMixedShapes_; }

  /// Prints a value that is not a row. Throws ValueFault or ResultFault if that is not possible.
  void PrintValue(const MetaObj::MetaObject& value) { PrintWhole(value, nullptr, {0, false}); }

 private:
  struct Plan;

  /// A field of the structures that one plan describes.
  struct Field {
    std::string name;
    std::string before;
    std::size_t position;       // among the names of all fields
    const FieldChoice* choice;  // null: everything
    Plan* inside;  // for the structure in this field, or the elements of the list; null at first
  };

  /// How to print the structures of one shape at one position of the result. If a list at this
  /// position has structures of another shape, the plan is changed.
  struct Plan {
    const MetaObj::MetaStruct* shape;
    FieldReader reader;
    std::vector<Field> fields;
    std::size_t room;  // for all fields, if they are scalars
  };

  /// A structure or list that has been partly printed.
  struct Open {
    const MetaObj::MetaStruct* structure;  // null for a list
    const MetaObj::MetaList* list;
    Plan** plan;  // for the structure or for the elements
    std::size_t next;
    long level;
  };

  template <typename Use>
  void ForEachRow(const Selection& selection, const Use& use) {
    const Selection::Rows& rows = selection.GetRows();
    std::size_t row = 0;
    try {
      for (; row < rows.count; ++row) {
        use(row, *rows.first[row]);
      }
    } catch (const ValueFault& fault) {
      throw LocateFault(fault, Locate(selection.List() == nullptr ? 0 : row + 1));
    }
  }

  /// Prints a value with everything that it contains.
  void PrintWhole(const MetaObj::MetaObject& value, const FieldChoice* choice, StructPlace place) {
    Print("", value, rows_, choice, place);
    while (!open_.empty()) {
      Continue();
    }
  }

  /// Prints a scalar, an empty structure or an empty list. Opens any other value and returns true.
  bool Print(std::string_view before, const MetaObj::MetaObject& value, Plan*& plan,
             const FieldChoice* choice, StructPlace place) {
    if (KindOf(value) >= MetaObj::MetaType::Struct) {
      return OpenValue(before, value, plan, choice, place);
    }
    PrintScalar(before, value);
    return false;
  }

  [[gnu::noinline]] void PrintScalar(std::string_view before, const MetaObj::MetaObject& value) {
    TextBuffer& out = syntax_.Out();
    char* const end = PutScalar(before, value, out.Prepare(before.size() + kMaxScalar));
    end == nullptr ? PrintOtherString(before, value) : out.Commit(end);
  }

  void PrintOtherString(std::string_view before, const MetaObj::MetaObject& value) {
    syntax_.OtherString(before, static_cast<const MetaObj::MetaString&>(value).GetValue());
  }

  /// Writes `before` and a scalar at `place`, where there must be room, and returns the end.
  /// Returns null for a string for which `Syntax::String` does, and for a value that is not a
  /// scalar.
  [[gnu::always_inline]] char* PutScalar(std::string_view before, const MetaObj::MetaObject& value,
                                         char* place) {
    switch (KindOf(value)) {
      case MetaObj::MetaType::Int:
        return syntax_.Int(before, static_cast<const MetaObj::MetaInt&>(value).GetValue(), place);
      case MetaObj::MetaType::Bool:
        return syntax_.Bool(before, static_cast<const MetaObj::MetaBool&>(value).GetValue(), place);
      case MetaObj::MetaType::String:
        return syntax_.String(before, static_cast<const MetaObj::MetaString&>(value).GetValue(),
                              place);
      default:
        return nullptr;
    }
  }

  /// Does the same as `Print` for a value for which `PutScalar` returned null.
  [[gnu::noinline]] bool PrintOther(Field& field, const MetaObj::MetaObject& value,
                                    StructPlace place) {
    if (KindOf(value) != MetaObj::MetaType::String) {
      return OpenValue(field.before, value, field.inside, field.choice, place);
    }
    PrintOtherString(field.before, value);
    return false;
  }

  /// Opens a structure or list and returns true, unless it is empty. Not inlined, because most
  /// values are scalars.
  [[gnu::noinline]] bool OpenValue(std::string_view before, const MetaObj::MetaObject& value,
                                   Plan*& plan, const FieldChoice* choice, StructPlace place) {
    if (value.GetType() == MetaObj::MetaType::List) {
      return OpenList(before, static_cast<const MetaObj::MetaList&>(value), plan, place.level);
    }
    return OpenStruct(before, static_cast<const MetaObj::MetaStruct&>(value), plan, choice, place);
  }

  bool OpenStruct(std::string_view before, const MetaObj::MetaStruct& structure, Plan*& plan,
                  const FieldChoice* choice, StructPlace place) {
    if (plan == nullptr) {
      plan = &plans_.emplace_back();
      Fill(*plan, structure, choice, place);
    }
    const bool isEmpty = plan->fields.empty();
    syntax_.BeginStruct(before, structure, isEmpty);
    if (isEmpty) {
      syntax_.EndStruct(true, place.level);
      return false;
    }
    open_.push_back({&structure, nullptr, &plan, 0, place.level});
    return true;
  }

  bool OpenList(std::string_view before, const MetaObj::MetaList& list, Plan*& plan, long level) {
    const bool isEmpty = list.GetCount() == 0;
    syntax_.BeginList(before, list, isEmpty);
    if (isEmpty) {
      syntax_.EndList(true, level);
      return false;
    }
    if (list.GetListType() == MetaObj::MetaType::Struct) {
      PlanElements(list, plan, level);
    }
    open_.push_back({nullptr, &list, &plan, 0, level});
    return true;
  }

  /// Continues to print the innermost open value, up to its end or until another value is opened.
  void Continue() { open_.back().list == nullptr ? ContinueStruct() : ContinueList(); }

  void ContinueStruct() {
    Open& inside = open_.back();
    Plan& plan = **inside.plan;
    const FieldReader::Fields values = plan.reader.Open(*inside.structure);
    const StructPlace place = {inside.level + 1, false};
    TextBuffer& out = syntax_.Out();
    char* output = out.Prepare(plan.room);
    Field* const end = plan.fields.data() + plan.fields.size();
    for (Field* field = plan.fields.data() + inside.next; field != end; ++field) {
      ++inside.next;
      const MetaObj::MetaObject& value = FieldReader::Get(values, field->position, field->name);
      if (char* const next = PutScalar(field->before, value, output); next != nullptr) {
        output = next;
        continue;
      }
      out.Commit(output);
      if (PrintOther(*field, value, place)) {
        return;  // `inside` may have moved
      }
      output = out.Prepare(plan.room);
    }
    out.Commit(output);
    syntax_.EndStruct(false, inside.level);
    open_.pop_back();
  }

  void ContinueList() {
    Open& inside = open_.back();
    const std::vector<Value>& elements = inside.list->GetObjects();
    while (inside.next < elements.size()) {
      const std::size_t index = inside.next++;
      syntax_.BeginElement(index == 0, inside.level);
      if (Print("", *elements[index], *inside.plan, nullptr, {inside.level + 1, true})) {
        return;  // `inside` may have moved
      }
    }
    syntax_.EndList(false, inside.level);
    open_.pop_back();
  }

  /// Makes sure that `plan` fits the elements of `list`, a list of structures at the same position
  /// as the list for which the plan was made, if any.
  void PlanElements(const MetaObj::MetaList& list, Plan*& plan, long level) {
    const std::shared_ptr<MetaObj::MetaStruct> shape = list.GetListStructure();
    if (plan == nullptr) {
      plan = &plans_.emplace_back();
    } else if (plan->shape == shape.get() || plan->shape->IsSameStructure(shape, nullptr)) {
      return;
    } else {
      hasMixedShapes_ = true;
    }
    Fill(*plan, *shape, nullptr, {level + 1, true});
    if (MetaObj::MetaObject& first = *list.GetObjects()[0];
        KindOf(first) == MetaObj::MetaType::Struct) {
      plan->reader = FieldReader(static_cast<const MetaObj::MetaStruct&>(first));
    }
  }

  static void Fill(Plan& plan, const MetaObj::MetaStruct& shape, const FieldChoice* choice,
                   StructPlace place) {
    plan.shape = &shape;
    plan.reader = FieldReader(shape);
    plan.fields.clear();
    plan.room = 0;
    for (const ChosenField& field : ChosenFields(shape, choice)) {
      plan.fields.push_back({field.name, MakePrefix(field.name, plan.fields.empty(), place),
                             field.position, field.inside, nullptr});
      plan.room += plan.fields.back().before.size() + kMaxScalar;
    }
  }

  static std::string MakePrefix(const std::string& name, bool isFirst, StructPlace place) {
    try {
      return Syntax::FieldPrefix(name, isFirst, place);
    } catch (const ValueFault& fault) {
      throw LocateNameFault(fault, name);
    }
  }

  /// Returns the location of the value that is being printed. `position` is that of the row, or 0.
  ValueLocation Locate(std::size_t position) const {
    ValueLocation location;
    if (position != 0) {
      location.elements.push_back(position);
    }
    for (const Open& inside : open_) {
      if (inside.list != nullptr) {
        location.elements.push_back(inside.next);
      } else {
        location.fields.push_back((*inside.plan)->fields[inside.next - 1].name);
      }
    }
    return location;
  }

  Syntax& syntax_;
  std::deque<Plan> plans_;
  Plan* rows_ = nullptr;
  bool hasMixedShapes_ = false;
  std::vector<Open> open_;
};

}  // namespace Kestrel::Formats
