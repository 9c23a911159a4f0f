// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <string>

namespace Kestrel::Testing {

/// Runs `body` in a child process that has namespaces of its own (CLONE_NEWNET, CLONE_NEWNS, ...),
/// so that it may change the network or the mounts without anyone's noticing. What fails in it
/// fails the test. Returns an empty text, or why this machine does not allow it; `body` did not run
/// then.
std::string RunInNamespaces(int namespaces, const std::function<void()>& body);

/// The same with a network of its own, where the test may make interfaces of the kinds veth and
/// bridge.
std::string RunInOwnNetwork(const std::function<void()>& body);

}  // namespace Kestrel::Testing
