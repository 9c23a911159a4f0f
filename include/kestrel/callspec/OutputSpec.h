// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/callspec/Output.h"

namespace Kestrel::CallSpec {

/// The declared shape of a command's result: a sample value and a description.
///
/// It is built by the code that declares a command, and only read afterwards. A result must have
/// the same kind, fields and element kinds as the sample. The values and list elements of the
/// sample do not matter.
class KESTREL_API OutputSpec {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes a declaration without a sample and without a description.
  static std::shared_ptr<OutputSpec> New();

  /// For `New` only; no other caller can make the flag.
  explicit OutputSpec(FactoryFlag flag);
  OutputSpec(const OutputSpec&) = delete;
  OutputSpec& operator=(const OutputSpec&) = delete;
  ~OutputSpec();

  /// Sets the sample value to `root`, which is moved. Throws KestrelException when `root` is null;
  /// the earlier sample is kept then.
  void SetRootObject(std::shared_ptr<MetaObj::MetaObject>&& root);
  /// As above; shares `root`.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaObject>& root);
  /// As above; shares `root`.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaBool>& root);
  /// As above; shares `root`.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaInt>& root);
  /// As above; shares `root`.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaString>& root);
  /// As above; shares `root`.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaList>& root);
  /// As above; shares `root`.
  void SetRootObject(const std::shared_ptr<MetaObj::MetaStruct>& root);
  /// Always throws KestrelException, as for every null value.
  void SetRootObject(std::nullptr_t root);

  /// The sample value, null while none is set.
  std::shared_ptr<MetaObj::MetaObject> GetRootObject() const;

  /// Sets the description.
  void SetDescription(const std::string& description);

  /// The description, or "Documentation missing" while it is empty. The reference is valid as long
  /// as this object exists.
  const std::string& GetDescription() const;

  /// Whether the root value of `output` has the declared shape; false when there is no sample or no
  /// root value.
  ///
  /// If not, messages that describe the mismatch are appended to `errors` unless that is null.
  /// Messages may also be appended when the result is true, for example if a structure has another
  /// type name. Throws KestrelException when there is a sample and `output` is null.
  bool Validate(const std::shared_ptr<Output>& output, std::vector<std::string>* errors) const;

  /// What GetDescription returns for an empty description: "Documentation missing".
  static const std::string _docMissingStaticString;

 private:
  std::shared_ptr<MetaObj::MetaObject> root_;
  std::string description_;
};

}  // namespace Kestrel::CallSpec
