// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <kestrel/metaobj/MetaList.h>
#include <kestrel/metaobj/MetaString.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Kestrel::Host {

// Text from outside (names of files, users, devices ...) may hold bytes that would make the output
// invalid or send commands to a terminal. These functions make values from it in which each control
// character, and each byte that is not UTF-8, is written as \xHH.

std::shared_ptr<MetaObj::MetaString> SanitizedText(std::string_view text);

/// Keeps tabs and line feeds, for a text of several lines.
std::shared_ptr<MetaObj::MetaString> SanitizedLines(std::string_view text);

/// A list of strings, each made by SanitizedText.
std::shared_ptr<MetaObj::MetaList> SanitizedList(const std::vector<std::string>& texts);

}  // namespace Kestrel::Host
