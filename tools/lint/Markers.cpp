// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/Markers.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>

#include "tools/lint/FileReport.h"

namespace Kestrel::Lint {

namespace {

constexpr std::size_t kNone = std::string_view::npos;

const std::vector<std::string>& GetWords() {
  static const std::vector<std::string> words = {"val", "if", "list", "multilist"};
  return words;
}

std::string FormOf(const std::string& word, const std::string& name) {
  if (word == "val") {
    return "$val{" + name + "}";
  }
  if (word == "if") {
    return "$if{" + name + ",text}";
  }
  return "$" + word + "{" + name + (word == "list" ? ",',',false}" : ",prefix,false}");
}

Marker::Kind KindOf(const std::string& word) {
  return word == "val"    ? Marker::Kind::Value
         : word == "if"   ? Marker::Kind::Conditional
         : word == "list" ? Marker::Kind::List
                          : Marker::Kind::MultiList;
}

bool IsNameByte(char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-'; }

std::string Lower(std::string word) {
  std::transform(word.begin(), word.end(), word.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return word;
}

class Finder {
 public:
  Finder(std::string_view text, const std::vector<std::string>& names)
      : text_(text), names_(names) {}

  MarkerList Run() {
    for (std::size_t i = text_.find('$'); i != kNone; i = text_.find('$', i + 1)) {
      ReadAt(i);
    }
    CheckNesting();
    return std::move(list_);
  }

 private:
  bool IsParameter(const std::string& name) const {
    return std::find(names_.begin(), names_.end(), name) != names_.end();
  }

  std::string NameAt(std::size_t position) const {
    std::size_t end = position;
    while (end < text_.size() && IsNameByte(text_[end])) {
      ++end;
    }
    return std::string(text_.substr(position, end - position));
  }

  void Add(const char* rule, std::size_t position, const std::string& what,
           const std::string& advice, const std::string& name) {
    list_.faults.push_back({rule, position, what, advice, name});
  }

  // Reads a marker, or something that looks like one: "$word{", "$word (", "${word{" and the like.
  void ReadAt(std::size_t begin) {
    std::size_t position = begin + 1;
    const bool isInBraces = position < text_.size() && text_[position] == '{';
    position += isInBraces ? 1 : 0;
    const std::size_t wordBegin = position;
    while (position < text_.size() &&
           std::isalpha(static_cast<unsigned char>(text_[position])) != 0) {
      ++position;
    }
    const std::string word(text_.substr(wordBegin, position - wordBegin));
    const std::size_t bracket = std::min(text_.find_first_not_of(" \t", position), text_.size());
    const char c = bracket < text_.size() ? text_[bracket] : '\0';
    if (word.empty() || (c != '{' && c != '(' && c != '[')) {
      CheckBare(word, begin, isInBraces, position);
      return;
    }
    const std::size_t nameBegin =
        std::min(text_.find_first_not_of(" \t", bracket + 1), text_.size());
    const std::string name = NameAt(nameBegin);
    const bool isKnown = std::find(GetWords().begin(), GetWords().end(), word) != GetWords().end();
    if (isKnown && c == '{' && bracket == position && !isInBraces) {
      ReadMarker(word, begin, position + 1);
    } else if (IsMeant(word, name, isKnown, c)) {
      ReportMisspelt(word, name, begin);
    }
  }

  // Without a bracket of a marker, the shell takes "$val" and "${val}" for its variables. Reports
  // only "${name}" with the name of a parameter, because "$val{name}" was probably meant.
  void CheckBare(const std::string& word, std::size_t begin, bool isInBraces, std::size_t end) {
    const bool isClosed = isInBraces && end < text_.size() && text_[end] == '}';
    if (isClosed && IsParameter(word)) {
      Add("marker-misspelt", begin, "'${" + word + "}' is a variable of the shell",
          "write " + Quote("$val{" + word + "}"), word);
    }
  }

  bool IsMeant(const std::string& word, const std::string& name, bool isKnown, char bracket) const {
    const std::string lower = Lower(word);
    const bool isNear = isKnown || !FindNearest(lower, GetWords()).empty() ||
                        std::find(GetWords().begin(), GetWords().end(), lower) != GetWords().end();
    return bracket == '{' ? isNear || IsParameter(name) : isKnown && IsParameter(name);
  }

  void ReportMisspelt(const std::string& word, const std::string& name, std::size_t begin) {
    const std::string lower = Lower(word);
    const std::string nearest = FindNearest(lower, GetWords());
    const bool isKnown = std::find(GetWords().begin(), GetWords().end(), lower) != GetWords().end();
    const std::string meant = isKnown ? lower : nearest.empty() ? "val" : nearest;
    Add("marker-misspelt", begin,
        Quote(std::string(
            text_.substr(begin, std::min<std::size_t>(word.size() + name.size() + 3, 40)))) +
            " is not a marker and reaches the shell",
        "write " + Quote(FormOf(meant, name.empty() ? "name" : name)), name);
  }

  void ReadMarker(const std::string& word, std::size_t begin, std::size_t nameBegin) {
    const std::string name = NameAt(nameBegin);
    const std::size_t rest = nameBegin + name.size();
    const std::optional<std::size_t> end = FindEnd(word, rest);
    if (!end) {
      const bool isUnclosed = text_.find('}', rest) == kNone;
      Add(isUnclosed ? "marker-unclosed" : "marker-malformed", begin,
          "the marker " + Quote("$" + word + "{" + name) +
              (isUnclosed ? " is not closed" : " does not have the form of a marker"),
          "write " + Quote(FormOf(word, name.empty() ? "name" : name)), name);
      return;
    }
    if (!IsParameter(name)) {
      const std::string nearest = FindNearest(name, names_);
      Add("marker-unknown", begin, "there is no parameter " + Quote(name),
          nearest.empty() ? "declare it, or remove the marker" : "write " + Quote(nearest),
          nearest);
      return;
    }
    list_.markers.push_back({KindOf(word), name, begin, *end});
  }

  /// Returns the index of the byte after a marker whose name ends at `position`; nothing if it does
  /// not have the form of a marker.
  std::optional<std::size_t> FindEnd(const std::string& word, std::size_t position) const {
    if (word == "val") {
      return position < text_.size() && text_[position] == '}' ? std::optional(position + 1)
                                                               : std::nullopt;
    }
    if (position >= text_.size() || text_[position] != ',') {
      return std::nullopt;
    }
    if (word == "if") {
      const std::size_t brace = text_.find('}', position + 2);
      return brace == kNone ? std::nullopt : std::optional(brace + 1);
    }
    return word == "list" ? FindListEnd(position + 1) : FindMultiListEnd(position + 1);
  }

  std::optional<std::size_t> ReadFlag(std::size_t position) const {
    for (const std::string_view flag : {",true}", ",false}"}) {
      if (position <= text_.size() && text_.substr(position, flag.size()) == flag) {
        return position + flag.size();
      }
    }
    return std::nullopt;
  }

  std::optional<std::size_t> FindListEnd(std::size_t position) const {
    for (const std::size_t length : {1U, 0U}) {
      const std::size_t quote = position + 1 + length;
      if (quote < text_.size() && text_[position] == '\'' && text_[quote] == '\'') {
        if (const auto end = ReadFlag(quote + 1)) {
          return end;
        }
      }
    }
    return std::nullopt;
  }

  std::optional<std::size_t> FindMultiListEnd(std::size_t position) const {
    for (std::size_t comma = text_.find(',', position + 1); comma != kNone;
         comma = text_.find(',', comma + 1)) {
      if (const auto end = ReadFlag(comma)) {
        return end;
      }
    }
    return std::nullopt;
  }

  // The text of an $if ends at the first "}" that does not belong to a $val.
  void CheckNesting() {
    for (Marker& outer : list_.markers) {
      if (outer.kind != Marker::Kind::Conditional) {
        continue;
      }
      // The library inserts values before it looks for the end.
      for (const Marker& inner : list_.markers) {
        if (inner.kind == Marker::Kind::Value && inner.begin > outer.begin &&
            inner.end == outer.end) {
          const std::size_t brace = text_.find('}', outer.end);
          outer.end = brace == kNone ? outer.end : brace + 1;
        }
      }
      CheckInside(outer);
    }
  }

  void CheckInside(Marker& outer) {
    for (const Marker& inner : list_.markers) {
      if (inner.begin <= outer.begin || inner.begin >= outer.end ||
          inner.kind == Marker::Kind::Value) {
        continue;
      }
      const bool isList = inner.kind != Marker::Kind::Conditional;
      const bool isAtEnd =
          inner.end == outer.end && inner.end < text_.size() && text_[inner.end] == '}';
      if (isList && isAtEnd) {
        outer.end = inner.end + 1;
        return;
      }
      Add("marker-nesting", inner.begin,
          isList ? "a list within $if{" + outer.name + ",...} is not at its end"
                 : "$if{" + inner.name + ",...} is within $if{" + outer.name + ",...}",
          isList ? "move it to the end, directly before the '}'" : "write them side by side",
          inner.name);
      return;
    }
  }

  const std::string_view text_;
  const std::vector<std::string>& names_;
  MarkerList list_;
};

}  // namespace

MarkerList FindMarkers(std::string_view text, const std::vector<std::string>& names) {
  return Finder(text, names).Run();
}

}  // namespace Kestrel::Lint
