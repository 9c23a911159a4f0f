#include "kestrel/autocli/SimpleFormatter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "autocli/FieldSlot.h"
#include "autocli/FieldStyle.h"
#include "autocli/HeaderMarker.h"
#include "autocli/Indent.h"
#include "autocli/PlainText.h"
#include "autocli/TextWriter.h"
#include "autocli/ValueView.h"

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
    FieldSlot field;
    std::string label;                  // the first blanks, the name, padded, and ": "
    std::unique_ptr<FieldStyle> style;  // null when values are printed as they are
  };

  Plan(const MetaStruct& record, const FormatParameters& params);

  MetaObj::LayoutRef layout;
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
    lines.push_back({FieldSlot(name), label + ": ", std::move(style)});
  }
}

/// The plans of the shapes that were met last.
class PlanCache {
 public:
  explicit PlanCache(const FormatParameters& params) : params_(params) {}

  std::shared_ptr<Plan> Get(const MetaStruct& record) {
    const MetaObj::FieldLayout* const layout = MetaObj::ValueAccess::Layout(record);
    if (layout == nullptr) {
      return std::make_shared<Plan>(record, params_);
    }
    for (const std::shared_ptr<Plan>& plan : plans_) {
      if (plan != nullptr && plan->layout.Get() == layout) {
        return plan;
      }
    }
    std::shared_ptr<Plan>& place = plans_[next_++ % plans_.size()];
    place = std::make_shared<Plan>(record, params_);
    return place;
  }

 private:
  const FormatParameters& params_;
  std::array<std::shared_ptr<Plan>, 8> plans_;
  std::size_t next_ = 0;
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
      open_.back().plan == nullptr ? PrintElements() : PrintFields();
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

  void PrintLine(std::string_view text) {
    writer_.Append(text);
    writer_.Append('\n');
  }

  void OpenStruct(const MetaStruct* record, long level) {
    if (record == nullptr) {
      PrintLine(MisreadText(MetaType::Struct));
      return;
    }
    std::shared_ptr<Plan> plan = plans_.Get(*record);
    if (const std::string_view header = plan->header.Of(*record); header != kNoHeader) {
      writer_.Repeat(' ', IndentOf(level));
      writer_.Append(header);
      writer_.Append(":\n");
    }
    open_.push_back({record, std::move(plan), level, 0});
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
      writer_.Append(separator);
      writer_.Append(plain_.Of(*element));
      separator = ", ";
    }
    writer_.Append('\n');
  }

  /// Prints elements until one of them was opened or none is left.
  void PrintElements() {
    const std::size_t depth = open_.size();
    while (open_.size() == depth) {
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

  /// Prints fields until the value of one was opened or none is left.
  void PrintFields() {
    const std::size_t depth = open_.size();
    Plan& plan = *open_.back().plan;
    FieldFinder finder(static_cast<const MetaStruct&>(*open_.back().value));
    const long level = open_.back().level;
    const std::size_t indent = IndentOf(level);
    for (std::size_t next = open_.back().next; next < plan.lines.size(); ++next) {
      Plan::Line& line = plan.lines[next];
      const auto* value = finder.Find(line.field);
      if (value == nullptr) {
        // The fields behind an unknown one are not printed.
        writer_.Append("Error getting field ");
        PrintLine(line.field.GetName());
        break;
      }
      writer_.Repeat(' ', indent);
      writer_.Append(line.label);
      open_.back().next = next + 1;
      PrintFieldValue(**value, line.style.get(), level + 2);
      if (open_.size() != depth) {
        return;
      }
    }
    open_.pop_back();
  }

  void PrintFieldValue(const MetaObject& value, const FieldStyle* style, long level) {
    switch (value.GetType()) {
      case MetaType::Struct:
        writer_.Append('\n');
        return OpenStruct(ViewAs<MetaStruct>(&value), level);
      case MetaType::List:
        return OpenList(ViewAs<MetaList>(&value), level);
      default:
        return style == nullptr ? PrintLine(plain_.Of(value)) : PrintLine(style->MakeText(&value));
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
