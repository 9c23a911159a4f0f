// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The markers; NAME is the name of a parameter:
//
//   $val{NAME}
//   $if{NAME,TEXT}                  TEXT: at least one byte, up to the first "}" after that byte
//   $list{NAME,'C',FLAG}            C: one byte or none; FLAG: true or false
//   $multilist{NAME,PREFIX,FLAG}    PREFIX: at least one byte, up to the first ",FLAG}" after it
//
// Only a "$" of the template begins a marker, not a "$" from a value.

#include "autocli/descriptors/TemplateText.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "autocli/descriptors/ConditionalRemoval.h"

namespace Kestrel::AutoCli {
namespace {

constexpr std::size_t kNone = std::string::npos;
constexpr std::size_t kMaxSecret = 4096;  // the longest line that a terminal accepts

/// The extent of one occurrence of a marker, and of its TEXT, C or PREFIX.
struct Marker {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t partBegin = 0;
  std::size_t partEnd = 0;
  bool flag = false;
};

bool Continues(const std::string& text, std::size_t position, std::string_view with) {
  return text.compare(position, with.size(), with) == 0;
}

/// Returns the first occurrence of `opening`, which begins with "$", at or after `position`.
std::size_t FindOpening(const MarkedText& text, const std::string& opening, std::size_t position) {
  position = text.Bytes().find(opening, position);
  while (position != kNone && text.IsFromValue(position)) {
    position = text.Bytes().find(opening, position + 1);
  }
  return position;
}

/// Returns the position of the last `c` before `end`, or kNone. Compares many bytes in one step,
/// unlike a backward search for a longer string.
std::size_t FindLast(const std::string& text, char c, std::size_t end) {
  const void* const found = memrchr(text.data(), c, end);
  return found == nullptr ? kNone
                          : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

/// Returns the last occurrence of `opening`, which begins with "$", that ends at or before `end`.
std::size_t FindLastOpening(const MarkedText& text, const std::string& opening, std::size_t end) {
  std::size_t position = end < opening.size() ? 0 : end - opening.size() + 1;
  do {
    position = FindLast(text.Bytes(), '$', position);
  } while (position != kNone &&
           (text.IsFromValue(position) || !Continues(text.Bytes(), position, opening)));
  return position;
}

/// Reads "true}" or "false}" at `position`. Returns the position after it, or kNone.
std::size_t ReadFlag(const std::string& text, std::size_t position, bool& flag) {
  constexpr std::string_view kTrue = "true}";
  constexpr std::string_view kFalse = "false}";
  if (Continues(text, position, kTrue)) {
    flag = true;
    return position + kTrue.size();
  }
  if (Continues(text, position, kFalse)) {
    flag = false;
    return position + kFalse.size();
  }
  return kNone;
}

// There is a class for each kind of marker:
//   - `Opening` returns the bytes that an occurrence begins with.
//   - `LastOpeningEnd` returns the last position where the opening of a complete marker can end.
//     The class for conditionals has none, because the last conditional is never looked for.
//   - `Read` reads the rest of an occurrence, which begins at `position`. It returns false when the
//     marker is not complete.
//   - `kIsUnbounded` is true if `Read` searches the rest of the text for the end of the marker.
//     Once `Read` has found none, no later opening of this kind is complete either.

class ValueMarker {
 public:
  static constexpr bool kIsUnbounded = false;
  static std::string Opening(const std::string& name) { return "$val{" + name + "}"; }
  static std::size_t LastOpeningEnd(const std::string& text) { return text.size(); }
  static bool Read(const std::string&, std::size_t position, Marker& marker) {
    marker.end = position;
    return true;
  }
};

class ConditionalMarker {
 public:
  static constexpr bool kIsUnbounded = true;
  static std::string Opening(const std::string& name) { return "$if{" + name + ","; }
  static bool Read(const std::string& text, std::size_t position, Marker& marker) {
    const std::size_t brace = text.find('}', position + 1);
    marker.partBegin = position;
    marker.partEnd = brace;
    marker.end = brace + 1;
    return brace != kNone;
  }
};

class ListMarker {
 public:
  static constexpr bool kIsUnbounded = false;
  static std::string Opening(const std::string& name) { return "$list{" + name + ",'"; }
  static std::size_t LastOpeningEnd(const std::string& text) { return text.size(); }
  static bool Read(const std::string& text, std::size_t position, Marker& marker) {
    // One byte is tried first, so that the separator can be a quote.
    return ReadWith(text, position, 1, marker) || ReadWith(text, position, 0, marker);
  }

 private:
  static bool ReadWith(const std::string& text, std::size_t position, std::size_t length,
                       Marker& marker) {
    constexpr std::string_view kAfterSeparator = "',";
    if (position + length > text.size() || !Continues(text, position + length, kAfterSeparator)) {
      return false;
    }
    marker.partBegin = position;
    marker.partEnd = position + length;
    marker.end = ReadFlag(text, marker.partEnd + kAfterSeparator.size(), marker.flag);
    return marker.end != kNone;
  }
};

class MultiListMarker {
 public:
  static constexpr bool kIsUnbounded = true;
  static std::string Opening(const std::string& name) { return "$multilist{" + name + ","; }
  static std::size_t LastOpeningEnd(const std::string& text) {
    bool flag = false;
    std::size_t comma = FindLast(text, ',', text.size());
    while (comma != kNone && ReadFlag(text, comma + 1, flag) == kNone) {
      comma = FindLast(text, ',', comma);
    }
    // There is at least one byte of prefix before the comma.
    return comma == kNone || comma == 0 ? 0 : comma - 1;
  }
  static bool Read(const std::string& text, std::size_t position, Marker& marker) {
    marker.partBegin = position;
    for (std::size_t comma = text.find(',', position + 1); comma != kNone;
         comma = text.find(',', comma + 1)) {
      marker.end = ReadFlag(text, comma + 1, marker.flag);
      if (marker.end != kNone) {
        marker.partEnd = comma;
        return true;
      }
    }
    return false;
  }
};

/// The occurrences of a kind of marker for one parameter, from left to right.
template <typename Kind>
class Occurrences {
 public:
  Occurrences(const MarkedText& text, const std::string& name)
      : text_(text), opening_(Kind::Opening(name)) {}

  /// Finds the first occurrence that begins at or after `position`. Returns false when there is
  /// none.
  bool Next(std::size_t position, Marker& marker) const {
    for (std::size_t begin = FindOpening(text_, opening_, position); begin != kNone;
         begin = FindOpening(text_, opening_, begin + 1)) {
      marker.begin = begin;
      if (Kind::Read(text_.Bytes(), begin + opening_.size(), marker)) {
        return true;
      }
      if (Kind::kIsUnbounded) {
        return false;
      }
    }
    return false;
  }

  /// Returns the occurrence that begins last, even if it is inside another one.
  std::optional<Marker> Last() const {
    std::size_t end = Kind::LastOpeningEnd(text_.Bytes());
    Marker marker;
    while ((marker.begin = FindLastOpening(text_, opening_, end)) != kNone) {
      if (Kind::Read(text_.Bytes(), marker.begin + opening_.size(), marker)) {
        return marker;
      }
      end = marker.begin + opening_.size() - 1;
    }
    return std::nullopt;
  }

 private:
  const MarkedText& text_;
  const std::string opening_;
};

bool IsInSingleQuotes(const std::string& text, const Marker& marker) {
  return marker.begin > 0 && text[marker.begin - 1] == '\'' && marker.end < text.size() &&
         text[marker.end] == '\'';
}

/// Replaces every occurrence by what `replacement` appends for it.
template <typename Kind, typename Replacement>
void ReplaceAll(MarkedText& text, const std::string& name, Replacement replacement) {
  const Occurrences<Kind> occurrences(text, name);
  MarkedText replaced;
  if (TypedSecrets::AreHeld()) {
    replaced.Reserve(text.Size() + kMaxSecret);  // growth would leave a part of a secret in memory
  }
  std::size_t done = 0;
  Marker marker;
  while (occurrences.Next(done, marker)) {
    replaced.Append(text, done, marker.begin - done);
    replacement(marker, replaced);
    done = marker.end;
  }
  if (done != 0) {
    replaced.Append(text, done, text.Size() - done);
    text = std::move(replaced);
  }
}

}  // namespace

std::optional<TemplateText::ValuePlace> TemplateText::FindValue(const std::string& name) const {
  const std::optional<Marker> last = Occurrences<ValueMarker>(text_, name).Last();
  if (!last.has_value()) {
    return std::nullopt;
  }
  return IsInSingleQuotes(text_.Bytes(), *last) ? ValuePlace::InSingleQuotes : ValuePlace::Bare;
}

void TemplateText::InsertValue(const std::string& name, std::string_view value,
                               MarkedText::Origin origin) {
  ReplaceAll<ValueMarker>(text_, name, [&](const Marker& marker, MarkedText& out) {
    const bool isQuoted = IsInSingleQuotes(text_.Bytes(), marker);
    out.AppendValue(value, isQuoted ? MarkedText::Origin::Value : origin);
  });
}

void TemplateText::KeepConditionals(const std::string& name) {
  ReplaceAll<ConditionalMarker>(text_, name, [&](const Marker& marker, MarkedText& out) {
    out.Append(text_, marker.partBegin, marker.partEnd - marker.partBegin);
  });
}

std::optional<TemplateText::ListForm> TemplateText::FindList(const std::string& name) const {
  const std::optional<Marker> last = Occurrences<ListMarker>(text_, name).Last();
  if (!last.has_value()) {
    return std::nullopt;
  }
  return ListForm{text_.Bytes().substr(last->partBegin, last->partEnd - last->partBegin),
                  last->flag};
}

void TemplateText::InsertList(const std::string& name, std::string_view value,
                              MarkedText::Origin origin) {
  ReplaceAll<ListMarker>(text_, name,
                         [&](const Marker&, MarkedText& out) { out.AppendValue(value, origin); });
}

std::optional<TemplateText::MultiListForm> TemplateText::FindMultiList(
    const std::string& name) const {
  const std::optional<Marker> last = Occurrences<MultiListMarker>(text_, name).Last();
  if (!last.has_value()) {
    return std::nullopt;
  }
  MultiListForm form{MarkedText(), last->flag};
  form.prefix.Append(text_, last->partBegin, last->partEnd - last->partBegin);
  return form;
}

void TemplateText::InsertMultiList(const std::string& name, const MarkedText& values) {
  ReplaceAll<MultiListMarker>(text_, name,
                              [&](const Marker&, MarkedText& out) { out.Append(values); });
}

void TemplateText::RemoveConditionals() {
  while (RemoveConditionalsOnce(text_)) {
  }
}

}  // namespace Kestrel::AutoCli
