// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/PrettyPrinter.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "vexil/formats/PrettyCell.h"
#include "vexil/formats/PrettyTable.h"
#include "vexil/formats/Values.h"

namespace Kestrel::Formats {

using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaStruct;
using MetaObj::MetaType;

namespace {

// Unless fields in it were chosen, anything nested more deeply is printed in the form of
// `ShortText`, because no reader can follow so many levels.
constexpr unsigned kMaxDepth = 24;

constexpr std::size_t kIndent = 2;
// Below this width nothing is indented, because too little room would be left for values.
constexpr std::size_t kMinIndentedWidth = 12;
// A value begins on the line of its name if at least this many columns are left for it.
constexpr std::size_t kMinValueWidth = 12;
// Names that are longer than this do not move the column in which values begin.
constexpr std::size_t kMaxLabelWidth = 40;

std::size_t IndentFor(const Room& room) { return room.width < kMinIndentedWidth ? 0 : kIndent; }

Room InsideOf(const Room& room) {
  return {room.width - IndentFor(room), room.depth + 1, room.hasTables};
}

void AppendIndented(std::size_t indent, const Block& added, Block& block) {
  for (const DisplayLine& line : added) {
    AppendAt(line.text.empty() ? 0 : indent, line, block.emplace_back());
  }
}

/// The fields of one structure, whose values are aligned.
class Tree {
 public:
  Tree(const PrettyPrinter& printer, const Room& room) : printer_(printer), room_(room) {}

  Block Print(const MetaStruct& structure, const FieldChoice* choice) {
    const FieldReader::Fields values = FieldReader(structure).Open(structure);
    const std::vector<ChosenField> fields = ChosenFields(structure, choice);
    for (const ChosenField& field : fields) {
      AddLabel(field.name, IsNested(FieldReader::Get(values, field.position, field.name)));
    }
    for (std::size_t i = 0; i < fields.size(); ++i) {
      AddField(labels_[i], FieldReader::Get(values, fields[i].position, fields[i].name), fields[i]);
    }
    return std::move(block_);
  }

 private:
  struct Label {
    std::string text;
    TextWidth width;
  };

  void AddLabel(const std::string& name, bool isNested) {
    const std::string text = name + ":";
    const TextWidth width = MeasureText(text);
    labels_.push_back({text, width});
    if (!isNested && IsShort(labels_.back())) {
      valueColumn_ = std::max(valueColumn_, width.usual + 1);
      slack_ = std::max(slack_, width.max - width.usual);
    }
  }

  bool IsShort(const Label& label) const {
    return label.width.max <= std::min(room_.width / 2, kMaxLabelWidth);
  }

  void AddField(const Label& label, const MetaObject& value, const ChosenField& field) {
    if (IsNested(value)) {
      AddText(label);
      const Room inside = InsideOf(room_);
      return AppendIndented(IndentFor(room_),
                            printer_.Print(value, field.name, field.inside, inside), block_);
    }
    const std::size_t taken = valueColumn_ + slack_;
    if (IsShort(label) && taken < room_.width && HasRoom(value, field.name, room_.width - taken)) {
      return AddAligned(label, value, field.name);
    }
    AddText(label);
    const std::size_t indent = IndentFor(room_);
    const Block lines = printer_.Print(value, field.name, nullptr, {room_.width - indent});
    if (!lines[0].text.empty()) {
      AppendIndented(indent, lines, block_);
    }
  }

  bool HasRoom(const MetaObject& value, const std::string& name, std::size_t width) const {
    return width >= kMinValueWidth || printer_.Measure(value, name, room_).max <= width;
  }

  void AddAligned(const Label& label, const MetaObject& value, const std::string& name) {
    const std::size_t first = block_.size();
    AddText(label);
    const Block lines = printer_.Print(value, name, nullptr, {room_.width - valueColumn_ - slack_});
    for (std::size_t i = 0; i < lines.size(); ++i) {
      DisplayLine& line = i == 0 ? block_[first] : block_.emplace_back();
      AppendAt(lines[i].text.empty() ? 0 : valueColumn_, lines[i], line);
    }
  }

  void AddText(const Label& label) {
    Block lines = printer_.PrintText(label.text, Style::Name, room_.width);
    std::move(lines.begin(), lines.end(), std::back_inserter(block_));
  }

  const PrettyPrinter& printer_;
  const Room& room_;
  std::vector<Label> labels_;
  std::size_t valueColumn_ = 0;
  std::size_t slack_ = 0;  // by how much a terminal may draw a label wider than usual
  Block block_;
};

}  // namespace

Block PrettyPrinter::Print(const MetaObject& value, const std::string& name,
                           const FieldChoice* choice, const Room& room) const {
  if (!IsNested(value)) {
    std::string storage;
    return PrintText(CellText(value, name, isHuman_, storage), CellStyle(value, name), room.width);
  }
  const bool isWhole = choice == nullptr || choice->fields.empty();
  if (room.depth > kMaxDepth && isWhole) {
    return PrintText(ShortText(value), Style::Plain, room.width);
  }
  return value.GetType() == MetaType::Struct
             ? PrintTree(static_cast<const MetaStruct&>(value), choice, room)
             : PrintList(static_cast<const MetaList&>(value), room);
}

Block PrettyPrinter::PrintTree(const MetaStruct& structure, const FieldChoice* choice,
                               const Room& room) const {
  Block block = Tree(*this, room).Print(structure, choice);
  return block.empty() ? PrintText("no fields", Style::Plain, room.width) : block;
}

Block PrettyPrinter::PrintText(std::string_view text, Style style, std::size_t width) const {
  Block block = BreakText(text, width, palette_.HasSequences());
  const std::string begin(palette_.Begin(style));
  if (begin.empty()) {
    return block;
  }
  for (DisplayLine& line : block) {
    if (!line.text.empty()) {
      line.text.insert(0, begin).append(Palette::kEnd);
    }
  }
  return block;
}

TextWidth PrettyPrinter::Measure(const MetaObject& value, const std::string& name,
                                 const Room& room) const {
  if (!IsNested(value)) {
    std::string storage;
    return MeasureText(CellText(value, name, isHuman_, storage));
  }
  TextWidth widest;
  for (const DisplayLine& line : Print(value, name, nullptr, room)) {
    widest.usual = std::max(widest.usual, line.width.usual);
    widest.max = std::max(widest.max, line.width.max);
  }
  return widest;
}

Block PrettyPrinter::PrintList(const MetaList& list, const Room& room) const {
  if (list.GetCount() == 0) {
    return PrintText("no rows", Style::Plain, room.width);
  }
  if (room.hasTables) {
    PrettyTable table(*this, room);
    table.AddAllColumns(*list.GetListStructure());
    if (table.Fit(list.GetObjects().data(), list.GetCount())) {
      Block block;
      table.PrintHeader(block);
      for (const Value& row : list.GetObjects()) {
        table.PrintRow(*row, block);
      }
      return block;
    }
  }
  return PrintElements(list, room);
}

Block PrettyPrinter::PrintElements(const MetaList& list, const Room& room) const {
  const std::size_t indent = IndentFor(room);
  Block block;
  for (const Value& element : list.GetObjects()) {
    const std::size_t first = block.size();
    AppendIndented(indent, Print(*element, {}, nullptr, InsideOf(room)), block);
    if (indent != 0) {
      block[first].text[0] = '-';
    }
  }
  return block;
}

void AppendAt(std::size_t column, const DisplayLine& added, DisplayLine& line) {
  if (line.width.usual < column) {
    const std::size_t spaces = column - line.width.usual;
    line.text += std::string(spaces, ' ');
    line.width += {spaces, spaces};
  }
  line.text += added.text;
  line.width += added.width;
}

}  // namespace Kestrel::Formats
