// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <string>

namespace Kestrel::Testing {

/// Runs `body` in a child process with its own namespaces of the kinds `namespaces` (CLONE_NEWNET,
/// CLONE_NEWNS, ...), where it may change the network or the mounts. If `body` fails, the test
/// fails. Returns an empty string. If this machine does not allow such namespaces, does not run
/// `body` and returns the reason.
std::string RunInNamespaces(int namespaces, const std::function<void()>& body);

/// Like RunInNamespaces with CLONE_NEWNET. If interfaces of the kinds veth and bridge cannot be
/// created there, does not run `body` either, and returns the reason.
std::string RunInOwnNetwork(const std::function<void()>& body);

}  // namespace Kestrel::Testing
