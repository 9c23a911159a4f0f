// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/fleet/rows/RowsPrint.h"

#include <kestrel/callspec/InputSpec.h>
#include <kestrel/callspec/OutputSpec.h>

#include <optional>

#include "plugins/host/frame/RowOrder.h"
#include "tools/fleet/rows/RowReader.h"

namespace Kestrel::Fleet {
namespace {

using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::Output;
using CallSpec::OutputSpec;

class RowsPrint final : public AutoCli::Command {
 public:
  explicit RowsPrint(std::istream& stream) : stream_(stream) {
    SetDescription("Print rows of many hosts, which are read from standard input.");
    AddMetaData("changes", "false");
    SetDefaultOutputFormatter("table");
  }

  std::shared_ptr<InputSpec> GetInputSpecInternal() override {
    auto spec = InputSpec::New();
    Host::RowOrder::DeclareParameters(*spec);
    return spec;
  }

  std::shared_ptr<OutputSpec> GetOutputSpecInternal() override {
    auto spec = OutputSpec::New();
    Reader().GetShape().DeclareList(*spec, "The rows, with the host of each in the first field.");
    return spec;
  }

  void ExecuteInternal(const std::shared_ptr<Input>& input,
                       const std::shared_ptr<Output>& output) override {
    const auto order = Host::RowOrder::Read(input != nullptr ? *input : *Input::New(),
                                            Reader().GetShape(), *output);
    if (order.has_value()) {
      output->SetRootObject(order->Apply(Reader().ReadRows()));
    }
  }

 private:
  RowReader& Reader() {
    if (!reader_.has_value()) {
      reader_.emplace(stream_);
    }
    return *reader_;
  }

  std::istream& stream_;
  std::optional<RowReader> reader_;
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewRowsPrint(std::istream& stream) {
  return std::make_shared<RowsPrint>(stream);
}

}  // namespace Kestrel::Fleet
