// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/Regex.h"

#include <kestrel/KestrelException.h>

#include <boost/regex.hpp>
#include <stdexcept>

namespace Kestrel::Host {

struct Regex::Compiled {
  boost::regex regex;
};

Regex::Regex(const std::string& expression) : expression_(expression) {
  try {
    compiled_ = std::make_unique<const Compiled>(Compiled{boost::regex(expression)});
  } catch (const std::runtime_error& error) {
    throw KestrelException("'" + expression + "' is not a regular expression: " + error.what());
  }
}

Regex::~Regex() = default;

bool Regex::IsFoundIn(const std::string& text) const {
  try {
    return boost::regex_search(text, compiled_->regex);
  } catch (const std::runtime_error&) {
    throw KestrelException("The regular expression '" + expression_ +
                           "' takes too long to search for");
  }
}

}  // namespace Kestrel::Host
