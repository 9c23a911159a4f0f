// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// One mistake for each check of .clang-tidy, here or in Mistakes.h. This file is never built:
// scripts/check_tidy.sh runs clang-tidy on it and fails when a check reports nothing.
#include "Mistakes.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

#define TWICE(x) x + x  // bugprone-macro-parentheses

struct ExceptionEscape {
  ~ExceptionEscape() { throw std::runtime_error("out of a destructor"); }
};

double IntegerDivision(int part, int whole) {
  double ratio = part / whole;
  return ratio;
}

int SizeofExpression(const std::string* text) { return sizeof(sizeof(text)); }

std::string StringConstructor() { return std::string('x', 50); }

class SelfAssignment {
 public:
  SelfAssignment& operator=(const SelfAssignment& other) {
    delete value_;
    value_ = new int(*other.value_);
    return *this;
  }

 private:
  int* value_ = 0;  // modernize-use-nullptr
};

void UnusedReturnValue(std::unique_ptr<int>& pointer) { pointer.release(); }

std::size_t UseAfterMove(std::string text) {
  const std::string taken = std::move(text);
  return text.size() + taken.size();
}

class ExplicitConstructor {
 public:
  ExplicitConstructor(int width) : width_(width) {}
  int width_;
};

void CatchByValue() {
  try {
    CatchByValue();
  } catch (std::runtime_error problem) {
    throw problem;
  }
}

int LoopConvert(const std::vector<int>& values) {
  int sum = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    sum += values[i];
  }
  return sum;
}

struct Base {
  virtual ~Base();
  virtual void Run();
};

struct Derived : Base {
  virtual void Run();  // modernize-use-override
};

std::size_t ForRangeCopy(const std::vector<std::string>& texts) {
  std::size_t length = 0;
  for (const std::string text : texts) {
    length += text.size();
  }
  return length;
}

std::vector<int> InefficientVector(int count) {
  std::vector<int> values;
  for (int i = 0; i < count; ++i) {
    values.push_back(i);
  }
  return values;
}

std::string MoveConstArgument(const std::string& text) { return std::move(text); }

std::size_t CopyInitialization(const std::vector<std::string>& texts) {
  const std::string first = texts.front();
  return first.size();
}

std::size_t ValueParameter(std::string text) { return text.size(); }

const int ConstReturnType() { return 1; }

bool ContainerSizeEmpty(const std::string& text) { return text.size() == 0; }

int ElseAfterReturn(int value) {
  if (value > 0) {
    return 1;
  } else {
    value = -value;
  }
  return value;
}

std::string RedundantCStr(const std::string& text) { return std::string(text.c_str()); }

bool SimplifyBoolean(bool value) { return value ? true : false; }

}  // namespace
