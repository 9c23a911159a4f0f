// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <gtest/gtest.h>

#include <string>

#include "plugins/host/support/Namespaces.h"

/// Runs the body in a network namespace of its own. If that is impossible, skips the test with the
/// reason.
#define IN_OWN_NETWORK(...)                                                         \
  if (const std::string refusal = RunInOwnNetwork(__VA_ARGS__); !refusal.empty()) { \
    GTEST_SKIP() << refusal;                                                        \
  }

// The following functions configure the network namespace of this process.
namespace Kestrel::Testing {

/// Runs shell commands, each of which must succeed.
void Configure(const std::string& commands);

/// Makes a small network: two connected interfaces, one of them in a bridge.
void MakeNetwork();
/// Adds addresses of both families, some with a peer, a label or a lifetime.
void MakeAddresses();
/// Makes routes of many types, some in another table or with several next hops.
void MakeRoutes();
/// Makes neighbors in several states.
void MakeNeighbors();

}  // namespace Kestrel::Testing
