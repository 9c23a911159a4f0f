// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/ExactFormatter.h"

#include <string>
#include <utility>
#include <vector>

#include "vexil/formats/Faults.h"

namespace Kestrel::Formats {

namespace {

using AutoCli::FormatParameters;
using MetaObj::MetaObject;

/// Prints `root` into `text`, or appends messages to `errors`.
void Print(const ExactFormat& format, const CallFacts& facts,
           const std::shared_ptr<MetaObject>& root, const FormatParameters& params,
           const Screen& screen, TextBuffer& text, std::vector<std::string>& errors) {
  FormatOptions options = ReadFormatOptions(params, format.ownKeys, errors);
  options.screen = screen;
  if (format.isForPrograms && facts.isChosen != nullptr && !facts.isChosen("fields")) {
    options.hasFields = false;  // those that a command sets are for people
  }
  if (root == nullptr) {
    errors.emplace_back("The command returned nothing to print");
    return;
  }
  try {
    const Selection selection(root, facts.declared, options, errors);
    if (errors.empty()) {
      format.print(selection, options, text);
    }
  } catch (const ValueFault& fault) {
    const ResultFault located = LocateFault(fault, {});
    errors.push_back(located.message);
  } catch (const ResultFault& fault) {
    errors.push_back(fault.message);
  }
}

}  // namespace

ExactFormatter::ExactFormatter(const ExactFormat& format, CallFacts facts)
    : Formatter(format.name), format_(format), facts_(std::move(facts)) {}

ExactFormatter::~ExactFormatter() = default;

void ExactFormatter::Describe() {
  if (!params.empty()) {
    return;
  }
  description = format_.description;
  for (const FormatKey& key : kCommonKeys) {
    params.push_back({std::string(key.name), key.description});
  }
  for (const FormatKey* key : format_.ownKeys) {
    if (key != nullptr) {
      params.push_back({std::string(key->name), key->description});
    }
  }
}

void ExactFormatter::Format(const std::shared_ptr<CallSpec::Output>& output,
                            FormatParameters& parameters, AutoCli::DisplayContext& display,
                            std::ostream& out) {
  TextBuffer text;
  std::vector<std::string> errors;
  const Screen screen = {display.width, &out == facts_.standardOutput};
  Print(format_, facts_, output->GetRootObject(), parameters, screen, text, errors);
  for (const std::string& error : errors) {
    output->AddErrorMessage(error);
  }
  if (errors.empty()) {
    text.WriteTo(out);
  }
}

}  // namespace Kestrel::Formats
