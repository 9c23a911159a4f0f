// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kestrel/autocli/Dispatcher.h"

// A tree of many commands that do nothing, and a call of one of them.

namespace Kestrel::Benchmarks {

/// The number of parameters of each command: strings and integers, none of them required.
inline constexpr std::size_t kParameters = 20;
inline constexpr int kCommandsPerNamespace = 100;

std::string ParameterName(std::size_t index);
std::string NamespaceName(int index);
std::string CommandName(int index);

void AddCommands(AutoCli::Dispatcher& dispatcher, int commands);

/// Returns the argument vector of a call of the middle command with all its parameters.
std::vector<std::string> MakeCall(int commands);

/// Returns pointers to the words, which must live as long as the pointers are used.
std::vector<const char*> PointersTo(const std::vector<std::string>& words);

/// Parses a call and executes it. Returns whether that succeeds.
bool Call(AutoCli::Dispatcher& dispatcher, const std::vector<const char*>& argv);

}  // namespace Kestrel::Benchmarks
