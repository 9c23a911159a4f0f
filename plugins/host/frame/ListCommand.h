// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <initializer_list>
#include <string>

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/StructShape.h"

namespace Kestrel::Host {

/// A command whose result is a list of structures of one shape.
///
/// Every such command has the parameters "sort", "descending" and "limit", and "human" when its
/// shape has sizes. A wrong one is an error before any row is made. A concrete command declares its
/// other parameters and makes rows; an error message ends the call without a result.
class ListCommand : public HostCommand {
 protected:
  /// `shape` is asked for when the command is called, not before; `result` describes the list.
  ListCommand(const char* description, const StructShape& (*shape)(), const char* result);

  /// Shows the rows as a table with those columns, a list separated by commas. With "human" the
  /// bytes of a size give way to its text for people; programs get both in any case.
  void ShowColumns(const char* columns, std::initializer_list<FormatParameter> parameters = {});

  /// The columns that a call with `input` shows unless the user chooses others; those of
  /// ShowColumns unless overridden.
  virtual std::string GetColumns(const CallSpec::Input& input) const;

 private:
  /// Adds the rows to `rows`, or an error message to `output`.
  virtual void AddRows(const CallSpec::Input& input, CallSpec::Output& output,
                       MetaObj::MetaList& rows) const = 0;

  void DeclareCommonParameters(CallSpec::InputSpec& spec) const final;
  void ChooseFormat(const CallSpec::Input& input) final;
  void DeclareResult(CallSpec::OutputSpec& spec) const final;
  void Run(const CallSpec::Input& input, CallSpec::Output& output) const final;

  const StructShape& (*const shape_)();
  const char* const result_;
  std::string columns_;
};

}  // namespace Kestrel::Host
