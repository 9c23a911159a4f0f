// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

namespace Kestrel::Testing {

/// The arguments of `AutoCli_FitString`, except the stream.
struct FitArguments {
  int indent = 0;
  int width = 80;
  std::string text;
  bool skipFirstIndent = false;
  bool endLine = false;
  char wrapChar = 0;
  bool splitLines = false;
};

/// A reference implementation of `AutoCli_FitString`: plain, word by word, not optimised.
class SlowFit {
 public:
  static std::string Fit(const FitArguments& a) {
    SlowFit fit;
    a.splitLines ? fit.FitLines(a) : fit.FitOne(a);
    return fit.out_;
  }

 private:
  static std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> pieces(1);
    for (const char c : text) {
      if (c == separator) {
        pieces.emplace_back();
      } else {
        pieces.back() += c;
      }
    }
    if (pieces.back().empty()) {
      pieces.pop_back();
    }
    return pieces;
  }

  void FitLines(FitArguments a) {
    bool hasWritten = false;
    for (const std::string& line : Split(a.text, '\n')) {
      if (!a.endLine && hasWritten) {
        out_ += "\n";
      }
      a.text = line;
      FitOne(a);
      a.skipFirstIndent = false;
      hasWritten = true;
    }
  }

  void FitOne(const FitArguments& a) {
    if (!a.skipFirstIndent) {
      Margin(a);
    }
    if (a.width <= a.indent || static_cast<long>(a.text.size()) <= a.width - a.indent) {
      out_ += a.text;
    } else {
      FitWords(a);
    }
    if (a.endLine) {
      out_ += "\n";
    }
  }

  void FitWords(const FitArguments& a) {
    const long available = a.width - a.indent;
    long remaining = available;
    bool isFirst = true;
    for (const std::string& word : Split(a.text, ' ')) {
      const long cost = static_cast<long>(word.size()) + 1;
      remaining -= cost;
      if (remaining < 0) {
        out_ += a.wrapChar == 0 ? ' ' : a.wrapChar;
        out_ += "\n";
        Margin(a);
        remaining = available - cost;
      } else if (!isFirst) {
        out_ += " ";
      }
      out_ += word;
      isFirst = false;
    }
  }

  void Margin(const FitArguments& a) {
    std::ostringstream margin;
    margin << std::setw(a.indent) << ' ';
    out_ += margin.str();
  }

  std::string out_;
};

inline std::string FitSlowly(const FitArguments& arguments) { return SlowFit::Fit(arguments); }

}  // namespace Kestrel::Testing
