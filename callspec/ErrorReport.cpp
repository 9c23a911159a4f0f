// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "callspec/ErrorReport.h"

#include <utility>

#include "kestrel/KestrelException.h"

namespace Kestrel::CallSpec {

void ReportError(const std::shared_ptr<Output>& output, std::string&& message) {
  if (!output) {
    throw KestrelException("Null output passed to Validate");
  }
  output->AddErrorMessage(std::move(message));
}

}  // namespace Kestrel::CallSpec
