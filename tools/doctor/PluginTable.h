// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/metaobj/MetaList.h"
#include "tools/doctor/Doctor.h"

namespace Kestrel::Doctor {

/// Returns a structure of the type "Plugin" for each plug-in.
std::shared_ptr<MetaObj::MetaList> MakeTable(const std::vector<Diagnosis>& plugins);

/// How a formatter prints it; an empty name means `table`. People see the fields that matter most,
/// programs see all.
AutoCli::FormatParameters MakeFormat(const std::string& formatter);

}  // namespace Kestrel::Doctor
