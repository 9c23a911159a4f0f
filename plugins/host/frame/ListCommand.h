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
/// Every such command has the parameters "sort", "descending" and "limit", and also "human" if its
/// shape has sizes. A wrong value of one of these is reported before any row is made. A concrete
/// command declares its other parameters and makes the rows. A call with an error message has no
/// result.
class ListCommand : public HostCommand {
 protected:
  /// `shape` is called when the parameters or the result are first requested, not before; `result`
  /// describes the list.
  ListCommand(const char* description, const StructShape& (*shape)(), const char* result);

  /// Shows the rows as a table with these columns, a list separated by commas. With "human", the
  /// text of a size replaces its number of bytes in the table; the result contains both in any
  /// case.
  void ShowColumns(const char* columns, std::initializer_list<FormatParameter> parameters = {});

  /// Returns the columns that a call with `input` shows unless the user chooses others. Unless
  /// overridden, these are the columns of ShowColumns.
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
