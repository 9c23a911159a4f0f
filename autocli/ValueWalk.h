#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "autocli/FieldPrefixes.h"
#include "autocli/TextWriter.h"
#include "autocli/ValueView.h"
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
/// value, structure or list concerned:
///   void Bool(bool, long level);  void Int(long, long level);
///   void String(const std::string&, long level);
///   void Misread(const MetaObject*);    a value that is null or not of the class of its kind
///   void BeginStruct(const MetaStruct&, long level);
///   void EndStruct(bool isEmpty, long level);      ends the last field too
///   void BeginList(const MetaList&, long level);
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
    if (!HoldsMore(value)) {
      return Print(value, level);
    }
    Open(*value, level);
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

  static bool HoldsMore(const MetaObj::MetaObject* value) {
    return value != nullptr && MetaObj::ValueAccess::IsValueClass(*value) &&
           !MetaObj::ValueAccess::IsScalarClass(*value);
  }

  /// Prints a scalar, or what is in its place.
  void Print(const MetaObj::MetaObject* value, long level) {
    if (const auto* const text = ViewAs<MetaObj::MetaString>(value)) {
      printer_.String(text->GetValue(), level);
    } else if (const auto* const number = ViewAs<MetaObj::MetaInt>(value)) {
      printer_.Int(number->GetValue(), level);
    } else if (const auto* const boolean = ViewAs<MetaObj::MetaBool>(value)) {
      printer_.Bool(boolean->GetValue(), level);
    } else {
      printer_.Misread(value);
    }
  }

  /// Prints the beginning of a structure or a list.
  void Open(const MetaObj::MetaObject& value, long level) {
    if (const auto* const list = MetaObj::ValueAccess::AsList(value)) {
      printer_.BeginList(*list, level);
      open_.push_back(InList{&list->GetObjects(), 0, level});
      return;
    }
    const auto& record = static_cast<const MetaObj::MetaStruct&>(value);
    printer_.BeginStruct(record, level);
    open_.push_back(
        InStruct{MetaObj::FieldCursor(record), prefixes_.Find(record, level), true, level});
  }

  /// Prints fields up to the next one that holds more, or to the end.
  void Step(InStruct& inside) {
    while (!inside.fields.AtEnd() && !out_.HasFailed()) {
      BeginField(inside);
      const MetaObj::MetaObject* const value = inside.fields.Value().get();
      inside.fields.Next();
      const long level = inside.level + Printer::kFieldStep;
      if (HoldsMore(value)) {
        return Open(*value, level);  // and `inside` may have moved
      }
      Print(value, level);
    }
    printer_.EndStruct(inside.isEmpty, inside.level);
    open_.pop_back();
  }

  void BeginField(InStruct& inside) {
    if (inside.prefix == nullptr) {
      out_.Append(Printer::FieldPrefix(inside.fields.Name(), inside.isEmpty, inside.level));
    } else {
      out_.Append(*inside.prefix);
      ++inside.prefix;
    }
    inside.isEmpty = false;
  }

  /// As above, for a list and its elements.
  void Step(InList& inside) {
    const auto& elements = *inside.elements;
    while (inside.next < elements.size() && !out_.HasFailed()) {
      printer_.BeginElement(inside.next == 0, inside.level);
      const MetaObj::MetaObject* const element = elements[inside.next].get();
      ++inside.next;
      const long level = inside.level + Printer::kElementStep;
      if (HoldsMore(element)) {
        return Open(*element, level);  // and `inside` may have moved
      }
      Print(element, level);
    }
    printer_.EndList(elements.empty(), inside.level);
    open_.pop_back();
  }

  Printer& printer_;
  TextWriter& out_;
  FieldPrefixes prefixes_;
  std::vector<std::variant<InStruct, InList>> open_;
};

}  // namespace Kestrel::AutoCli
