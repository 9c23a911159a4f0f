// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kestrel/autocli/FormatParameters.h"
#include "kestrel/metaobj/MetaObject.h"

namespace Kestrel::Testing {

/// A value that a command may give, and the parameters that it is printed with.
struct ResultValue {
  std::string name;
  std::shared_ptr<MetaObj::MetaObject> root;  // null where a command gave nothing
  AutoCli::FormatParameters params;
};

/// Values of one theme; every formatter is shown each of them.
struct ResultGroup {
  std::string name;
  std::vector<ResultValue> values;
};

/// The names of the groups, in the order of `MakeResultGroups`.
std::vector<std::string> ResultGroupNames();

/// Something of everything that a value can be, edges first.
std::vector<ResultGroup> MakeResultGroups();

/// The group of that name.
ResultGroup MakeResultGroup(const std::string& name);

}  // namespace Kestrel::Testing
