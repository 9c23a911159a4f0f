// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/FormatsPlugin.h"

#include <array>

#include "vexil/formats/ExactFormat.h"

namespace Kestrel::Formats {

using AutoCli::Formatter;

namespace {

constexpr std::array<const ExactFormat*, 7> kFormats = {
    &kCsvFormat, &kJsonUtf8Format, &kNdjsonFormat, &kPrettyFormat,
    &kTsvFormat, &kValueXmlFormat, &kYamlFormat};

}  // namespace

FormatsPlugin::FormatsPlugin(const CallFacts& facts) : name_("Formats") {
  formatters_.reserve(kFormats.size());
  for (const ExactFormat* format : kFormats) {
    // make_shared would add a call of strcmp to the tool. With immediate binding, the dynamic
    // linker looks up every called function of other libraries at each start.
    formatters_.push_back(std::shared_ptr<Formatter>(new ExactFormatter(*format, facts)));
  }
}

FormatsPlugin::~FormatsPlugin() = default;

void FormatsPlugin::Initialize() {}

const std::string& FormatsPlugin::GetName() const { return name_; }

void FormatsPlugin::RegisterNamespaces(std::shared_ptr<AutoCli::Namespace> /*root*/) {}

bool FormatsPlugin::HasFormatter(const std::string& name) { return GetFormatter(name) != nullptr; }

std::shared_ptr<Formatter> FormatsPlugin::GetFormatter(const std::string& name) {
  for (const std::shared_ptr<Formatter>& formatter : formatters_) {
    if (formatter->GetName() == name) {
      static_cast<ExactFormatter&>(*formatter).Describe();
      return formatter;
    }
  }
  return nullptr;
}

const std::vector<std::shared_ptr<Formatter>>& FormatsPlugin::GetFormatters() {
  return formatters_;
}

}  // namespace Kestrel::Formats
