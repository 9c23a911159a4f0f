// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "autocli/descriptors/XmlParser.h"

/// The entry point of the module with libxml2. The object exists until the process ends.
extern "C" __attribute__((visibility("default"))) const Kestrel::AutoCli::XmlParser*
Kestrel_GetXmlParser();
