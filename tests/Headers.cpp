// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0
//
// The target that compiles the common headers of the tests needs a source file. The program is
// never run.
int main() { return 0; }
