// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/CallTarget.h"

namespace Kestrel::CallSpec {

CallTarget::~CallTarget() = default;

}  // namespace Kestrel::CallSpec
