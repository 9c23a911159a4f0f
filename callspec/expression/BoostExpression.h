// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

#include "callspec/Expression.h"

/// The entry point of the module with Boost.Regex: compiles `text` into an expression that the
/// caller deletes. Throws the error of Boost.Regex if the expression is invalid.
extern "C" __attribute__((visibility("default"))) const Kestrel::CallSpec::Expression*
Kestrel_CompileExpression(const std::string& text);
