// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

// Mistakes that are only possible in a header; see Mistakes.cpp.

int definedInAHeader = 0;  // misc-definitions-in-headers

inline void UnusedVariable() { int unused = 0; }  // a warning of clang
