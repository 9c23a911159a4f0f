// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/KestrelException.h"

namespace Kestrel {

KestrelException::KestrelException(const KestrelException& other) = default;

KestrelException& KestrelException::operator=(const KestrelException& other) = default;

KestrelException::~KestrelException() = default;

const char* KestrelException::what() const noexcept { return message_.c_str(); }

}  // namespace Kestrel
