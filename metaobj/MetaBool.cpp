// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/metaobj/MetaBool.h"

#include "metaobj/SlabAllocator.h"

namespace Kestrel::MetaObj {

bool MetaBool::_sInitialized = MetaBool::Init();

MetaBool::MetaBool(bool value, FactoryFlag flag)
    : MetaObject(MetaType::Bool, flag), value_(value) {}

const std::shared_ptr<MetaBool>& MetaBool::New() { return New(false); }

const std::shared_ptr<MetaBool>& MetaBool::New(bool value) {
  static const std::shared_ptr<MetaBool> instances[] = {
      MakeInSlab<MetaBool>(false, FactoryFlag()),
      MakeInSlab<MetaBool>(true, FactoryFlag()),
  };
  return instances[value ? 1 : 0];
}

std::string MetaBool::ToString() const { return value_ ? "true" : "false"; }

bool MetaBool::Init() {
  New();
  return true;
}

}  // namespace Kestrel::MetaObj
