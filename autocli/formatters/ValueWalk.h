// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <variant>
#include <vector>

#include "autocli/text/TextWriter.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "metaobj/ValueAccess.h"

namespace Kestrel::AutoCli {

/// Visits a value and everything that it contains, in order, and makes a printer write it. The walk
/// has its own stack, so deep nesting cannot exhaust the stack of the program. It ends early once
/// the output stream has failed.
///
/// A value is either a leaf, which the printer writes in one go, or a structure or list that the
/// walk opens. The printer, which writes to the `TextWriter` of the walk, has these members;
/// `level` is the depth of the value, structure or list concerned.
///
///   static bool IsOpened(const MetaObject* value);
///       Whether the walk opens the value; may be true only for a MetaStruct or a MetaList.
///   void PrintLeaf(const MetaObject* value, long level);
///       Prints a value that is not opened. `value` may be null.
///   Fields EnterStruct(const MetaStruct& structure, long level);
///       Prints the beginning of a structure. `Fields`, a movable type of the printer, keeps track
///       of the fields that are left. The walk calls `PrintFields` at least once before the next
///       `EnterStruct`.
///   const MetaObject* PrintFields(Fields& fields, long level);
///       Prints fields up to the next one that is to be opened, and returns its value; or prints
///       all that are left and the end of the structure, and returns null.
///   void EnterList(const MetaList& list, long level);
///   void BeginElement(bool isFirst, long level);
///       Also ends the element before it.
///   void EndList(bool isEmpty, long level);
///       Also ends the last element.
///   static constexpr long kFieldStep, kElementStep;
///       How much deeper a field is than its structure, and an element than its list.
template <typename Printer>
class ValueWalk {
 public:
  ValueWalk(Printer& printer, TextWriter& out) : printer_(printer), out_(out) {}

  /// Prints `value`, which may be null and must not change during the call.
  void Run(const MetaObj::MetaObject* value, long level) {
    if (!Printer::IsOpened(value)) {
      return printer_.PrintLeaf(value, level);
    }
    Open(value, level);
    while (!open_.empty() && !out_.HasFailed()) {
      std::visit([this](auto& inside) { this->Continue(inside); }, open_.back());
    }
  }

 private:
  struct InStruct {
    typename Printer::Fields fields;
    long level;
  };
  struct InList {
    const std::vector<std::shared_ptr<MetaObj::MetaObject>>* elements;
    std::size_t next;
    long level;
  };

  /// Prints `value` up to the first value inside it that is opened, continues with that one, and so
  /// on. Most structures contain no such value: they are printed whole and never put on the stack.
  void Open(const MetaObj::MetaObject* value, long level) {
    while (value != nullptr) {
      if (const auto* const list = MetaObj::ValueAccess::AsList(*value)) {
        printer_.EnterList(*list, level);
        InList inside{&list->GetObjects(), 0, level};
        value = PrintElements(inside);
        if (value != nullptr) {
          open_.emplace_back(inside);
          level += Printer::kElementStep;
        }
        continue;
      }
      const auto& structure = static_cast<const MetaObj::MetaStruct&>(*value);
      typename Printer::Fields fields = printer_.EnterStruct(structure, level);
      value = printer_.PrintFields(fields, level);
      if (value != nullptr) {
        open_.emplace_back(InStruct{std::move(fields), level});
        level += Printer::kFieldStep;
      }
    }
  }

  void Continue(InStruct& inside) {
    const long fieldLevel = inside.level + Printer::kFieldStep;
    const MetaObj::MetaObject* const value = printer_.PrintFields(inside.fields, inside.level);
    value == nullptr ? open_.pop_back() : Open(value, fieldLevel);
  }

  void Continue(InList& inside) {
    const long elementLevel = inside.level + Printer::kElementStep;
    // Once something has been put on the stack, `inside` may have moved.
    for (const std::size_t depth = open_.size(); open_.size() == depth;) {
      const MetaObj::MetaObject* const value = PrintElements(inside);
      if (value == nullptr) {
        return open_.pop_back();
      }
      Open(value, elementLevel);
    }
  }

  /// Prints elements up to the next one that is opened, and returns that one; or prints all that
  /// are left and the end of the list, and returns null.
  const MetaObj::MetaObject* PrintElements(InList& inside) {
    const auto& elements = *inside.elements;
    for (std::size_t next = inside.next; next < elements.size() && !out_.HasFailed(); ++next) {
      printer_.BeginElement(next == 0, inside.level);
      const MetaObj::MetaObject* const element = elements[next].get();
      if (Printer::IsOpened(element)) {
        inside.next = next + 1;
        return element;
      }
      printer_.PrintLeaf(element, inside.level + Printer::kElementStep);
    }
    printer_.EndList(elements.empty(), inside.level);
    return nullptr;
  }

  Printer& printer_;
  TextWriter& out_;
  std::vector<std::variant<InStruct, InList>> open_;
};

}  // namespace Kestrel::AutoCli
