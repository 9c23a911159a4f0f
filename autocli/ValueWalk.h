#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "autocli/FieldPrefixes.h"
#include "autocli/TextWriter.h"
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
///   void BeginStruct(const MetaStruct&, long level);  void EndStruct(long level);
///   void BeginList(const MetaList&, long level);      void EndList(long level);
///   void EndField(bool isLast, long level);
///   void BeginElement(long level);      void EndElement(bool isLast, long level);
///   static std::string FieldPrefix(const std::string& name, long level);  the text before a field
///   static constexpr long kFieldStep, kElementStep;   how much deeper fields and elements stand
template <typename Printer>
class ValueWalk {
 public:
  ValueWalk(Printer& printer, TextWriter& out)
      : printer_(printer), out_(out), prefixes_(Printer::FieldPrefix) {}

  /// Prints `value`, which stays as it is meanwhile.
  void Run(const MetaObj::MetaObject* value, long level) {
    Open(value, level);
    while (!open_.empty() && !out_.HasFailed()) {
      std::visit([this](auto& inside) { this->Step(inside); }, open_.back());
    }
  }

 private:
  struct InStruct {
    MetaObj::FieldCursor fields;
    const std::string* prefix;  // of the next field; null when prefixes are made one at a time
    bool hasBegun;
    long level;
  };
  struct InList {
    const std::vector<std::shared_ptr<MetaObj::MetaObject>>* elements;
    std::size_t next;
    long level;
  };

  /// Prints a scalar, or the beginning of what holds more.
  void Open(const MetaObj::MetaObject* value, long level) {
    if (value == nullptr || !MetaObj::ValueAccess::IsValueClass(*value)) {
      return printer_.Misread(value);
    }
    switch (value->GetType()) {
      case MetaObj::MetaType::Bool:
        return printer_.Bool(static_cast<const MetaObj::MetaBool*>(value)->GetValue(), level);
      case MetaObj::MetaType::Int:
        return printer_.Int(static_cast<const MetaObj::MetaInt*>(value)->GetValue(), level);
      case MetaObj::MetaType::String:
        return printer_.String(static_cast<const MetaObj::MetaString*>(value)->GetValue(), level);
      case MetaObj::MetaType::Struct:
        return OpenStruct(*static_cast<const MetaObj::MetaStruct*>(value), level);
      case MetaObj::MetaType::List:
        return OpenList(*static_cast<const MetaObj::MetaList*>(value), level);
    }
  }

  void OpenStruct(const MetaObj::MetaStruct& record, long level) {
    printer_.BeginStruct(record, level);
    open_.push_back(
        InStruct{MetaObj::FieldCursor(record), prefixes_.Find(record, level), false, level});
  }

  void OpenList(const MetaObj::MetaList& list, long level) {
    printer_.BeginList(list, level);
    open_.push_back(InList{&list.GetObjects(), 0, level});
  }

  /// Ends the field before, if there is one, and begins the next one or ends the structure.
  void Step(InStruct& inside) {
    const bool isAtEnd = inside.fields.AtEnd();
    if (inside.hasBegun) {
      printer_.EndField(isAtEnd, inside.level);
    }
    if (isAtEnd) {
      printer_.EndStruct(inside.level);
      return open_.pop_back();
    }
    inside.hasBegun = true;
    BeginField(inside);
    const MetaObj::MetaObject* const value = inside.fields.Value().get();
    inside.fields.Next();
    Open(value, inside.level + Printer::kFieldStep);  // `inside` may move
  }

  void BeginField(InStruct& inside) {
    if (inside.prefix == nullptr) {
      out_.Append(Printer::FieldPrefix(inside.fields.Name(), inside.level));
      return;
    }
    out_.Append(*inside.prefix);
    ++inside.prefix;
  }

  /// As above, for a list and its elements.
  void Step(InList& inside) {
    const bool isAtEnd = inside.next == inside.elements->size();
    if (inside.next > 0) {
      printer_.EndElement(isAtEnd, inside.level);
    }
    if (isAtEnd) {
      printer_.EndList(inside.level);
      return open_.pop_back();
    }
    printer_.BeginElement(inside.level);
    const MetaObj::MetaObject* const element = (*inside.elements)[inside.next].get();
    ++inside.next;
    Open(element, inside.level + Printer::kElementStep);  // `inside` may move
  }

  Printer& printer_;
  TextWriter& out_;
  FieldPrefixes prefixes_;
  std::vector<std::variant<InStruct, InList>> open_;
};

}  // namespace Kestrel::AutoCli
