// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/Regex.h"

#include <kestrel/KestrelException.h>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <new>

namespace Kestrel::Host {

namespace {

constexpr std::size_t kMaxReasonSize = 256;

struct MatchDataDeleter {
  void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
};

PCRE2_SPTR Units(const std::string& text) { return reinterpret_cast<PCRE2_SPTR>(text.data()); }

/// Compiles `expression`. On failure, returns null and sets `error` to PCRE2's error number.
pcre2_code* Compile(const std::string& expression, std::uint32_t options, int& error) {
  PCRE2_SIZE offset = 0;
  return pcre2_compile(Units(expression), expression.size(), options | PCRE2_DOTALL, &error,
                       &offset, nullptr);
}

/// Compiles an expression. One that is not valid UTF-8 is compiled for matching byte by byte.
pcre2_code* CompileTextOrBytes(const std::string& expression, int& error) {
  pcre2_code* const code = Compile(expression, PCRE2_UTF | PCRE2_MATCH_INVALID_UTF, error);
  const bool isNotUtf8 = code == nullptr && error < 0;
  return isNotUtf8 ? Compile(expression, 0, error) : code;
}

std::string Reason(int error) {
  PCRE2_UCHAR text[kMaxReasonSize] = {};
  pcre2_get_error_message(error, text, kMaxReasonSize);
  return reinterpret_cast<const char*>(text);
}

/// Throws the exception for the error number of a failed search.
[[noreturn]] void ThrowSearchError(const std::string& expression, int error) {
  if (error == PCRE2_ERROR_NOMEMORY) {
    throw std::bad_alloc();
  }
  const bool isLimit = error == PCRE2_ERROR_MATCHLIMIT || error == PCRE2_ERROR_DEPTHLIMIT ||
                       error == PCRE2_ERROR_HEAPLIMIT;
  throw KestrelException(
      "The regular expression '" + expression + "' " +
      (isLimit ? "takes too long to search for" : "cannot be searched for: " + Reason(error)));
}

}  // namespace

void Regex::CodeDeleter::operator()(pcre2_real_code_8* code) const { pcre2_code_free(code); }

Regex::Regex(const std::string& expression) : expression_(expression) {
  int error = 0;
  code_.reset(CompileTextOrBytes(expression, error));
  if (code_ == nullptr) {
    throw KestrelException("'" + expression + "' is not a regular expression: " + Reason(error));
  }
}

Regex::~Regex() = default;

bool Regex::IsFoundIn(const std::string& text) const {
  const std::unique_ptr<pcre2_match_data, MatchDataDeleter> data(
      pcre2_match_data_create_from_pattern(code_.get(), nullptr));
  if (data == nullptr) {
    throw std::bad_alloc();
  }
  const int count = pcre2_match(code_.get(), Units(text), text.size(), 0, 0, data.get(), nullptr);
  if (count < 0 && count != PCRE2_ERROR_NOMATCH) {
    ThrowSearchError(expression_, count);
  }
  return count >= 0;
}

}  // namespace Kestrel::Host
