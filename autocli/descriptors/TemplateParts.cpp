// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// A part contains all markers of one parameter and no marker of another. A template is cut at two
// kinds of places: between two conditionals; and after one of kSeparators that is not in braces. No
// separator is a single quote or part of an opening such as "$val{". So a cut never divides a
// marker, and never separates a "$val" from single quotes directly before and after it.
//
// Parameters may still depend on each other: a marker may have no end in its part, or what was
// inserted may form a new marker together with its neighbours. In both cases the result contains an
// opening that names a parameter. A result without such an opening is the same as for the whole
// template.

#include "autocli/descriptors/TemplateParts.h"

#include <cstddef>
#include <unordered_map>
#include <utility>

namespace Kestrel::AutoCli {

namespace {

constexpr std::size_t kNoPart = std::string::npos;
constexpr std::string_view kSeparators = " \n\t\",/:;<=>|";

/// Returns the name in the marker that opens at `position`; empty if none does.
std::string_view NameAt(std::string_view text, std::size_t position) {
  for (const std::string_view opening : {"$val{", "$if{", "$list{", "$multilist{"}) {
    if (text.compare(position, opening.size(), opening) == 0) {
      text.remove_prefix(position + opening.size());
      std::size_t length = 0;
      while (length < text.size() && IsNameByte(text[length])) {
        ++length;
      }
      return text.substr(0, length);
    }
  }
  return {};
}

/// Whether `text` contains the opening of a marker whose name `isParameter` accepts.
template <typename IsParameter>
bool HasOpening(const MarkedText& text, IsParameter isParameter) {
  const std::string& bytes = text.Bytes();
  for (std::size_t i = bytes.find('$'); i != std::string::npos; i = bytes.find('$', i + 1)) {
    if (!text.IsFromValue(i) && isParameter(NameAt(bytes, i))) {
      return true;
    }
  }
  return false;
}

/// Finds the places where a template can be cut. `Pass` must be called for each byte, in order.
class CutFinder {
 public:
  explicit CutFinder(std::string_view text) : text_(text) {}

  void Pass(std::size_t position) {
    const char c = text_[position];
    if (c == '{') {
      isConditional_ = depth_ == 0 ? IsAt("$if{", position - 3) : isConditional_;
      ++depth_;
    } else if (c == '}' && depth_ > 0) {
      --depth_;
      if (depth_ == 0 && isConditional_ && IsAt("$if{", position + 1)) {
        last_ = position + 1;
      }
    } else if (depth_ == 0 && kSeparators.find(c) != std::string_view::npos) {
      last_ = position + 1;
    }
  }

  /// Returns the last place found; 0 if there is none so far.
  std::size_t GetLast() const { return last_; }

 private:
  bool IsAt(std::string_view what, std::size_t position) const {
    return position < text_.size() && text_.compare(position, what.size(), what) == 0;
  }

  const std::string_view text_;
  std::size_t last_ = 0;
  std::size_t depth_ = 0;
  bool isConditional_ = false;  // whether the outermost open brace belongs to a conditional
};

class TemplateParts {
 public:
  explicit TemplateParts(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
      partOf_.emplace(name, kNoPart);
    }
  }

  /// Returns false when no cuts can separate the parameters.
  bool Cut(std::string_view text) {
    CutFinder cuts(text);
    std::size_t begin = 0;
    std::size_t lastMarker = 0;
    auto owner = partOf_.end();
    for (std::size_t i = 0; i < text.size(); ++i) {
      const auto named = text[i] == '$' ? partOf_.find(NameAt(text, i)) : partOf_.end();
      if (named != partOf_.end()) {
        if (owner != partOf_.end() && named != owner) {
          if (cuts.GetLast() <= lastMarker) {
            return false;
          }
          parts_.emplace_back(text.substr(begin, cuts.GetLast() - begin));
          begin = cuts.GetLast();
        }
        if (named != owner && named->second != kNoPart) {
          return false;
        }
        owner = named;
        owner->second = parts_.size();
        lastMarker = i;
      }
      cuts.Pass(i);
    }
    parts_.emplace_back(text.substr(begin));
    return true;
  }

  /// Returns the part that contains the parameter's markers; null when there are no markers.
  TemplateText* Find(const std::string& name) {
    const std::size_t part = partOf_.at(name);
    return part == kNoPart ? nullptr : &parts_[part];
  }

  /// Returns all parts joined. Returns nothing when the result contains the opening of a marker for
  /// a parameter.
  std::optional<TemplateText> Join() const {
    MarkedText joined;
    for (const TemplateText& part : parts_) {
      joined.Append(part.GetMarkedText());
    }
    if (HasOpening(joined, [&](std::string_view name) { return partOf_.count(name) != 0; })) {
      return std::nullopt;
    }
    return TemplateText(std::move(joined));
  }

 private:
  std::unordered_map<std::string_view, std::size_t> partOf_;
  std::vector<TemplateText> parts_;
};

}  // namespace

std::optional<TemplateText> ApplyInParts(
    std::string_view text, const std::vector<std::string>& names,
    const std::function<void(TemplateText& part, const std::string& name)>& apply) {
  TemplateParts parts(names);
  if (!parts.Cut(text)) {
    return std::nullopt;
  }
  for (const std::string& name : names) {
    TemplateText* const part = parts.Find(name);
    if (part == nullptr) {
      continue;
    }
    apply(*part, name);
    // Checked here too: in the joined text, the next part could extend the name after the opening,
    // and `Join` would not find it.
    if (HasOpening(part->GetMarkedText(), [&](std::string_view own) { return own == name; })) {
      return std::nullopt;
    }
  }
  return parts.Join();
}

}  // namespace Kestrel::AutoCli
