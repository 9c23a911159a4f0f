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

/// Returns the parameters for printing the list with a formatter; an empty name means `table`.
/// Formats for people print the most important fields. Formats for programs print all fields.
AutoCli::FormatParameters MakeFormat(const std::string& formatter);

}  // namespace Kestrel::Doctor
