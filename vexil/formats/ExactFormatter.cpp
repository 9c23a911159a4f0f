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
void Print(const ExactFormat& format, const DeclaredResult& declared,
           const std::shared_ptr<MetaObject>& root, const FormatParameters& params,
           TextBuffer& text, std::vector<std::string>& errors) {
  const FormatOptions options = ReadFormatOptions(params, format.ownKey, errors);
  if (root == nullptr) {
    errors.emplace_back("The command returned nothing to print");
    return;
  }
  try {
    const Selection selection(root, declared, options, errors);
    if (errors.empty()) {
      format.print(selection, options, text);
    }
  } catch (const ValueFault& fault) {
    errors.push_back(LocateFault(fault, {}).message);
  } catch (const ResultFault& fault) {
    errors.push_back(fault.message);
  }
}

}  // namespace

ExactFormatter::ExactFormatter(const ExactFormat& format, DeclaredResult declared)
    : Formatter(format.name), format_(format), declared_(std::move(declared)) {}

ExactFormatter::~ExactFormatter() = default;

void ExactFormatter::Describe() {
  if (!params.empty()) {
    return;
  }
  description = format_.description;
  for (const FormatKey& key : kCommonKeys) {
    params.push_back({std::string(key.name), key.description});
  }
  if (format_.ownKey != nullptr) {
    params.push_back({std::string(format_.ownKey->name), format_.ownKey->description});
  }
}

void ExactFormatter::Format(const std::shared_ptr<CallSpec::Output>& output,
                            FormatParameters& parameters, AutoCli::DisplayContext& /*display*/,
                            std::ostream& out) {
  TextBuffer text;
  std::vector<std::string> errors;
  Print(format_, declared_, output->GetRootObject(), parameters, text, errors);
  for (const std::string& error : errors) {
    output->AddErrorMessage(error);
  }
  if (errors.empty()) {
    text.WriteTo(out);
  }
}

}  // namespace Kestrel::Formats
