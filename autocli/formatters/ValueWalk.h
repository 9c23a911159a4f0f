// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "autocli/formatters/FieldPrefixes.h"
#include "autocli/formatters/ValueView.h"
#include "autocli/text/TextWriter.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "metaobj/FieldCursor.h"
#include "metaobj/ValueAccess.h"

namespace Kestrel::AutoCli {

/// Leads a printer through a value and all that it holds, on a stack of its own, so that no depth
/// of nesting can exhaust the program's. Once the stream has failed, it leads no further.
///
/// A printer writes to the same writer as the walk and offers, `level` being the depth of the
/// value, structure or list concerned, and `before` what stands before a value, to be written
/// first:
///   void Bool(std::string_view before, bool, long level);
///   void Int(std::string_view before, long, long level);
///   void String(std::string_view before, const std::string&, long level);
///   void Misread(std::string_view before, const MetaObject*);
///                                       a value that is null or not of the class of its kind
///   void BeginStruct(std::string_view before, const MetaStruct&, long level);
///   void EndStruct(bool isEmpty, long level);      ends the last field too
///   void BeginList(std::string_view before, const MetaList&, long level);
///   void BeginElement(bool isFirst, long level);   ends the element before too
///   void EndList(bool isEmpty, long level);        ends the last element too
///   static std::string FieldPrefix(const std::string& name, bool isFirst, long level);
///                                       the text before a field, and the end of the one before
///   static constexpr long kFieldStep, kElementStep;   how much deeper fields and elements stand
template <typename Printer>
class ValueWalk {
 public:
  ValueWalk(Printer& printer, TextWriter& out)
      : printer_(printer), out_(out), prefixes_(Printer::FieldPrefix) {}

  /// Prints `value`, which stays as it is meanwhile.
  void Run(const MetaObj::MetaObject* value, long level) {
    PrintValue("", value, level);
    while (!open_.empty() && !out_.HasFailed()) {
      std::visit([this](auto& inside) { this->Step(inside); }, open_.back());
    }
  }

 private:
  struct InStruct {
    MetaObj::FieldCursor fields;
    const std::string* prefix;  // of the next field; null when prefixes are made one at a time
    bool isEmpty;               // so far
    long level;
  };
  struct InList {
    const std::vector<std::shared_ptr<MetaObj::MetaObject>>* elements;
    std::size_t next;
    long level;
  };
  struct Opened {
    std::string_view before;
    const MetaObj::MetaObject* value;  // null when there was none
  };

  static bool HoldsMore(const MetaObj::MetaObject* value) {
    return value != nullptr && MetaObj::ValueAccess::IsValueClass(*value) &&
           !MetaObj::ValueAccess::IsScalarClass(*value);
  }

  void PrintValue(std::string_view before, const MetaObj::MetaObject* value, long level) {
    HoldsMore(value) ? Open({before, value}, level) : PrintScalar(before, value, level);
  }

  /// Prints a scalar, or what is in its place.
  void PrintScalar(std::string_view before, const MetaObj::MetaObject* value, long level) {
    if (const auto* const text = ViewAs<MetaObj::MetaString>(value)) {
      printer_.String(before, text->GetValue(), level);
    } else if (const auto* const number = ViewAs<MetaObj::MetaInt>(value)) {
      printer_.Int(before, number->GetValue(), level);
    } else if (const auto* const boolean = ViewAs<MetaObj::MetaBool>(value)) {
      printer_.Bool(before, boolean->GetValue(), level);
    } else {
      printer_.Misread(before, value);
    }
  }

  /// Prints the beginning of what holds more, and of a structure the fields up to one that does. A
  /// structure of scalars, as most are, is printed whole and needs no place on the stack.
  void Open(Opened opened, long level) {
    while (opened.value != nullptr) {
      if (const auto* const list = MetaObj::ValueAccess::AsList(*opened.value)) {
        printer_.BeginList(opened.before, *list, level);
        open_.push_back(InList{&list->GetObjects(), 0, level});
        return;
      }
      const auto& record = static_cast<const MetaObj::MetaStruct&>(*opened.value);
      printer_.BeginStruct(opened.before, record, level);
      InStruct inside{MetaObj::FieldCursor(record), prefixes_.Find(record, level), true, level};
      opened = PrintFields(inside);
      if (opened.value != nullptr) {
        open_.push_back(inside);
        level += Printer::kFieldStep;
      }
    }
  }

  void Step(InStruct& inside) {
    const long level = inside.level + Printer::kFieldStep;
    const Opened opened = PrintFields(inside);
    opened.value == nullptr ? open_.pop_back() : Open(opened, level);
  }

  /// Prints fields up to the next one that holds more, which it gives, or to the end.
  Opened PrintFields(InStruct& inside) {
    while (!inside.fields.AtEnd() && !out_.HasFailed()) {
      const std::string& before = NextPrefix(inside);
      const MetaObj::MetaObject* const value = inside.fields.Value().get();
      inside.fields.Next();
      if (HoldsMore(value)) {
        return {before, value};
      }
      PrintScalar(before, value, inside.level + Printer::kFieldStep);
    }
    printer_.EndStruct(inside.isEmpty, inside.level);
    return {{}, nullptr};
  }

  const std::string& NextPrefix(InStruct& inside) {
    const bool isFirst = std::exchange(inside.isEmpty, false);
    if (inside.prefix == nullptr) {
      made_ = Printer::FieldPrefix(inside.fields.Name(), isFirst, inside.level);
      return made_;
    }
    return *inside.prefix++;
  }

  /// Prints elements up to the next one that is not printed at once, or to the end.
  void Step(InList& inside) {
    const auto& elements = *inside.elements;
    const long level = inside.level;
    const std::size_t depth = open_.size();
    for (std::size_t next = inside.next; next < elements.size() && !out_.HasFailed();) {
      printer_.BeginElement(next == 0, level);
      const MetaObj::MetaObject* const element = elements[next].get();
      inside.next = ++next;
      PrintValue("", element, level + Printer::kElementStep);
      if (open_.size() != depth) {
        return;  // and `inside` may have moved
      }
    }
    printer_.EndList(elements.empty(), level);
    open_.pop_back();
  }

  Printer& printer_;
  TextWriter& out_;
  FieldPrefixes prefixes_;
  std::string made_;  // the prefix of a field whose structure has none prepared
  std::vector<std::variant<InStruct, InList>> open_;
};

}  // namespace Kestrel::AutoCli
