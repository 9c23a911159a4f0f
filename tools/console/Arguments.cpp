// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/console/Arguments.h"

#include <algorithm>

namespace Kestrel::Console {

namespace {

bool Contains(const std::vector<std::string_view>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

class Reader {
 public:
  Reader(const std::vector<std::string>& words, const OptionNames& names,
         const ArgumentHandler& handle)
      : next_(words.begin()), end_(words.end()), names_(names), handle_(handle) {}

  void Run() {
    while (next_ != end_) {
      Read(*next_++);
    }
  }

 private:
  void Read(const std::string& word) {
    if (areOptionsOver_ || word.size() < 2 || word[0] != '-') {
      handle_("", word);
    } else if (word == "--") {
      areOptionsOver_ = true;
    } else if (Contains(names_.flags, word)) {
      handle_(word, "");
    } else {
      ReadOptionWithValue(word);
    }
  }

  void ReadOptionWithValue(const std::string& word) {
    const std::size_t equals = word.find('=');
    const std::string option = word.substr(0, equals);
    if (!Contains(names_.withValue, option)) {
      throw UsageError(Contains(names_.flags, option) ? option + " takes no value"
                                                      : "there is no option " + option);
    }
    if (equals == std::string::npos && next_ == end_) {
      throw UsageError(option + " has no value");
    }
    handle_(option, equals == std::string::npos ? *next_++ : word.substr(equals + 1));
  }

  std::vector<std::string>::const_iterator next_;
  const std::vector<std::string>::const_iterator end_;
  const OptionNames& names_;
  const ArgumentHandler& handle_;
  bool areOptionsOver_ = false;
};

}  // namespace

void ReadArguments(const std::vector<std::string>& words, const OptionNames& names,
                   const ArgumentHandler& handle) {
  Reader(words, names, handle).Run();
}

}  // namespace Kestrel::Console
