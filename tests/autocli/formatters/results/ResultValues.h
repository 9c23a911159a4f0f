// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::Testing {

/// A value that a command may return, and the parameters that it is printed with.
struct ResultValue {
  std::string name;
  std::shared_ptr<MetaObj::MetaObject> root;  ///< null if the command returned nothing
  AutoCli::FormatParameters params;
};

/// Values on one theme. Every formatter prints each of them.
struct ResultGroup {
  std::string name;
  std::vector<ResultValue> values;
};

/// Returns the names of the groups, in the order of `MakeResultGroups`.
std::vector<std::string> ResultGroupNames();

/// Makes groups of values that cover all kinds and shapes, with many edge cases.
std::vector<ResultGroup> MakeResultGroups();

/// Returns the group with that name.
ResultGroup MakeResultGroup(const std::string& name);

}  // namespace Kestrel::Testing
