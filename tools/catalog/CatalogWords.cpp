// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/catalog/CatalogWords.h"

#include <cstddef>

#include "kestrel/KestrelException.h"

namespace Kestrel::Catalog {

using CallSpec::ParameterConstraintType;
using CallSpec::ParameterType;
using MetaObj::MetaType;

namespace {

template <typename Kind>
struct KindWord {
  Kind kind;
  const char* word;
};

constexpr KindWord<ParameterType> kParameterKinds[] = {
    {ParameterType::String, "string"},
    {ParameterType::Int, "int"},
    {ParameterType::Bool, "bool"},
    {ParameterType::Flag, "flag"},
    {ParameterType::StringList, "string-list"},
    {ParameterType::IntList, "int-list"},
    {ParameterType::BoolList, "bool-list"},
};

const KindWord<ValueKind> kValueKinds[] = {
    {{MetaType::String, false}, "string"},     {{MetaType::Int, false}, "int"},
    {{MetaType::Bool, false}, "bool"},         {{MetaType::Struct, false}, "structure"},
    {{MetaType::String, true}, "string-list"}, {{MetaType::Int, true}, "int-list"},
    {{MetaType::Bool, true}, "bool-list"},     {{MetaType::Struct, true}, "structure-list"},
};

constexpr KindWord<ParameterConstraintType> kConstraintTypes[] = {
    {CallSpec::NoConstraint, "none"}, {CallSpec::IntRange, "range"},
    {CallSpec::IntEnum, "intenum"},   {CallSpec::StringEnum, "stringenum"},
    {CallSpec::StringRegex, "regex"},
};

template <typename Kind, std::size_t kSize>
const char* FindWord(const KindWord<Kind> (&table)[kSize], const Kind& kind) {
  for (const KindWord<Kind>& entry : table) {
    if (entry.kind == kind) {
      return entry.word;
    }
  }
  throw KestrelException("A kind does not exist");
}

template <typename Kind, std::size_t kSize>
std::optional<Kind> FindKind(const KindWord<Kind> (&table)[kSize], std::string_view word) {
  for (const KindWord<Kind>& entry : table) {
    if (entry.word == word) {
      return entry.kind;
    }
  }
  return std::nullopt;
}

}  // namespace

const char* WordOf(ParameterType kind) { return FindWord(kParameterKinds, kind); }

std::optional<ParameterType> ParameterKindOf(std::string_view word) {
  return FindKind(kParameterKinds, word);
}

const char* WordOf(const ValueKind& kind) { return FindWord(kValueKinds, kind); }

std::optional<ValueKind> ValueKindOf(std::string_view word) { return FindKind(kValueKinds, word); }

const char* WordOf(ParameterConstraintType type) { return FindWord(kConstraintTypes, type); }

std::optional<ParameterConstraintType> ConstraintTypeOf(std::string_view word) {
  return FindKind(kConstraintTypes, word);
}

}  // namespace Kestrel::Catalog
