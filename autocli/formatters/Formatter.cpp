// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/Formatter.h"

namespace Kestrel::AutoCli {

Formatter::Formatter(const std::string& formatterName) : name(formatterName) {}

Formatter::~Formatter() = default;

const std::string& Formatter::GetName() const { return name; }

const std::string& Formatter::GetDescription() const { return description; }

const std::vector<FormatterParam>& Formatter::GetParams() const { return params; }

}  // namespace Kestrel::AutoCli
