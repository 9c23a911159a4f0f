// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/SimpleFormatter.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "autocli/formatters/FieldSlot.h"
#include "autocli/formatters/FieldStyle.h"
#include "autocli/formatters/HeaderMarker.h"
#include "autocli/formatters/Indent.h"
#include "autocli/formatters/LayoutCache.h"
#include "autocli/formatters/PlainText.h"
#include "autocli/formatters/ValueView.h"
#include "autocli/formatters/ValueWalk.h"
#include "autocli/text/TextWriter.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

constexpr std::string_view kNoHeader = "<NONE>";

/// The first line of a structure, which may contain the text of one of its fields.
class Header {
 public:
  Header(const std::string& typeName, const FormatParameters& params) : text_(typeName) {
    const std::string key = "header:" + typeName;
    if (params.HasParameter(key)) {
      text_ = params.GetParameter(key);
      fieldName_ = FindHeaderMarker(text_);
    }
  }

  /// Returns the text for `structure`, valid until the next call.
  std::string_view Of(const MetaStruct& structure) {
    const auto* const value =
        fieldName_.empty() ? nullptr : MetaObj::ValueAccess::Find(structure, fieldName_);
    if (value == nullptr) {
      return text_;
    }
    const std::string marker = "%" + fieldName_ + "%";
    const std::string inserted = (*value)->ToString();
    filled_.clear();
    std::size_t start = 0;
    for (std::size_t at; (at = text_.find(marker, start)) != std::string::npos;) {
      filled_.append(text_, start, at - start).append(inserted);
      start = at + marker.size();
    }
    return filled_.append(text_, start, std::string::npos);
  }

 private:
  std::string text_;
  std::string fieldName_;  // of the marked field; empty if there is no marker
  std::string filled_;
};

/// How the structures of one layout are printed, worked out once for all of them.
struct StructPlan : std::enable_shared_from_this<StructPlan> {
  struct Line {
    std::string name;
    std::size_t slot;                   // of the field in `layout`; kNotFound if there is none
    std::string label;                  // indentation of one level, padded name, ": "
    std::unique_ptr<FieldStyle> style;  // null if values are printed unchanged
  };

  StructPlan(const MetaStruct& structure, const FormatParameters& params);

  MetaObj::LayoutRef layout;  // empty if the structure has its own index
  Header header;
  std::vector<Line> lines;
};

std::vector<std::string> ChooseFields(const MetaStruct& structure, const FormatParameters& params) {
  for (const std::string& key : {"fields:" + structure.GetTypeName(), std::string("fields")}) {
    if (params.HasParameter(key)) {
      return params.GetParameterAsList(key);
    }
  }
  return structure.GetFieldNames();
}

std::size_t FindLongest(const std::vector<std::string>& names) {
  std::size_t longest = 0;
  for (const std::string& name : names) {
    longest = std::max(longest, name.size());
  }
  return longest;
}

/// Returns the style of a field, null if its values are printed unchanged.
std::unique_ptr<FieldStyle> MakeStyle(const std::string& typeName, const std::string& fieldName,
                                      const FormatParameters& params) {
  auto style = std::make_unique<FieldStyle>(typeName, fieldName, params);
  return style->IsPlain() ? nullptr : std::move(style);
}

StructPlan::StructPlan(const MetaStruct& structure, const FormatParameters& params)
    : layout(MetaObj::ValueAccess::Layout(structure)), header(structure.GetTypeName(), params) {
  const std::vector<std::string> names = ChooseFields(structure, params);
  const std::size_t aligned =
      params.GetParameter("align-fields") == "true" ? FindLongest(names) : 0;
  const bool isStyled = FieldStyle::IsUsedBy(params);
  lines.reserve(names.size());
  for (const std::string& name : names) {
    std::string label = std::string(kIndentStep, ' ') + name;
    label.resize(kIndentStep + std::max(name.size(), aligned), ' ');
    lines.push_back({name, layout ? layout->Find(name) : MetaObj::FieldLayout::kNotFound,
                     label + ": ",
                     isStyled ? MakeStyle(structure.GetTypeName(), name, params) : nullptr});
  }
}

/// The printer of the simple format; see `ValueWalk`.
class SimplePrinter {
 public:
  static constexpr long kFieldStep = 2;
  static constexpr long kElementStep = 1;

  struct Fields {
    const MetaStruct* structure;
    const StructPlan* plan;
    std::shared_ptr<const StructPlan> owner;  // of `plan`, once a field has been opened
    const StructPlan::Line* nextLine;         // in `plan`
  };

  SimplePrinter(const FormatParameters& params, TextWriter& out) : params_(params), out_(out) {}

  /// A list of scalars is not opened: it is printed on one line.
  static bool IsOpened(const MetaObject* value) {
    if (const auto* const list = ViewAs<MetaList>(value)) {
      return list->GetListType() == MetaType::Struct || list->GetListType() == MetaType::List;
    }
    return ViewAs<MetaStruct>(value) != nullptr;
  }

  void PrintLeaf(const MetaObject* value, long /*level*/) {
    if (value == nullptr) {
      return;
    }
    if (const auto* const list = ViewAs<MetaList>(value)) {
      PrintElements(*list);
    } else if (MetaObj::ValueAccess::IsScalarClass(*value)) {
      PrintLine(plain_.Of(*value));
    } else {
      PrintMisread(value->GetType());
    }
  }

  /// Prints the error message for a value of a foreign class that has this kind.
  void PrintMisread(MetaType kind) {
    const std::string_view text = MisreadText(kind);
    if (!text.empty()) {
      PrintLine(text);
    }
  }

  Fields EnterStruct(const MetaStruct& structure, long level) {
    StructPlan& plan = FindPlan(structure);
    const std::string_view header = plan.header.Of(structure);
    if (header != kNoHeader) {
      out_.AppendAll(Spaces{IndentOf(level)}, header, ":\n");
    }
    return {&structure, &plan, nullptr, plan.lines.data()};
  }

  const MetaObject* PrintFields(Fields& fields, long level) {
    const Spaces indent{IndentOf(level)};
    while (const MetaObject* const value = PrintScalarFields(fields, indent)) {
      const StructPlan::Line& line = fields.nextLine[-1];
      const bool isStruct = value->GetType() == MetaType::Struct;
      // Written first, so that the label is in the output even if `ToString` throws.
      out_.AppendAll(indent, line.label, std::string_view(isStruct ? "\n" : ""));
      if (IsOpened(value)) {
        fields.owner = fields.plan->shared_from_this();
        return value;
      }
      PrintOther(line, *value);
    }
    return nullptr;
  }

  void EnterList(const MetaList& /*list*/, long /*level*/) {}
  void BeginElement(bool /*isFirst*/, long /*level*/) { out_.Append('\n'); }
  void EndList(bool /*isEmpty*/, long /*level*/) { out_.Append('\n'); }

 private:
  // A result with more layouts than this seldom repeats any of them.
  static constexpr std::size_t kMaxPlans = 64;

  /// Returns the plan for the structure. The reference is valid until the next call.
  StructPlan& FindPlan(const MetaStruct& structure) {
    const auto make = [&] { return std::make_shared<StructPlan>(structure, params_); };
    const MetaObj::FieldLayout* const layout = MetaObj::ValueAccess::Layout(structure);
    return layout == nullptr ? *(single_ = make()) : *plans_.Get(*layout, make);
  }

  void PrintLine(std::string_view text) { out_.AppendAll(text, '\n'); }

  void PrintElements(const MetaList& list) {
    std::string_view separator;
    for (const auto& element : list.GetObjects()) {
      if (out_.HasFailed()) {
        return;
      }
      out_.Append(separator);
      out_.Append(plain_.Of(*element));
      separator = ", ";
    }
    out_.Append('\n');
  }

  /// Prints fields up to the next one whose value is not a scalar and returns that value, or prints
  /// all that are left and returns null. Looks at the layout on each call, because a value of a
  /// foreign class may change the structure when `ToString` is called.
  const MetaObject* PrintScalarFields(Fields& fields, Spaces indent) {
    const MetaStruct& structure = *fields.structure;
    const MetaObj::FieldLayout* const layout = MetaObj::ValueAccess::Layout(structure);
    if (layout != nullptr && layout == fields.plan->layout.Get()) {
      const std::shared_ptr<MetaObject>* const slots = MetaObj::ValueAccess::Slots(structure);
      return PrintScalarLines(fields, indent, [slots](const StructPlan::Line& line) {
        return ValueInSlot(slots, line.slot);
      });
    }
    FieldFinder finder(structure);
    return PrintScalarLines(
        fields, indent, [&finder](const StructPlan::Line& line) { return finder.Find(line.name); });
  }

  template <typename Find>
  const MetaObject* PrintScalarLines(Fields& fields, Spaces indent, const Find& find) {
    const StructPlan::Line* const end = fields.plan->lines.data() + fields.plan->lines.size();
    for (const StructPlan::Line* line = fields.nextLine; line != end && !out_.HasFailed(); ++line) {
      const std::shared_ptr<MetaObject>* const value = find(*line);
      if (value == nullptr) {
        // The fields after an unknown one are not printed.
        out_.AppendAll("Error getting field ", line->name, '\n');
        return nullptr;
      }
      if (!MetaObj::ValueAccess::IsScalarClass(**value)) {
        fields.nextLine = line + 1;
        return value->get();
      }
      PrintScalar(indent, *line, **value);
    }
    return nullptr;
  }

  void PrintScalar(Spaces indent, const StructPlan::Line& line, const MetaObject& value) {
    if (line.style != nullptr) {
      out_.AppendAll(indent, line.label, line.style->MakeText(&value), '\n');
    } else if (const auto* const number = ViewAs<MetaObj::MetaInt>(&value)) {
      out_.AppendAll(indent, line.label, Decimal{number->GetValue()}, '\n');
    } else {
      out_.AppendAll(indent, line.label, plain_.Of(value), '\n');
    }
  }

  /// Prints the value of a field that is neither opened nor a scalar.
  void PrintOther(const StructPlan::Line& line, const MetaObject& value) {
    if (value.GetType() == MetaType::Struct || value.GetType() == MetaType::List) {
      PrintLeaf(&value, 0);
    } else {
      PrintLine(line.style == nullptr ? value.ToString() : line.style->MakeText(&value));
    }
  }

  const FormatParameters& params_;
  TextWriter& out_;
  LayoutCache<std::shared_ptr<StructPlan>, kMaxPlans> plans_;
  std::shared_ptr<StructPlan> single_;  // for the last structure without a layout
  PlainText plain_;
};

void Print(const MetaObject* value, const FormatParameters& params, std::ostream& out, long level) {
  TextWriter writer(out);
  SimplePrinter printer(params, writer);
  ValueWalk<SimplePrinter>(printer, writer).Run(value, level);
  writer.Finish();
}

/// Prints `value`; if it is null, prints the error message for a value of `kind`.
void PrintOrMisread(const MetaObject* value, MetaType kind, const FormatParameters& params,
                    std::ostream& out, long level) {
  if (value != nullptr) {
    return Print(value, params, out, level);
  }
  TextWriter writer(out);
  SimplePrinter(params, writer).PrintMisread(kind);
  writer.Finish();
}

}  // namespace

SimpleFormatter::SimpleFormatter() : Formatter("simple") {
  description =
      "Print a representation of any item to the screen. This can be any type, but this formatter "
      "excels at printing structs and lists of structs.";
  // Spelled so: scripts match these descriptions.
  params = {
      {"header:<TypeName>",
       "When printing a struct type, prefix the output of the struct with the given text string "
       "and then indent all the struct fields below this text.  The TypeName value can be "
       "determined from the raw or xml output for a command.  For this field a special variable "
       "substitution is available in the value of this format paramter.  If the value contains a "
       "string %<Field>% then this formatter will do token substitution and replace the value of "
       "%<Field>% with the given value of the field in <TypeName>.  Note this can only be a scalar "
       "type (int, bool, string) and must exactly match one of the fields in the struct "
       "<TypeName>.  Example: 'header:ScsiDeviceList' = 'SCSI Device %Device Name%' will result in "
       "a header of 'SCSI Device naa.XXXX'.  Note only one %<Field>% tag is supported.  To disable "
       "the display of the header the special value <NONE> can be used"},
      {"fields:<TypeName>",
       "When printing a struct use the set of fields given in this parameter.  This allows the "
       "ordering and filtering of the fields printed for a given struct. If no ':<TypeName>' is "
       "given then then all structs encounted in the output will attempt to use these fields.  "
       "This provides a reasonable default and compatible output with other formatters"},
      {kUnitsParam,
       "When printing a struct use the given 'units' value as a suffix for a given field.  For "
       "example specifying \"units:ScsiDeviceList:Size\" = \"Mb\" would append the string 'Mb' to "
       "the end of a field"},
      {kPrintfParam,
       "When printing a struct use the given 'printf' formatting string for printing the value.  "
       "This uses standard printf syntax to print a given field.  " +
           std::string(kStyleExample)},
      {"align-fields",
       "When printing a struct left align all of the fields values so they all start at the same "
       "column"},
  };
}

SimpleFormatter::~SimpleFormatter() = default;

void SimpleFormatter::Format(const std::shared_ptr<CallSpec::Output>& output,
                             FormatParameters& parameters, DisplayContext& /*display*/,
                             std::ostream& out) {
  const std::shared_ptr<MetaObject> root = output->GetRootObject();
  Format(root, parameters, out, ViewAs<MetaList>(root.get()) == nullptr ? 0 : -1);
}

void SimpleFormatter::Format(std::shared_ptr<MetaObject> value, FormatParameters& parameters,
                             std::ostream& out, int level) {
  Print(value.get(), parameters, out, level);
}

void SimpleFormatter::FormatStruct(std::shared_ptr<MetaStruct> structure,
                                   FormatParameters& parameters, std::ostream& out, int level) {
  PrintOrMisread(structure.get(), MetaType::Struct, parameters, out, level);
}

void SimpleFormatter::FormatList(std::shared_ptr<MetaList> list, FormatParameters& parameters,
                                 std::ostream& out, int level) {
  PrintOrMisread(list.get(), MetaType::List, parameters, out, level);
}

std::string GetIndent(int level) { return std::string(IndentOf(level), ' '); }

}  // namespace Kestrel::AutoCli
