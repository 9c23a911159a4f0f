// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <string>

#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::Formats {

/// Makes random results whose strings and names contain all kinds of characters. The same seed
/// produces the same results on every host.
class RandomResult {
 public:
  explicit RandomResult(std::uint64_t seed) : random_(seed) {}

  std::shared_ptr<MetaObj::MetaObject> Make();

  /// Makes random format parameters for `root`, which `Make` returned.
  AutoCli::FormatParameters MakeParameters(const MetaObj::MetaObject& root);

 private:
  std::uint64_t Pick(std::uint64_t count) { return random_() % count; }
  bool OneIn(std::uint64_t count) { return Pick(count) == 0; }

  std::shared_ptr<MetaObj::MetaObject> MakeValue(int depth);
  std::shared_ptr<MetaObj::MetaObject> MakeScalar();
  std::shared_ptr<MetaObj::MetaStruct> MakeStruct(int depth, std::uint64_t maxFields);
  std::shared_ptr<MetaObj::MetaStruct> MakeChain();
  std::shared_ptr<MetaObj::MetaList> MakeScalars();
  std::shared_ptr<MetaObj::MetaList> MakeStructs(const std::shared_ptr<MetaObj::MetaStruct>& shape,
                                                 std::uint64_t maxCount);

  /// Returns a random value of the same shape. A list of scalars is returned unchanged.
  std::shared_ptr<MetaObj::MetaObject> MakeLike(const std::shared_ptr<MetaObj::MetaObject>& value);
  std::shared_ptr<MetaObj::MetaStruct> MakeLike(const MetaObj::MetaStruct& structure);

  std::string PickPath(const MetaObj::MetaStruct& shape);
  long MakeNumber();
  std::string MakeText();
  std::string MakeName();
  std::string MakeCharacter();

  std::mt19937_64 random_;
  bool isUtf8_ = true;
};

}  // namespace Kestrel::Formats
