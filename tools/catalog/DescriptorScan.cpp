// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Of a descriptor only the tags matter here, and of those the ones on the third level:
//
//   <root> ... <namespaces> <namespace path="a.b"> ... <commands> <command path="a.b.c"> ...
//
// Everything else is stepped over: text, comments, sections of character data, instructions, the
// values of other attributes. What cannot be stepped over safely ends the scan without a result.

#include <algorithm>
#include <cstddef>
#include <utility>

#include "kestrel/autocli/XmlPlugin.h"
#include "tools/catalog/DescriptorPaths.h"

namespace Kestrel::Catalog {

namespace {

constexpr bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

constexpr bool EndsName(char c) { return IsSpace(c) || c == '=' || c == '/' || c == '>'; }

constexpr std::size_t kSectionDepth = 1;
constexpr std::size_t kNodeDepth = 2;

bool StartsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

/// The words of a path as a descriptor writes it, separated by a space.
std::string JoinWords(std::string_view written) {
  std::string path;
  for (const std::string& word : AutoCli::XmlPlugin::SplitPath(std::string(written))) {
    path += (path.empty() ? "" : " ") + word;
  }
  return path;
}

/// A start tag's name and the value of its attribute `path`, as they are written.
struct StartTag {
  std::string_view name;
  std::string_view path;
  bool isClosed = false;  // ends with "/>"
};

class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  /// Whether the text was understood to its end.
  bool Run() {
    if (rest_.find('\0') != std::string_view::npos) {
      return false;  // It is in an encoding of wider units.
    }
    while (SkipUntil("<")) {
      if (!ReadMarkup()) {
        return false;
      }
    }
    return depth_ == 0;
  }

  DescriptorPaths paths;

 private:
  /// Steps over the text up to `end` and over `end` itself; false when there is none.
  bool SkipUntil(std::string_view end) { return TakeUntil(end).has_value(); }

  std::optional<std::string_view> TakeUntil(std::string_view end) {
    const std::size_t at = rest_.find(end);
    if (at == std::string_view::npos) {
      return std::nullopt;
    }
    const std::string_view taken = rest_.substr(0, at);
    rest_.remove_prefix(at + end.size());
    return taken;
  }

  bool Skip(char c) {
    if (rest_.empty() || rest_.front() != c) {
      return false;
    }
    rest_.remove_prefix(1);
    return true;
  }

  bool Skip(std::string_view start) {
    if (!StartsWith(rest_, start)) {
      return false;
    }
    rest_.remove_prefix(start.size());
    return true;
  }

  void SkipSpaces() {
    while (!rest_.empty() && IsSpace(rest_.front())) {
      rest_.remove_prefix(1);
    }
  }

  /// The characters up to a space or one that ends a name.
  std::string_view TakeName() {
    const auto end = std::find_if(rest_.begin(), rest_.end(), EndsName);
    const std::string_view name(rest_.data(), static_cast<std::size_t>(end - rest_.begin()));
    rest_.remove_prefix(name.size());
    return name;
  }

  /// Reads what follows a "<".
  bool ReadMarkup() {
    if (Skip('/')) {
      return depth_-- > 0 && SkipUntil(">");
    }
    if (Skip('?')) {
      return ReadInstruction();
    }
    return Skip('!') ? ReadDeclaration() : ReadElement();
  }

  /// A comment or a section of character data; a document type is not understood.
  bool ReadDeclaration() {
    if (Skip("--")) {
      return SkipUntil("-->");
    }
    return Skip("[CDATA[") && SkipUntil("]]>");
  }

  /// The first instruction may name an encoding.
  bool ReadInstruction() {
    const std::optional<std::string_view> text = TakeUntil("?>");
    if (!text.has_value() || !StartsWith(*text, "xml") ||
        text->find("encoding") == std::string_view::npos) {
      return text.has_value();
    }
    for (const char* const known :
         {"\"UTF-8\"", "'UTF-8'", "\"utf-8\"", "'utf-8'", "\"US-ASCII\""}) {
      if (text->find(known) != std::string_view::npos) {
        return true;
      }
    }
    return false;
  }

  bool ReadElement() {
    StartTag tag;
    if (!ReadStartTag(tag)) {
      return false;
    }
    if (depth_ == kSectionDepth) {
      section_ = tag.name;
    } else if (depth_ == kNodeDepth && section_ == "namespaces" && tag.name == "namespace") {
      paths.namespaces.push_back(JoinWords(tag.path));
    } else if (depth_ == kNodeDepth && section_ == "commands" && tag.name == "command") {
      paths.commands.push_back(JoinWords(tag.path));
    }
    depth_ += tag.isClosed ? 0 : 1;
    return true;
  }

  bool ReadStartTag(StartTag& tag) {
    tag.name = TakeName();
    if (tag.name.empty() || tag.name.find(':') != std::string_view::npos) {
      return false;
    }
    while (true) {
      SkipSpaces();
      tag.isClosed = Skip('/');
      if (Skip('>')) {
        return true;
      }
      if (tag.isClosed || !ReadAttribute(tag)) {
        return false;
      }
    }
  }

  bool ReadAttribute(StartTag& tag) {
    const std::string_view name = TakeName();
    SkipSpaces();
    if (name.empty() || !Skip('=')) {
      return false;
    }
    SkipSpaces();
    const char quote = rest_.empty() ? '\0' : rest_.front();
    if (quote != '"' && quote != '\'') {
      return false;
    }
    rest_.remove_prefix(1);
    const std::optional<std::string_view> value = TakeUntil(std::string_view(&quote, 1));
    if (!value.has_value() || name.find(":path") != std::string_view::npos) {
      return false;
    }
    if (name == "path") {
      tag.path = *value;
      return value->find_first_of("&<\t\r\n") == std::string_view::npos;
    }
    return true;
  }

  std::string_view rest_;
  std::size_t depth_ = 0;
  std::string_view section_;  // the element on the second level that is open, or was the last
};

}  // namespace

std::optional<DescriptorPaths> ScanDescriptor(std::string_view text) {
  Scanner scanner(text);
  return scanner.Run() ? std::optional<DescriptorPaths>(std::move(scanner.paths)) : std::nullopt;
}

}  // namespace Kestrel::Catalog
