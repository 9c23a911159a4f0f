// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/package/ControlFile.h"

#include <kestrel/KestrelException.h>
#include <strings.h>

#include <algorithm>

#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/TextParsing.h"

namespace Kestrel::Host {
namespace {

constexpr std::size_t kMaxShownBytes = 80;

bool IsSameName(std::string_view left, std::string_view right) {
  return left.size() == right.size() && ::strncasecmp(left.data(), right.data(), left.size()) == 0;
}

// Returns the end of the field that begins at `start`: the line feed before the next line that does
// not continue the field, or the end of the text.
std::size_t FieldEnd(std::string_view text, std::size_t start) {
  std::size_t end = text.find('\n', start);
  while (end != std::string_view::npos && end + 1 < text.size() &&
         (text[end + 1] == ' ' || text[end + 1] == '\t')) {
    end = text.find('\n', end + 1);
  }
  return std::min(end, text.size());
}

// Returns the start of the next paragraph: the first byte from `start` on that is not a line feed.
std::size_t SkipEmptyLines(std::string_view text, std::size_t start) {
  return std::min(text.find_first_not_of('\n', start), text.size());
}

// Returns the end of the paragraph at `start`, without its last line feed.
std::size_t StanzaEnd(std::string_view text, std::size_t start, LastStanza last) {
  const std::size_t end = text.find("\n\n", start);
  if (end != std::string_view::npos) {
    return end;
  }
  if (last == LastStanza::EmptyLine || text.back() != '\n') {
    throw KestrelException("it ends in the middle of an entry");
  }
  return text.size() - 1;
}

}  // namespace

ControlStanza::ControlStanza(std::string_view text) : text_(text) {
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = FieldEnd(text, start);
    const std::string_view field = text.substr(start, end - start);
    const std::size_t colon = field.find(':');
    const std::string_view name = field.substr(0, colon);
    if (colon == std::string_view::npos || name.empty() ||
        name.find_first_of(" \t\n") != std::string_view::npos) {
      throw KestrelException("a line is no field: " + ShownLine(field.substr(0, field.find('\n'))));
    }
    fields_.emplace_back(name, Trim(field.substr(colon + 1)));
    start = end + 1;
  }
}

std::string_view ControlStanza::Get(std::string_view name) const {
  for (const auto& [fieldName, value] : fields_) {
    if (IsSameName(fieldName, name)) {
      return value;
    }
  }
  return {};
}

std::string_view ControlStanza::GetFirstLine(std::string_view name) const {
  const std::string_view value = Get(name);
  return Trim(value.substr(0, value.find('\n')));
}

std::vector<std::string> ControlStanza::GetList(std::string_view name) const {
  std::vector<std::string> pieces;
  for (const std::string_view piece : Split(Get(name), ',')) {
    if (!Trim(piece).empty()) {
      pieces.emplace_back(Trim(piece));
    }
  }
  return pieces;
}

std::string ShownLine(std::string_view line) {
  return SanitizedText(line.substr(0, kMaxShownBytes))->GetValue();
}

void ReadControlFile(const std::string& path, std::string_view text, LastStanza last,
                     const std::function<void(const ControlStanza&)>& use) {
  try {
    for (std::size_t start = SkipEmptyLines(text, 0); start < text.size();) {
      const std::size_t end = StanzaEnd(text, start, last);
      use(ControlStanza(text.substr(start, end - start)));
      start = SkipEmptyLines(text, end);
    }
  } catch (const KestrelException& error) {
    throw KestrelException("Unable to read " + path + ": " + error.what());
  }
}

}  // namespace Kestrel::Host
