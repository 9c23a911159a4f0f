// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// What scripts/mutate.py inserts into a copy of the sources. All mutants are in each program. The
// variable KESTREL_MUTANTS names a file that each process of a test maps into its memory. The file
// contains the number of the active mutant, and a byte for each mutant: 1 if it has been reached.

#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <type_traits>

namespace Mutation {

constexpr int kMaxMutants = 1 << 16;

struct Shared {
  int active;
  unsigned char isReached[kMaxMutants];
};

inline Shared nobody = {};
inline Shared* shared = &nobody;

// Runs before the other initialisers of a library or a program, because one of them may be mutated.
[[gnu::constructor(101)]] static void MapShared() {
  const char* const path = std::getenv("KESTREL_MUTANTS");
  const bool isMapped = shared != &nobody;
  const int file = isMapped || path == nullptr ? -1 : open(path, O_RDWR | O_CLOEXEC);
  if (file == -1) {
    return;
  }
  void* const memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  if (memory != MAP_FAILED) {
    shared = static_cast<Shared*>(memory);
  }
}

// Not constexpr: a mutation in a constant expression would never be active, so it must not compile.
inline bool IsActive(int number) {
  shared->isReached[number] = 1;
  return shared->active == number;
}

/// `a < b` becomes `a <Less<N>()< b`. Mutant N moves the boundary of the comparison, and
/// mutant N+1 negates the comparison.
template <int number>
struct Less {};
template <int number>
struct LessEqual {};
template <int number>
struct Greater {};
template <int number>
struct GreaterEqual {};
template <int number>
struct Equal {};
template <int number>
struct Unequal {};
template <int number>
struct Plus {};
template <int number>
struct Minus {};

template <typename Operator, typename Left>
struct Half {
  const Left& left;
};

#define MUTATION_HALF(Name, op)                                          \
  template <typename Left, int number>                                   \
  Half<Name<number>, Left> operator op(const Left& left, Name<number>) { \
    return {left};                                                       \
  }

#define MUTATION_COMPARISON(Name, op, moved, negated)                          \
  MUTATION_HALF(Name, op)                                                      \
  template <int number, typename Left, typename Right>                         \
  bool operator op(const Half<Name<number>, Left>& half, const Right& right) { \
    const bool isMoved = IsActive(number);                                     \
    const bool isNegated = IsActive(number + 1);                               \
    return isMoved     ? half.left moved right                                 \
           : isNegated ? half.left negated right                               \
                       : half.left op right;                                   \
  }

MUTATION_COMPARISON(Less, <, <=, >=)
MUTATION_COMPARISON(LessEqual, <=, <, >)
MUTATION_COMPARISON(Greater, >, >=, <=)
MUTATION_COMPARISON(GreaterEqual, >=, >, <)

#define MUTATION_EQUALITY(Name, op, negated)                                   \
  MUTATION_HALF(Name, op)                                                      \
  template <int number, typename Left, typename Right>                         \
  bool operator op(const Half<Name<number>, Left>& half, const Right& right) { \
    return IsActive(number) ? half.left negated right : half.left op right;    \
  }

MUTATION_EQUALITY(Equal, ==, !=)
MUTATION_EQUALITY(Unequal, !=, ==)

/// In a mutant, a sum of two numbers becomes a difference, and a difference becomes a sum. The
/// distance of two pointers or iterators becomes greater by one. For all other operands, the result
/// is the left operand.
#define MUTATION_SUM(Name, op, other)                                          \
  MUTATION_HALF(Name, op)                                                      \
  template <int number, typename Left, typename Right>                         \
  auto operator op(const Half<Name<number>, Left>& half, const Right& right) { \
    using Result = std::decay_t<decltype(half.left op right)>;                 \
    if (!IsActive(number)) {                                                   \
      return static_cast<Result>(half.left op right);                          \
    }                                                                          \
    if constexpr (std::is_arithmetic_v<Left> && std::is_arithmetic_v<Right>) { \
      return static_cast<Result>(half.left other right);                       \
    } else if constexpr (std::is_arithmetic_v<Result>) {                       \
      return static_cast<Result>((half.left op right) + 1);                    \
    } else {                                                                   \
      return static_cast<Result>(half.left);                                   \
    }                                                                          \
  }

MUTATION_SUM(Plus, +, -)
MUTATION_SUM(Minus, -, +)

}  // namespace Mutation
