// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ListCommand.h"

#include <memory>
#include <optional>

#include "plugins/host/frame/RowOrder.h"

namespace Kestrel::Host {

ListCommand::ListCommand(const char* description, const StructShape& (*shape)(), const char* result)
    : HostCommand(description), shape_(shape), result_(result) {}

void ListCommand::ShowColumns(const char* columns,
                              std::initializer_list<FormatParameter> parameters) {
  columns_ = columns;
  ShowAsTable(columns_, parameters);
}

void ListCommand::DeclareCommonParameters(CallSpec::InputSpec& spec) const {
  RowOrder::DeclareParameters(spec);
  if (shape_().HasSizes()) {
    Parameter("human", CallSpec::Flag, "Show sizes in IEC units, such as 1.5 GiB.").AddTo(spec);
  }
}

std::string ListCommand::GetColumns(const CallSpec::Input& /*input*/) const { return columns_; }

void ListCommand::ChooseFormat(const CallSpec::Input& input) {
  const std::string columns = GetColumns(input);
  const bool isForPeople = shape_().HasSizes() && input.IsFlagSet("human");
  SetDefaultOutputParameter("fields", isForPeople ? shape_().ForPeople(columns) : columns);
}

void ListCommand::DeclareResult(CallSpec::OutputSpec& spec) const {
  shape_().DeclareList(spec, result_);
}

void ListCommand::Run(const CallSpec::Input& input, CallSpec::Output& output) const {
  const std::optional<RowOrder> order = RowOrder::Read(input, shape_(), output);
  if (!order.has_value()) {
    return;
  }
  const std::shared_ptr<MetaObj::MetaList> rows = shape_().NewList();
  AddRows(input, output, *rows);
  if (!output.HasError()) {
    output.SetRootObject(order->Apply(rows));
  }
}

}  // namespace Kestrel::Host
