// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ValueList.h"

#include "plugins/host/frame/DataSource.h"

namespace Kestrel::Host {

std::shared_ptr<MetaObj::MetaList> OutsideTexts(const std::vector<std::string>& texts) {
  auto list = MetaObj::MetaList::New(MetaObj::MetaType::String);
  list->Reserve(texts.size());
  for (const std::string& text : texts) {
    list->Add(OutsideText(text));
  }
  return list;
}

}  // namespace Kestrel::Host
