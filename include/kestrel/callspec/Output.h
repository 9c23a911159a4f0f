// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaObject.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace Kestrel::CallSpec {

/// What one call produced: its root value, its error messages, and the kind of output it is.
///
/// Created empty by the caller, filled by the command, then validated, printed and dropped. None of
/// its operations fails. One thread uses it.
class KESTREL_API Output {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// The kind of an output; the numbers are fixed. Any value but 0 marks something other than an
  /// ordinary result.
  enum OutputType : std::int32_t {
    Ordinary = 0,  ///< The result of a command.
    Help = 2       ///< The help structure of a command.
  };

  /// Makes an ordinary output without root and without errors.
  static std::shared_ptr<Output> New();

  explicit Output(FactoryFlag flag);
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  virtual ~Output();

  /// Replaces the root value by `root`, which is shared, not copied. Null clears it.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaObject>& root);
  /// As the form for any value.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaBool>& root);
  /// As the form for any value.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaInt>& root);
  /// As the form for any value.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaString>& root);
  /// As the form for any value.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaList>& root);
  /// As the form for any value.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaStruct>& root);
  /// Clears the root value.
  void SetRootObject(std::nullptr_t root);

  /// A new owner of the root value, null while none is set.
  std::shared_ptr<MetaObj::MetaObject> GetRootObject() const;

  /// Appends one message; the empty text is a message too.
  void AddErrorMessage(const std::string& message);
  /// As above; null stands for the empty text.
  void AddErrorMessage(const char* message);
  /// As above; takes the text over.
  void AddErrorMessage(std::string&& message);

  /// Whether at least one message was added.
  bool HasError() const;

  /// The messages in the order added. The reference lives as long as this object and shows later
  /// additions.
  const std::vector<std::string>& GetErrors() const;

  /// Sets the kind of this output; any value is stored.
  void SetOutputType(Output::OutputType type);

  /// The kind of this output, `Ordinary` at first.
  Output::OutputType GetOutputType() const;

 protected:
  Output();

 private:
  std::vector<std::string> errors_;
  std::shared_ptr<MetaObj::MetaObject> root_;
  OutputType type_;
};

}  // namespace Kestrel::CallSpec
