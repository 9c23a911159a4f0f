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
/// Built once, when its command is registered, and only read afterwards. The sample's kind,
/// structure fields and element kinds are what a result must have; its values and list elements
/// mean nothing.
class KESTREL_API OutputSpec {
  struct FactoryFlag {  // private, so only New can construct
    explicit FactoryFlag() = default;
  };

 public:
  /// Makes a declaration without root and without description.
  static std::shared_ptr<OutputSpec> New();

  explicit OutputSpec(FactoryFlag flag);
  OutputSpec(const OutputSpec&) = delete;
  OutputSpec& operator=(const OutputSpec&) = delete;
  ~OutputSpec();

  /// Takes over `root` as the sample value. Throws KestrelException on null, and then keeps the
  /// sample that it had.
  void SetRootObject(std::shared_ptr<MetaObj::MetaObject>&& root);
  /// Shares `root` as the sample value, with the same rule for null.
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
  /// Throws KestrelException, as every null does.
  void SetRootObject(std::nullptr_t root);

  /// A new owner of the sample value, null while none is set.
  std::shared_ptr<MetaObj::MetaObject> GetRootObject() const;

  /// Replaces the description.
  void SetDescription(const std::string& description);

  /// The description, or "Documentation missing" while it is empty. The reference lives as long as
  /// this object.
  const std::string& GetDescription() const;

  /// Whether the root value of `output` has the declared shape.
  ///
  /// A mismatch throws nothing: it returns false, and one message per problem is appended to
  /// `errors` unless that is null. A success may append messages too, as about another type name
  /// of a structure. Throws KestrelException when `output` is null.
  bool Validate(const std::shared_ptr<Output>& output, std::vector<std::string>* errors) const;

  /// The text that stands for an empty description.
  static const std::string _docMissingStaticString;

 private:
  std::shared_ptr<MetaObj::MetaObject> root_;
  std::string description_;
};

}  // namespace Kestrel::CallSpec
