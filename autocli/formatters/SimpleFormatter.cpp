// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/SimpleFormatter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "autocli/formatters/FieldSlot.h"
#include "autocli/formatters/FieldStyle.h"
#include "autocli/formatters/HeaderMarker.h"
#include "autocli/formatters/Indent.h"
#include "autocli/formatters/PlainText.h"
#include "autocli/formatters/ValueView.h"
#include "autocli/text/TextWriter.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

constexpr std::string_view kNoHeader = "<NONE>";

/// The first line of a structure, which may hold the text of one of its fields.
class Header {
 public:
  Header(const std::string& typeName, const FormatParameters& params)
      : text_(typeName), marked_(std::string()) {
    const std::string key = "header:" + typeName;
    if (!params.HasParameter(key)) {
      return;
    }
    text_ = params.GetParameter(key);
    const std::string_view name = FindHeaderMarker(text_);
    hasMarker_ = !name.empty();
    marked_ = FieldSlot(std::string(name));
  }

  /// The text for `record`; it lives until the next call.
  std::string_view Of(const MetaStruct& record) {
    const auto* value = hasMarker_ ? marked_.Find(record) : nullptr;
    if (value == nullptr) {
      return text_;
    }
    const std::string marker = "%" + marked_.GetName() + "%";
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
  FieldSlot marked_;
  bool hasMarker_ = false;
  std::string filled_;
};

/// How the structures of one shape are printed, found out once for all of them.
struct Plan {
  struct Line {
    std::string name;
    std::size_t slot;                   // where the structures of the layout hold it, if they do
    std::string label;                  // the first blanks, the name, padded, and ": "
    std::unique_ptr<FieldStyle> style;  // null when values are printed as they are

    /// The field's value in a structure of the layout, null when that has no such field.
    const std::shared_ptr<MetaObject>* FindInSlot(const MetaStruct& record) const {
      return slot == MetaObj::FieldLayout::kNotFound ? nullptr
                                                     : MetaObj::ValueAccess::Slots(record) + slot;
    }
  };

  Plan(const MetaStruct& record, const FormatParameters& params);

  MetaObj::LayoutRef layout;  // none of structures that share none
  Header header;
  std::vector<Line> lines;
};

std::vector<std::string> ChooseFields(const MetaStruct& record, const FormatParameters& params) {
  for (const std::string& key : {"fields:" + record.GetTypeName(), std::string("fields")}) {
    if (params.HasParameter(key)) {
      return params.GetParameterAsList(key);
    }
  }
  return record.GetFieldNames();
}

std::size_t FindLongest(const std::vector<std::string>& names) {
  std::size_t longest = 0;
  for (const std::string& name : names) {
    longest = std::max(longest, name.size());
  }
  return longest;
}

Plan::Plan(const MetaStruct& record, const FormatParameters& params)
    : layout(MetaObj::ValueAccess::Layout(record)), header(record.GetTypeName(), params) {
  const std::vector<std::string> names = ChooseFields(record, params);
  const std::size_t aligned =
      params.GetParameter("align-fields") == "true" ? FindLongest(names) : 0;
  const bool isStyled = FieldStyle::IsUsedBy(params);
  lines.reserve(names.size());
  for (const std::string& name : names) {
    std::string label = std::string(kIndentStep, ' ') + name;
    label.resize(kIndentStep + std::max(name.size(), aligned), ' ');
    std::unique_ptr<FieldStyle> style;
    if (isStyled) {
      style = std::make_unique<FieldStyle>(record.GetTypeName(), name, params);
      style = style->IsPlain() ? nullptr : std::move(style);
    }
    const std::size_t slot = layout ? layout->Find(name) : MetaObj::FieldLayout::kNotFound;
    lines.push_back({name, slot, label + ": ", std::move(style)});
  }
}

/// The plans of the shapes that were met last.
class PlanCache {
 public:
  explicit PlanCache(const FormatParameters& params) : params_(params) {}

  /// The plan for `record`; the reference is good until the next call.
  const std::shared_ptr<Plan>& Get(const MetaStruct& record) {
    const MetaObj::FieldLayout* const layout = MetaObj::ValueAccess::Layout(record);
    if (layout == nullptr) {
      return single_ = std::make_shared<Plan>(record, params_);
    }
    for (const std::shared_ptr<Plan>& plan : plans_) {
      if (plan != nullptr && plan->layout.Get() == layout) {
        return plan;
      }
    }
    return plans_[next_++ % plans_.size()] = std::make_shared<Plan>(record, params_);
  }

 private:
  const FormatParameters& params_;
  std::array<std::shared_ptr<Plan>, 8> plans_;
  std::size_t next_ = 0;
  std::shared_ptr<Plan> single_;
};

/// Prints a value and all that it holds, without recursion: values nest deeper than stacks. The
/// caller owns the value and with it all that is in it.
class Walk {
 public:
  Walk(const FormatParameters& params, TextWriter& writer) : plans_(params), writer_(writer) {}

  void PrintValue(const MetaObject* value, long level) {
    OpenValue(value, level);
    Run();
  }

  void PrintStruct(const MetaStruct* record, long level) {
    OpenStruct(record, level);
    Run();
  }

  void PrintList(const MetaList* list, long level) {
    OpenList(list, level);
    Run();
  }

 private:
  /// A structure or a list that is being printed.
  struct Frame {
    const MetaObject* value;
    std::shared_ptr<Plan> plan;  // null for a list
    long level;
    std::size_t next;
  };

  void Run() {
    while (!open_.empty() && !writer_.HasFailed()) {
      open_.back().plan == nullptr ? PrintElements() : GoOnWithFields();
    }
  }

  void OpenValue(const MetaObject* value, long level) {
    if (value == nullptr) {
      return;
    }
    switch (value->GetType()) {
      case MetaType::Bool:
      case MetaType::Int:
      case MetaType::String:
        return PrintLine(MetaObj::ValueAccess::IsScalarClass(*value)
                             ? plain_.Of(*value)
                             : MisreadText(value->GetType()));
      case MetaType::Struct:
        return OpenStruct(ViewAs<MetaStruct>(value), level);
      case MetaType::List:
        return OpenList(ViewAs<MetaList>(value), level);
    }
  }

  void PrintLine(std::string_view text) { writer_.AppendAll(text, '\n'); }

  /// Prints a structure up to the field behind which more is to be opened. One without such a
  /// field, as most are, is printed whole and needs no place on the stack.
  void OpenStruct(const MetaStruct* record, long level) {
    for (const MetaObject* inner = nullptr;; record = ViewAs<MetaStruct>(inner)) {
      if (record == nullptr) {
        return PrintLine(MisreadText(MetaType::Struct));
      }
      const std::shared_ptr<Plan>& plan = plans_.Get(*record);
      PrintHeader(*plan, *record, level);
      std::size_t next = 0;
      inner = PrintFields(*record, *plan, level, next);
      if (inner == nullptr) {
        return;
      }
      open_.push_back({record, plan, level, next});
      level += 2;
      if (inner->GetType() == MetaType::List) {
        return OpenList(ViewAs<MetaList>(inner), level);
      }
    }
  }

  void PrintHeader(Plan& plan, const MetaStruct& record, long level) {
    const std::string_view header = plan.header.Of(record);
    if (header != kNoHeader) {
      writer_.AppendAll(Blanks{IndentOf(level)}, header, ":\n");
    }
  }

  void OpenList(const MetaList* list, long level) {
    if (list == nullptr) {
      PrintLine(MisreadText(MetaType::List));
      return;
    }
    if (list->GetListType() == MetaType::Struct || list->GetListType() == MetaType::List) {
      open_.push_back({list, nullptr, level, 0});
      return;
    }
    std::string_view separator;
    for (const auto& element : list->GetObjects()) {
      if (writer_.HasFailed()) {
        return;
      }
      writer_.Append(separator);
      writer_.Append(plain_.Of(*element));
      separator = ", ";
    }
    writer_.Append('\n');
  }

  /// Prints elements until one of them is to be gone on with or none is left.
  void PrintElements() {
    const std::size_t depth = open_.size();
    while (open_.size() == depth && !writer_.HasFailed()) {
      Frame& frame = open_.back();
      const auto& elements = static_cast<const MetaList&>(*frame.value).GetObjects();
      writer_.Append('\n');
      if (frame.next == elements.size()) {
        open_.pop_back();
        return;
      }
      OpenValue(elements[frame.next++].get(), frame.level + 1);
    }
  }

  void GoOnWithFields() {
    Frame& frame = open_.back();
    const long level = frame.level + 2;
    const auto& record = static_cast<const MetaStruct&>(*frame.value);
    const MetaObject* const inner = PrintFields(record, *frame.plan, frame.level, frame.next);
    inner == nullptr ? open_.pop_back() : OpenValue(inner, level);
  }

  /// Prints fields from the line `next` on, up to the first that is a structure or a list, which
  /// it gives, or to the end. The label of what it gives is printed.
  const MetaObject* PrintFields(const MetaStruct& record, Plan& plan, long level,
                                std::size_t& next) {
    if (plan.layout) {
      return PrintLines(plan, level, next, [&record, &plan](const Plan::Line& line) {
        // A value of a foreign class may change the structure as its text is made.
        return MetaObj::ValueAccess::Layout(record) == plan.layout.Get()
                   ? line.FindInSlot(record)
                   : MetaObj::ValueAccess::Find(record, line.name);
      });
    }
    FieldFinder finder(record);
    return PrintLines(plan, level, next,
                      [&finder](const Plan::Line& line) { return finder.Find(line.name); });
  }

  template <typename Find>
  const MetaObject* PrintLines(Plan& plan, long level, std::size_t& next, const Find& find) {
    const Blanks indent{IndentOf(level)};
    while (next < plan.lines.size() && !writer_.HasFailed()) {
      const Plan::Line& line = plan.lines[next++];
      const std::shared_ptr<MetaObject>* const value = find(line);
      if (value == nullptr) {
        // The fields behind an unknown one are not printed.
        writer_.AppendAll("Error getting field ", line.name, '\n');
        return nullptr;
      }
      switch ((*value)->GetType()) {
        case MetaType::Struct:
          writer_.AppendAll(indent, line.label, '\n');
          return value->get();
        case MetaType::List:
          writer_.AppendAll(indent, line.label);
          return value->get();
        default:
          PrintField(indent, line, **value);
      }
    }
    return nullptr;
  }

  /// Prints a field whose value stands on its line.
  void PrintField(Blanks indent, const Plan::Line& line, const MetaObject& value) {
    if (line.style != nullptr || !MetaObj::ValueAccess::IsScalarClass(value)) {
      // The label first: a value that throws when it is asked for its text leaves it behind.
      writer_.AppendAll(indent, line.label);
      PrintLine(line.style == nullptr ? value.ToString() : line.style->MakeText(&value));
    } else if (const auto* const number = ViewAs<MetaObj::MetaInt>(&value)) {
      writer_.AppendAll(indent, line.label, Decimal{number->GetValue()}, '\n');
    } else {
      writer_.AppendAll(indent, line.label, plain_.Of(value), '\n');
    }
  }

  PlanCache plans_;
  TextWriter& writer_;
  std::vector<Frame> open_;
  PlainText plain_;
};

}  // namespace

SimpleFormatter::SimpleFormatter() : Formatter("simple") {
  description =
      "Print a representation of any item to the screen. This can be any type, but this formatter "
      "excels at printing structs and lists of structs.";
  // Spelled so, here and below: scripts match these texts.
  params.push_back(
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
       "the display of the header the special value <NONE> can be used"});
  params.push_back(
      {"fields:<TypeName>",
       "When printing a struct use the set of fields given in this parameter.  This allows the "
       "ordering and filtering of the fields printed for a given struct. If no ':<TypeName>' is "
       "given then then all structs encounted in the output will attempt to use these fields.  "
       "This provides a reasonable default and compatible output with other formatters"});
  params.push_back({"units:<TypeName>.<FieldName>",
                    "When printing a struct use the given 'units' value as a suffix for a given "
                    "field.  For example specifying \"units:ScsiDeviceList:Size\" = \"Mb\" would "
                    "append the string 'Mb' to the end of a field"});
  params.push_back({"printf:<TypeName>.<FieldName>",
                    "When printing a struct use the given 'printf' formatting string for printing "
                    "the value.  This uses standard printf syntax to print a given field.  For "
                    "example specifying \"units:ScsiDeviceList.Size\" = \"Mb\" would append the "
                    "string 'Mb' to the end of a field"});
  params.push_back({"align-fields",
                    "When printing a struct left align all of the fields values so they all start "
                    "at the same column"});
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
  TextWriter writer(out);
  Walk(parameters, writer).PrintValue(value.get(), level);
  writer.Finish();
}

void SimpleFormatter::FormatStruct(std::shared_ptr<MetaStruct> record, FormatParameters& parameters,
                                   std::ostream& out, int level) {
  TextWriter writer(out);
  Walk(parameters, writer).PrintStruct(record.get(), level);
  writer.Finish();
}

void SimpleFormatter::FormatList(std::shared_ptr<MetaList> list, FormatParameters& parameters,
                                 std::ostream& out, int level) {
  TextWriter writer(out);
  Walk(parameters, writer).PrintList(list.get(), level);
  writer.Finish();
}

std::string GetIndent(int level) { return std::string(IndentOf(level), ' '); }

}  // namespace Kestrel::AutoCli
