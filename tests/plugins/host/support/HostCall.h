// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "plugins/support/CommandCall.h"

// Calls of the host plug-in's commands.
namespace Kestrel::Testing {

/// Calls a command. Returns its result as the tool prints it by default on a screen of `width`
/// columns. Fails the test if the call reports an error.
std::string Print(const std::string& path, const Parameters& parameters, unsigned short width);

/// Returns a field as a string. Fails the test if there is no such field.
std::string TextOf(const std::shared_ptr<MetaObj::MetaStruct>& structure, const std::string& field);
/// Returns one field of each structure as a string.
std::vector<std::string> FieldOf(
    const std::vector<std::shared_ptr<MetaObj::MetaStruct>>& structures, const std::string& field);
/// Returns a field that must be an integer. Fails the test if it is not, or if there is no such
/// field.
long NumberOf(const std::shared_ptr<MetaObj::MetaStruct>& structure, const std::string& field);

}  // namespace Kestrel::Testing
