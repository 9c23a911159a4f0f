// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "autocli/formatters/LayoutCache.h"
#include "autocli/formatters/ValueView.h"
#include "autocli/formatters/ValueWalk.h"
#include "autocli/text/TextWriter.h"
#include "metaobj/FieldCursor.h"

namespace Kestrel::AutoCli {

/// A base class for printers of `ValueWalk` that print all fields of every structure in order: the
/// common part of the JSON, Python and XML printers. `Syntax`, the derived class, has BeginElement,
/// EndList, kFieldStep and kElementStep, as `ValueWalk` describes them, and the members below.
/// `before` must be written first; it is the prefix of a field, or empty.
///
///   void Bool(std::string_view before, bool value, long level);
///   void Int(std::string_view before, long value, long level);
///   void String(std::string_view before, const std::string& value, long level);
///   void Misread(std::string_view before, const MetaObject* value);
///       Prints an error message, or throws, for a value that is null or of a foreign class.
///   void BeginStruct(std::string_view before, const MetaStruct& structure, long level);
///   void EndStruct(bool isEmpty, long level);
///       Also ends the last field.
///   void BeginList(std::string_view before, const MetaList& list, long level);
///   static std::string FieldPrefix(const std::string& name, bool isFirst, long level);
///       Returns the end of the previous field, if any, and the beginning of the field `name`.
///       `level` is that of the structure. The result must depend on the arguments only.
template <typename Syntax>
class DocumentPrinter {
 public:
  struct Fields {
    MetaObj::FieldCursor left;
    const MetaObj::FieldLayout* layout;  // null if prefixes are made one at a time
    std::size_t count;                   // all fields of the structure
  };

  /// Prints `value` and everything that it contains; null is printed as a misread value.
  static void Print(const MetaObj::MetaObject* value, TextWriter& out, long level) {
    Syntax printer(out);
    ValueWalk<Syntax>(printer, out).Run(value, level);
  }

  static bool IsOpened(const MetaObj::MetaObject* value) {
    return value != nullptr && MetaObj::ValueAccess::IsValueClass(*value) &&
           !MetaObj::ValueAccess::IsScalarClass(*value);
  }

  void PrintLeaf(const MetaObj::MetaObject* value, long level) { PrintScalar("", value, level); }

  Fields EnterStruct(const MetaObj::MetaStruct& structure, long level) {
    Self().BeginStruct(std::exchange(before_, ""), structure, level);
    const MetaObj::FieldCursor left(structure);
    return {left, level > kMaxPreparedLevel ? nullptr : MetaObj::ValueAccess::Layout(structure),
            left.CountLeft()};
  }

  const MetaObj::MetaObject* PrintFields(Fields& fields, long level) {
    if (fields.layout == nullptr) {
      return PrintEach(fields, level, [this, &fields, level](const MetaObj::FieldCursor& left) {
        made_ = Syntax::FieldPrefix(left.Name(), left.CountLeft() == fields.count, level);
        return std::string_view(made_);
      });
    }
    const std::string* prefix = FindPrefixes(fields, level);
    return PrintEach(fields, level, [&prefix](const MetaObj::FieldCursor& /*left*/) {
      return std::string_view(*prefix++);
    });
  }

  void EnterList(const MetaObj::MetaList& list, long level) {
    Self().BeginList(std::exchange(before_, ""), list, level);
  }

 protected:
  explicit DocumentPrinter(TextWriter& out) : out_(out) {}
  ~DocumentPrinter() = default;

  TextWriter& out_;

 private:
  // Results with more layouts are rare and seldom repeat any of them.
  static constexpr std::size_t kMaxLayouts = 64;
  // Deeper structures are rare, and keeping their long prefixes would take much memory.
  static constexpr long kMaxPreparedLevel = 64;

  Syntax& Self() { return static_cast<Syntax&>(*this); }

  void PrintScalar(std::string_view before, const MetaObj::MetaObject* value, long level) {
    if (const auto* const text = ViewAs<MetaObj::MetaString>(value)) {
      Self().String(before, text->GetValue(), level);
    } else if (const auto* const number = ViewAs<MetaObj::MetaInt>(value)) {
      Self().Int(before, number->GetValue(), level);
    } else if (const auto* const boolean = ViewAs<MetaObj::MetaBool>(value)) {
      Self().Bool(before, boolean->GetValue(), level);
    } else {
      Self().Misread(before, value);
    }
  }

  /// Does the work of `PrintFields` with the prefixes that `nextPrefix` returns.
  template <typename NextPrefix>
  const MetaObj::MetaObject* PrintEach(Fields& fields, long level, const NextPrefix& nextPrefix) {
    MetaObj::FieldCursor left = fields.left;
    while (!left.AtEnd() && !out_.HasFailed()) {
      const std::string_view before = nextPrefix(left);
      const MetaObj::MetaObject* const value = left.Value().get();
      left.Next();
      if (IsOpened(value)) {
        fields.left = left;
        before_ = before;
        return value;
      }
      PrintScalar(before, value, level + Syntax::kFieldStep);
    }
    Self().EndStruct(fields.count == 0, level);
    return nullptr;
  }

  /// Returns the prefixes of the fields that are left. The structure must have a layout.
  const std::string* FindPrefixes(const Fields& fields, long level) {
    const std::vector<std::string>& all =
        prefixes_.Get(*fields.layout, level, [&] { return MakePrefixes(*fields.layout, level); });
    return all.data() + fields.count - fields.left.CountLeft();
  }

  static std::vector<std::string> MakePrefixes(const MetaObj::FieldLayout& layout, long level) {
    std::vector<std::string> prefixes;
    prefixes.reserve(layout.Count());
    for (std::size_t i = 0; i < layout.Count(); ++i) {
      prefixes.push_back(Syntax::FieldPrefix(layout.At(i).name, i == 0, level));
    }
    return prefixes;
  }

  LayoutCache<std::vector<std::string>, kMaxLayouts> prefixes_;
  std::string made_;         // the last prefix that is not in `prefixes_`
  std::string_view before_;  // the prefix of the value to be opened next
};

}  // namespace Kestrel::AutoCli
