// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/DataSource.h"

#include <dirent.h>
#include <fcntl.h>
#include <kestrel/KestrelException.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>

namespace Kestrel::Host {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
// More processors, nodes or the like than any kernel can number.
constexpr long kLongestRange = 1 << 16;
constexpr std::size_t kFirstReadSize = 1 << 12;

class Descriptor {
 public:
  explicit Descriptor(const std::string& path)
      : number_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    const int error = errno;  // the caller's reason, which closing must not replace
    if (IsOpen()) {
      ::close(number_);
    }
    errno = error;
  }

  bool IsOpen() const { return number_ >= 0; }

  ssize_t Read(char* buffer, std::size_t size) const {
    ssize_t count = 0;
    do {
      count = ::read(number_, buffer, size);
    } while (count < 0 && errno == EINTR);
    return count;
  }

 private:
  int number_;
};

bool IsControl(unsigned char byte) { return byte < 0x20 || byte == 0x7f; }

// U+0080 to U+009F: terminals take some of them as commands too.
bool IsControlPair(unsigned char first, unsigned char second) {
  return first == 0xc2 && second >= 0x80 && second <= 0x9f;
}

void AppendEscaped(std::string& text, unsigned char byte) {
  constexpr char kDigits[] = "0123456789abcdef";
  text += "\\x";
  text += kDigits[byte >> 4];
  text += kDigits[byte & 0xf];
}

std::string EscapeControls(std::string_view text, std::string_view kept) {
  std::string safe;
  safe.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (IsControl(byte) && kept.find(text[i]) == std::string_view::npos) {
      AppendEscaped(safe, byte);
    } else if (i + 1 < text.size() &&
               IsControlPair(byte, static_cast<unsigned char>(text[i + 1]))) {
      AppendEscaped(safe, byte);
      AppendEscaped(safe, static_cast<unsigned char>(text[++i]));
    } else {
      safe += text[i];
    }
  }
  return safe;
}

}  // namespace

const char* const kProc = "/proc";
const char* const kSys = "/sys";

std::optional<std::string> ReadFile(const std::string& path) {
  const Descriptor file(path);
  if (!file.IsOpen()) {
    return std::nullopt;
  }
  std::string text(kFirstReadSize, '\0');
  std::size_t size = 0;
  for (;;) {
    const ssize_t count = file.Read(&text[size], text.size() - size);
    if (count < 0) {
      return std::nullopt;
    }
    if (count == 0) {
      text.resize(size);
      return text;
    }
    size += static_cast<std::size_t>(count);
    if (size == text.size()) {
      text.resize(2 * size);
    }
  }
}

std::string ReadNeededFile(const std::string& path) {
  auto text = ReadFile(path);
  if (!text) {
    throw KestrelException("Unable to read " + path + ": " + std::strerror(errno));
  }
  return std::move(*text);
}

std::vector<std::string> ListFolder(const std::string& path) {
  std::vector<std::string> names;
  DIR* const folder = ::opendir(path.c_str());
  if (folder == nullptr) {
    return names;
  }
  while (const dirent* const entry = ::readdir(folder)) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") {
      names.emplace_back(name);
    }
  }
  ::closedir(folder);
  std::sort(names.begin(), names.end());
  return names;
}

void RequireEntries(const std::string& folder) {
  if (ListFolder(folder).empty()) {
    throw KestrelException("Unable to read " + folder + ": nothing is there");
  }
}

std::optional<std::string> ReadLink(const std::string& path) {
  std::string target(256, '\0');
  for (;;) {
    const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
    if (length < 0) {
      return std::nullopt;
    }
    if (static_cast<std::size_t>(length) < target.size()) {
      target.resize(static_cast<std::size_t>(length));
      return target;
    }
    target.resize(2 * target.size());
  }
}

std::optional<long> ParseNumber(std::string_view text) {
  const std::string_view digits = Trim(text);
  long number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size()) {
    return std::nullopt;
  }
  return number;
}

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::vector<long> ParseNumberList(std::string_view text) {
  std::vector<long> numbers;
  for (const std::string_view piece : Split(Trim(text), ',')) {
    const std::size_t dash = piece.find('-', 1);
    const auto first = ParseNumber(piece.substr(0, dash));
    const auto last = dash == std::string_view::npos ? first : ParseNumber(piece.substr(dash + 1));
    if (!first || !last || *last - *first >= kLongestRange) {
      continue;
    }
    for (long number = *first; number <= *last; ++number) {
      numbers.push_back(number);
    }
  }
  return numbers;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  for (;;) {
    const std::size_t end = text.find(separator);
    pieces.push_back(text.substr(0, end));
    if (end == std::string_view::npos) {
      return pieces;
    }
    text.remove_prefix(end + 1);
  }
}

std::vector<std::string_view> SplitWords(std::string_view text) {
  std::vector<std::string_view> words;
  std::size_t first = text.find_first_not_of(kBlanks);
  while (first != std::string_view::npos) {
    const std::size_t end = std::min(text.find_first_of(kBlanks, first), text.size());
    words.push_back(text.substr(first, end - first));
    first = text.find_first_not_of(kBlanks, end);
  }
  return words;
}

std::vector<std::string_view> SplitLines(std::string_view text) {
  auto lines = Split(text, '\n');
  if (lines.back().empty()) {
    lines.pop_back();
  }
  return lines;
}

std::shared_ptr<MetaObj::MetaString> OutsideText(std::string_view text) {
  return MetaObj::MetaString::NewUtf8WithEscapes(EscapeControls(text, ""));
}

std::shared_ptr<MetaObj::MetaString> OutsideLines(std::string_view text) {
  return MetaObj::MetaString::NewUtf8WithEscapes(EscapeControls(text, "\t\n"));
}

}  // namespace Kestrel::Host
