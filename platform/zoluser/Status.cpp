// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <cstring>

#include "kestrel/platform/Zoluser.h"

const char* ZoluserStatus_CodeToString(ZoluserStatus status) { return std::strerror(status); }
