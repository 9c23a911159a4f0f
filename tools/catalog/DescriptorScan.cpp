// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Only the tags on the second and third level matter:
//
// <root> ... <namespaces> <namespace path="a.b"> ... <commands> <command path="a.b.c"> ...
//
// Everything else is skipped: text, comments, CDATA sections, processing instructions, and the
// values of other attributes. If something cannot be skipped safely, the scan ends without a
// result.

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

/// Replaces the full stops of a descriptor's path with spaces.
std::string JoinWords(std::string_view written) {
  std::string path;
  for (const std::string& word : AutoCli::XmlPlugin::SplitPath(std::string(written))) {
    path += (path.empty() ? "" : " ") + word;
  }
  return path;
}

/// The name of a start tag and the value of its attribute `path`, unchanged.
struct StartTag {
  std::string_view name;
  std::string_view path;
  bool isClosed = false;  // ends with "/>"
};

class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  /// Returns whether the scan understood everything.
  bool Run() {
    if (rest_.find('\0') != std::string_view::npos) {
      return false;  // The encoding has wider code units.
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
  /// Skips everything up to and including `end`. Returns false if there is no `end`.
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

  /// Takes the characters up to white space or a character that ends a name.
  std::string_view TakeName() {
    const auto end = std::find_if(rest_.begin(), rest_.end(), EndsName);
    const std::string_view name(rest_.data(), static_cast<std::size_t>(end - rest_.begin()));
    rest_.remove_prefix(name.size());
    return name;
  }

  /// Reads the markup after a "<".
  bool ReadMarkup() {
    if (Skip('/')) {
      return depth_-- > 0 && SkipUntil(">");
    }
    if (Skip('?')) {
      return ReadInstruction();
    }
    return Skip('!') ? ReadDeclaration() : ReadElement();
  }

  /// Skips a comment or a CDATA section. Returns false for a document type.
  bool ReadDeclaration() {
    if (Skip("--")) {
      return SkipUntil("-->");
    }
    return Skip("[CDATA[") && SkipUntil("]]>");
  }

  /// Reads a processing instruction. The first one may name an encoding.
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
  std::string_view section_;  // the current or last element on the second level
};

}  // namespace

std::optional<DescriptorPaths> ScanDescriptor(std::string_view text) {
  Scanner scanner(text);
  return scanner.Run() ? std::optional<DescriptorPaths>(std::move(scanner.paths)) : std::nullopt;
}

}  // namespace Kestrel::Catalog
