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

/// The output of one call: its root value, its error messages, and its type.
///
/// The caller makes an empty output; the command fills it; then it is validated, printed and
/// destroyed. No operation fails. An output belongs to one thread.
class KESTREL_API Output {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// The type of an output. The numbers never change; every value except 0 marks something other
  /// than an ordinary result.
  enum OutputType : std::int32_t {
    Ordinary = 0,  ///< The result of a command.
    Help = 2       ///< The help structure of a command.
  };

  /// Makes an ordinary output without a root value and without errors.
  static std::shared_ptr<Output> New();

  /// For `New` only; no other caller can make the flag.
  explicit Output(FactoryFlag flag);
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  virtual ~Output();

  /// Sets the root value to `root`, which is shared, not copied. Null clears it.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaObject>& root);
  /// As above.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaBool>& root);
  /// As above.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaInt>& root);
  /// As above.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaString>& root);
  /// As above.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaList>& root);
  /// As above.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaStruct>& root);
  /// Clears the root value.
  void SetRootObject(std::nullptr_t root);

  /// The root value, null while none is set.
  std::shared_ptr<MetaObj::MetaObject> GetRootObject() const;

  /// Appends a message; the empty string is a message too.
  void AddErrorMessage(const std::string& message);
  /// As above; null counts as the empty string.
  void AddErrorMessage(const char* message);
  /// As above; moves the message.
  void AddErrorMessage(std::string&& message);

  /// Whether at least one message was added.
  bool HasError() const;

  /// The messages in the order in which they were added. The reference is valid as long as this
  /// object exists, and shows later additions.
  const std::vector<std::string>& GetErrors() const;

  /// Sets the type of this output; any value is accepted.
  void SetOutputType(Output::OutputType type);

  /// The type of this output, initially `Ordinary`.
  Output::OutputType GetOutputType() const;

 protected:
  Output();

 private:
  std::vector<std::string> errors_;
  std::shared_ptr<MetaObj::MetaObject> root_;
  OutputType type_;
};

}  // namespace Kestrel::CallSpec
