// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The entry point of a shared object that makes the mistake KESTREL_MISTAKE. KESTREL_ENTRY_POINT is
// its declaration up to the parameters.

#include <memory>

namespace Kestrel::AutoCli {
class Namespace;
}

void KESTREL_MISTAKE(const std::shared_ptr<Kestrel::AutoCli::Namespace>& root);

KESTREL_ENTRY_POINT(std::shared_ptr<Kestrel::AutoCli::Namespace> root) { KESTREL_MISTAKE(root); }
