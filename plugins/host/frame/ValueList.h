// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/metaobj/MetaList.h>

#include <memory>
#include <string>
#include <vector>

namespace Kestrel::Host {

/// Texts from outside as a list of values that are safe to print.
std::shared_ptr<MetaObj::MetaList> OutsideTexts(const std::vector<std::string>& texts);

}  // namespace Kestrel::Host
