// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "autocli/formatters/results/ResultValues.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Testing {

/// Makes random values of every shape that a command may return. The same seed makes the same
/// values on every host.
class RandomTree {
 public:
  explicit RandomTree(std::uint64_t seed) : random_(seed) {}

  /// Makes a value and the parameters that it is printed with. Its name says how it was made.
  ResultValue Make();

  /// Returns a width of the screen: often 0, otherwise a narrow or a wide one.
  unsigned MakeWidth();

 private:
  /// What strings and names consist of: printable ASCII; all of UTF-8; any bytes.
  enum Wildness { Tame, Utf8, Wild };

  std::uint64_t Pick(std::uint64_t count) { return random_() % count; }
  bool OneIn(std::uint64_t count) { return Pick(count) == 0; }

  std::shared_ptr<MetaObj::MetaObject> MakeRoot();
  std::shared_ptr<MetaObj::MetaObject> MakeValue(int depth);
  std::shared_ptr<MetaObj::MetaObject> MakeScalar();
  std::shared_ptr<MetaObj::MetaStruct> MakeStruct(int depth, std::uint64_t maxFields);
  std::shared_ptr<MetaObj::MetaStruct> MakeChain(std::uint64_t length);
  std::shared_ptr<MetaObj::MetaList> MakeScalars();
  std::shared_ptr<MetaObj::MetaList> MakeStructs(const std::shared_ptr<MetaObj::MetaStruct>& shape);

  /// Makes another value of the same shape.
  std::shared_ptr<MetaObj::MetaObject> MakeLike(const std::shared_ptr<MetaObj::MetaObject>& value);
  std::shared_ptr<MetaObj::MetaStruct> MakeLike(const MetaObj::MetaStruct& structure);

  long MakeNumber();
  std::string MakeText();
  std::string MakeWord();
  std::string MakeName();
  void AddCharacter(std::string& text);
  AutoCli::FormatParameters MakeParams();

  std::mt19937_64 random_;
  Wildness wildness_ = Tame;
  bool lies_ = false;
};

}  // namespace Kestrel::Testing
