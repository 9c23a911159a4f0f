// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <string>

namespace Kestrel::Testing {

/// Runs `body` in a child process in namespaces of its own (CLONE_NEWNET, CLONE_NEWNS, ...), where
/// it may change the network or the mounts. A failure there fails the test. Returns an empty
/// string, or the reason if this machine does not allow it and `body` did not run.
std::string RunInNamespaces(int namespaces, const std::function<void()>& body);

/// Like RunInNamespaces, with a network namespace in which interfaces of the kinds veth and bridge
/// can be created.
std::string RunInOwnNetwork(const std::function<void()>& body);

}  // namespace Kestrel::Testing
