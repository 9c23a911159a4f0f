// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/Plugin.h"

namespace Kestrel::AutoCli {

Plugin::~Plugin() = default;

}  // namespace Kestrel::AutoCli
