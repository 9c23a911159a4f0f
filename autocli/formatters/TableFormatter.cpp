// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/TableFormatter.h"

#include <algorithm>
#include <cstddef>
#include <ios>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "autocli/formatters/FieldSlot.h"
#include "autocli/formatters/FieldStyle.h"
#include "autocli/formatters/LayoutCache.h"
#include "autocli/formatters/PlainText.h"
#include "autocli/formatters/ValueView.h"
#include "autocli/text/FitText.h"
#include "autocli/text/TextWriter.h"
#include "kestrel/KestrelException.h"

namespace Kestrel::AutoCli {

using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

constexpr std::string_view kGapText = "  ";  // between two columns
constexpr std::size_t kGap = kGapText.size();
constexpr std::size_t kMaxLayouts = 8;  // The rows of a table seldom have more.

std::string Trim(std::string_view text) {
  static constexpr std::string_view kWhiteSpace = " \t\f\v\n\r";
  const std::size_t first = text.find_first_not_of(kWhiteSpace);
  if (first == std::string_view::npos) {
    return std::string();
  }
  return std::string(text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1));
}

/// A field name, or a path of field names through nested structures, separated by '.'.
class FieldPath {
 public:
  explicit FieldPath(std::string path) : text_(std::move(path)) {
    std::size_t end = text_.find('.');
    if (end == std::string::npos) {
      return;
    }
    rest_ = std::make_unique<Rest>();
    rest_->first = text_.substr(0, end);
    while (end != std::string::npos) {
      const std::size_t start = end + 1;
      end = text_.find('.', start);
      rest_->steps.emplace_back(text_.substr(start, end - start));
    }
  }

  const std::string& GetText() const { return text_; }

  /// Returns the first name of the path.
  const std::string& GetFirst() const { return rest_ == nullptr ? text_ : rest_->first; }

  /// Returns the value at the end of the path, null if there is none. `first` is the value of the
  /// first name in `structure`, null if there is no such field. If a name other than the last one
  /// is not found, the next one is looked up in the same structure, because scripts rely on that.
  /// If such a name is found, but its value is not a structure, the result is null.
  const std::shared_ptr<MetaObject>* Follow(const MetaStruct& structure,
                                            const std::shared_ptr<MetaObject>* first) {
    return rest_ == nullptr ? first : FollowRest(structure, first);
  }

 private:
  /// The members that only a path of several names needs. They are allocated separately, because
  /// most paths are a single name and there may be very many paths.
  struct Rest {
    std::string first;
    std::vector<FieldSlot> steps;
  };

  const std::shared_ptr<MetaObject>* FollowRest(const MetaStruct& structure,
                                                const std::shared_ptr<MetaObject>* value) {
    const MetaStruct* current = &structure;
    for (FieldSlot& step : rest_->steps) {
      current = value == nullptr ? current : ViewAs<MetaStruct>(value->get());
      value = current == nullptr ? nullptr : step.Find(*current);
    }
    return value;
  }

  std::string text_;
  std::unique_ptr<Rest> rest_;
};

struct Column {
  explicit Column(std::string name) : path(std::move(name)), width(GetName().size() + kGap) {}

  const std::string& GetName() const { return path.GetText(); }

  FieldPath path;
  std::size_t width;       // including the gap
  bool isWrapped = false;  // fitted to the display instead of padded
};

std::vector<Column> ChooseColumns(const MetaStruct& structure, const FormatParameters& params) {
  std::vector<Column> columns;
  for (const std::string& key :
       {"fields:" + structure.GetTypeName(), std::string("fields"), std::string("table-columns")}) {
    if (params.HasParameter(key)) {
      for (const std::string& name : params.GetParameterAsList(key)) {
        columns.emplace_back(Trim(name));
      }
      return columns;
    }
  }
  MetaObj::FieldCursor fields(structure);
  columns.reserve(fields.CountLeft());
  for (; !fields.AtEnd(); fields.Next()) {
    columns.emplace_back(Trim(fields.Name()));
  }
  return columns;
}

bool ShowsHeader(const FormatParameters& params) {
  const std::string& choice = params.GetParameter("show-header");
  return (choice.empty() ? params.GetParameter("table-header") : choice) != "false";
}

/// Prints one table: first measures all cells, then writes them.
class Table {
 public:
  Table(const MetaList& list, const MetaStruct& structure, const FormatParameters& params,
        std::size_t displayWidth, TextWriter& writer)
      : list_(list),
        params_(params),
        displayWidth_(displayWidth),
        isStyled_(FieldStyle::IsUsedBy(params)),
        writer_(writer),
        columns_(ChooseColumns(structure, params)) {}

  /// Widens each column to its longest cell. If the table cannot be printed, writes an error
  /// message and returns false.
  bool Measure() {
    for (const auto& element : list_.GetObjects()) {
      const auto* row = ViewAs<MetaStruct>(element.get());
      if (row == nullptr) {
        writer_.Append("Error: Unexpected type, unable to get struct from list\n");
        return false;
      }
      if (!MeasureRow(*row)) {
        return false;
      }
    }
    return true;
  }

  void Write() {
    if (ShowsHeader(params_) && !columns_.empty()) {
      WriteHeader();
    }
    SetUpWrapping();
    for (const auto& element : list_.GetObjects()) {
      if (writer_.HasFailed() || !WriteRow(static_cast<const MetaStruct&>(*element))) {
        return;
      }
    }
  }

 private:
  bool MeasureRow(const MetaStruct& row) {
    const Column* const missing = ForEachCell(row, [this](Column& column, const auto& value) {
      column.width = std::max(column.width, MeasureText(column, value) + kGap);
    });
    if (missing != nullptr) {
      writer_.AppendAll("Error: Unknown field in field list: ", missing->GetName(), '\n');
    }
    return missing == nullptr;
  }

  /// Calls `use` with each column and its value in the row, up to the first column that the row
  /// lacks. Returns that column, null if there is none.
  template <typename Use>
  const Column* ForEachCell(const MetaStruct& row, const Use& use) {
    SelectStyles(row);
    auto column = columns_.begin();
    if (const std::size_t* slot = FindSlots(row)) {
      const std::shared_ptr<MetaObject>* const slots = MetaObj::ValueAccess::Slots(row);
      for (; column != columns_.end(); ++column, ++slot) {
        const auto* const value = column->path.Follow(row, ValueInSlot(slots, *slot));
        if (value == nullptr || !MetaObj::ValueAccess::IsScalarClass(**value)) {
          // A value of a foreign class may change the row when `ToString` is called, so the slots
          // are not used from here on.
          break;
        }
        use(*column, **value);
      }
    }
    if (column == columns_.end()) {
      return nullptr;
    }
    FieldFinder finder(row);
    for (; column != columns_.end(); ++column) {
      const auto* const value = column->path.Follow(row, finder.Find(column->path.GetFirst()));
      if (value == nullptr) {
        return &*column;
      }
      use(*column, **value);
    }
    return nullptr;
  }

  /// Returns for each column the slot of the first name of its path. Null if the row has no layout.
  /// Valid until the next call.
  const std::size_t* FindSlots(const MetaStruct& row) {
    const MetaObj::FieldLayout* const layout = MetaObj::ValueAccess::Layout(row);
    return layout == nullptr ? nullptr
                             : slots_.Get(*layout, [&] { return MakeSlots(*layout); }).data();
  }

  std::vector<std::size_t> MakeSlots(const MetaObj::FieldLayout& layout) const {
    std::vector<std::size_t> slots;
    slots.reserve(columns_.size());
    for (const Column& column : columns_) {
      slots.push_back(layout.Find(column.path.GetFirst()));
    }
    return slots;
  }

  /// Makes the styles of all columns for the type of `row`, unless the row before had that type.
  void SelectStyles(const MetaStruct& row) {
    if (!isStyled_ || row.GetTypeName() == styledType_) {
      return;
    }
    styledType_ = row.GetTypeName();
    styles_.clear();
    for (const Column& column : columns_) {
      styles_.emplace_back(styledType_, column.GetName(), params_);
    }
  }

  /// Returns the style of a column for the current row, null if values are printed unchanged.
  const FieldStyle* FindStyle(const Column& column) const {
    if (!isStyled_) {
      return nullptr;
    }
    const FieldStyle& style = styles_[static_cast<std::size_t>(&column - columns_.data())];
    return style.IsPlain() ? nullptr : &style;
  }

  std::size_t MeasureText(const Column& column, const MetaObject& value) {
    const FieldStyle* const style = FindStyle(column);
    return style == nullptr ? plain_.Measure(value) : style->MakeText(&value).size();
  }

  std::string_view MakeText(const FieldStyle* style, const MetaObject& value) {
    if (style == nullptr) {
      return plain_.Of(value);
    }
    styled_ = style->MakeText(&value);
    return styled_;
  }

  bool IsLast(const Column& column) const { return &column == &columns_.back(); }

  void WriteHeader() {
    for (const Column& column : columns_) {
      writer_.AppendLeft(column.GetName(), IsLast(column) ? 0 : column.width);
    }
    writer_.Append('\n');
    if (params_.GetParameter("header-line") == "false") {
      return;
    }
    for (const Column& column : columns_) {
      if (IsLast(column)) {
        writer_.Repeat('-', column.GetName().size());
      } else {
        writer_.Repeat('-', column.width - kGap);
        writer_.Repeat(' ', kGap);
      }
    }
    writer_.Append('\n');
  }

  /// Marks the columns to be wrapped: those with the name of the last one, if the others leave room
  /// for that name.
  void SetUpWrapping() {
    if (params_.GetParameter("wrap-last") != "true" || displayWidth_ == 0 || columns_.empty()) {
      return;
    }
    const std::string& lastName = columns_.back().GetName();
    std::size_t indent = 0;
    for (const Column& column : columns_) {
      indent += column.GetName() == lastName ? 0 : column.width;
    }
    if (indent == 0 || indent + lastName.size() > displayWidth_) {
      return;
    }
    wrapIndent_ = static_cast<int>(indent);
    for (Column& column : columns_) {
      column.isWrapped = column.GetName() == lastName;
    }
  }

  bool WriteRow(const MetaStruct& row) {
    const Column* const missing =
        ForEachCell(row, [this](Column& column, const auto& value) { WriteCell(column, value); });
    if (missing != nullptr) {
      writer_.AppendAll("Unknown column ", missing->GetName());
      return false;
    }
    writer_.Append('\n');
    return true;
  }

  void WriteCell(const Column& column, const MetaObject& value) {
    if (column.isWrapped) {
      // Neither units nor printf apply to a wrapped column.
      const FitRules rules{wrapIndent_, static_cast<int>(displayWidth_), true, false, 0, true};
      FitText(plain_.Of(value), rules, writer_);
      return;
    }
    const FieldStyle* const style = FindStyle(column);
    const auto* const number = style == nullptr ? ViewAs<MetaInt>(&value) : nullptr;
    if (number != nullptr) {
      // Formatted directly into the output. Digits are written at most two at a time, and copying
      // them immediately afterwards would be slow.
      return WriteNumber(column, Decimal{number->GetValue()});
    }
    const std::string_view text = MakeText(style, value);
    if (value.GetType() == MetaType::Int) {
      writer_.AppendAll(Fill(column.width - kGap, text.size()), text, kGapText);
    } else {
      writer_.AppendAll(text, Fill(IsLast(column) ? 0 : column.width, text.size()));
    }
  }

  void WriteNumber(const Column& column, Decimal number) {
    const std::size_t size = number.Length();
    writer_.AppendAll(Fill(column.width - kGap, size), number, kGapText);
  }

  /// Returns the spaces that pad `size` bytes to `width`. None if there are more bytes: a value can
  /// change after it was measured.
  static Spaces Fill(std::size_t width, std::size_t size) {
    return Spaces{width > size ? width - size : 0};
  }

  const MetaList& list_;
  const FormatParameters& params_;
  const std::size_t displayWidth_;
  const bool isStyled_;
  TextWriter& writer_;
  std::vector<Column> columns_;
  LayoutCache<std::vector<std::size_t>, kMaxLayouts> slots_;
  int wrapIndent_ = 0;
  std::string styledType_;
  std::vector<FieldStyle> styles_;  // one per column; empty if isStyled_ is false
  PlainText plain_;
  std::string styled_;
};

}  // namespace

TableFormatter::TableFormatter() : Formatter("table") {
  description =
      "Print a list of structs as a table, with each row being one entry in the list and each "
      "column being a field of the structure.";
  // Spelled so: scripts match these descriptions.
  params = {
      {"fields:<TypeName>",
       "The list of fields and the order in which to print them for the type named in <TypeName>",
       true},
      {"show-header", "Optionally disable showing column headers by passing the 'false' value"},
      {"wrap-last", "If 'true' wrap the last column to the width of the terminal."},
      {kUnitsParam,
       std::string("Use the given 'units' value as a suffix for a given field.  ") + kStyleExample},
      {kPrintfParam,
       "Use the given 'printf' formatting string for printing a value.  This uses standard printf "
       "syntax to format and print a Value.  " +
           std::string(kStyleExample)},
      {"header-line",
       "Optionally remove the line of '-' characters after the header.  By default this paramter "
       "is assumed to be true.  Setting it to 'false' will remove the line.  This parameter only "
       "has meaning if 'show-header' is also true"},
  };
}

TableFormatter::~TableFormatter() = default;

void TableFormatter::Format(const std::shared_ptr<CallSpec::Output>& output,
                            FormatParameters& parameters, DisplayContext& display,
                            std::ostream& out) {
  const std::shared_ptr<MetaObject> root = output->GetRootObject();
  const auto* list = ViewAs<MetaList>(root.get());
  if (list == nullptr || list->GetListType() != MetaType::Struct) {
    throw KestrelException(
        "Error: Unexpected type for output, formatter, table, expected a List of structs");
  }
  const std::shared_ptr<MetaStruct> structure = list->GetListStructure();
  if (structure == nullptr) {
    if (list->GetCount() > 0) {
      throw KestrelException("Error: Unable to get structure type from list output.");
    }
    return;
  }
  TextWriter writer(out);
  Table table(*list, *structure, parameters, display.width, writer);
  if (table.Measure()) {
    out.setf(std::ios_base::left, std::ios_base::adjustfield);
    table.Write();
  }
  writer.Finish();
}

std::shared_ptr<MetaObject> GetSubField(std::shared_ptr<MetaStruct> structure,
                                        const std::string& path) {
  if (structure == nullptr) {
    return nullptr;
  }
  FieldPath steps(path);
  const auto* const first = MetaObj::ValueAccess::Find(*structure, steps.GetFirst());
  const auto* const value = steps.Follow(*structure, first);
  return value == nullptr ? nullptr : *value;
}

}  // namespace Kestrel::AutoCli
