// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/callspec/CallTargetSpec.h"

namespace Kestrel::CallSpec {

CallTargetSpec::~CallTargetSpec() = default;

}  // namespace Kestrel::CallSpec
