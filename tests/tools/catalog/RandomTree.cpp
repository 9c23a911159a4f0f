// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "RandomTree.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Kestrel::Catalog {

using MetaObj::MetaType;
using Testing::Random;

namespace {

// Ordinary characters, characters that JSON escapes, the first and last characters of each UTF-8
// length, and some that programs often handle incorrectly.
const std::vector<std::string> kCharacters = {"a",
                                              "Z",
                                              "7",
                                              " ",
                                              ".",
                                              "%",
                                              "\"",
                                              "\\",
                                              "/",
                                              "\n",
                                              "\t",
                                              "\r",
                                              "\b",
                                              "\f",
                                              "\x1b",
                                              "\x01",
                                              "\x7f",
                                              std::string(1, '\0'),
                                              "\xc2\x80",
                                              "\xdf\xbf",
                                              "\xe0\xa0\x80",
                                              "\xef\xbf\xbf",
                                              "\xed\x9f\xbf",
                                              "\xf0\x90\x80\x80",
                                              "\xf4\x8f\xbf\xbf",
                                              "\xe2\x80\xa8",
                                              "\xef\xbb\xbf",
                                              "\xe2\x80\xae"};

std::string MakeText(Random& random) {
  std::string text;
  for (std::size_t length = random.Below(9); length > 0; --length) {
    text += random.Pick(kCharacters);
  }
  return text;
}

template <typename Make>
auto MakeList(Random& random, Make make) {
  std::vector<decltype(make(random))> list;
  for (std::size_t length = random.Below(4); length > 0; --length) {
    list.push_back(make(random));
  }
  return list;
}

std::map<std::string, std::string> MakeTexts(Random& random) {
  std::map<std::string, std::string> texts;
  for (std::size_t length = random.Below(4); length > 0; --length) {
    texts[MakeText(random)] = MakeText(random);
  }
  return texts;
}

std::int64_t MakeInteger(Random& random) {
  constexpr std::int64_t kEdges[] = {std::numeric_limits<std::int64_t>::min(), -1, 0, 1,
                                     std::numeric_limits<std::int64_t>::max()};
  return random.Pick(kEdges);
}

ValueKind MakeKind(Random& random) {
  constexpr MetaType kTypes[] = {MetaType::Int, MetaType::Bool, MetaType::String, MetaType::Struct};
  return {random.Pick(kTypes), random.Chance(50)};
}

Field MakeField(Random& random) {
  return {MakeText(random), MakeKind(random), MakeText(random), MakeText(random)};
}

Result MakeResult(Random& random) {
  Result result;
  if (random.Chance(80)) {
    result.kind = MakeKind(random);
  }
  result.typeName = MakeText(random);
  result.description = MakeText(random);
  result.fields = MakeList(random, MakeField);
  return result;
}

AllowedValue MakeAllowedValue(Random& random) { return {MakeText(random), MakeText(random)}; }

Constraint MakeConstraint(Random& random) {
  Constraint constraint;
  constraint.type =
      static_cast<CallSpec::ParameterConstraintType>(random.Below(CallSpec::StringRegex + 1));
  constraint.text = constraint.type == CallSpec::NoConstraint ? "" : MakeText(random);
  switch (constraint.type) {
    case CallSpec::NoConstraint:
      break;
    case CallSpec::IntRange:
      constraint.minimum = MakeInteger(random);
      constraint.maximum = MakeInteger(random);
      break;
    case CallSpec::IntEnum:
      constraint.integers = MakeList(random, MakeInteger);
      break;
    case CallSpec::StringEnum:
      constraint.strings = MakeList(random, MakeAllowedValue);
      break;
    case CallSpec::StringRegex:
      constraint.expression = MakeText(random);
      break;
  }
  return constraint;
}

Parameter MakeParameter(Random& random) {
  const auto kind = static_cast<CallSpec::ParameterType>(random.Below(CallSpec::BoolList + 1));
  return {MakeText(random),  MakeText(random),      kind,
          MakeText(random),  random.Chance(50),     random.Chance(50),
          random.Chance(50), MakeConstraint(random)};
}

Example MakeExample(Random& random) { return {MakeText(random), MakeText(random)}; }

Command MakeCommand(Random& random) {
  Command command;
  command.path = MakeText(random);
  command.plugin = MakeText(random);
  command.description = MakeText(random);
  command.examples = MakeList(random, MakeExample);
  command.metaData = MakeTexts(random);
  command.formatter = MakeText(random);
  command.formatParameters = MakeTexts(random);
  command.parameters = MakeList(random, MakeParameter);
  command.result = MakeResult(random);
  return command;
}

Namespace MakeNamespace(Random& random) {
  return {MakeText(random), MakeText(random), MakeList(random, MakeText)};
}

Fault MakeFault(Random& random) { return {MakeText(random), MakeText(random), MakeText(random)}; }

/// Sorts the elements by path. Of several with equal paths, keeps only the first.
template <typename Element>
std::vector<Element> InOrder(std::vector<Element> elements) {
  std::map<std::string, Element> byPath;
  for (Element& element : elements) {
    byPath.emplace(element.path, std::move(element));
  }
  elements.clear();
  for (auto& [path, element] : byPath) {
    elements.push_back(std::move(element));
  }
  return elements;
}

/// One change for each member of a tree and of its elements, except the types of constraints.
class Changes {
 public:
  explicit Changes(Tree& tree) {
    Add(tree.namespaces);
    Add(tree.commands);
    Add(tree.faults);
  }

  void MakeOne(Random& random) const { random.Pick(changes_)(); }

 private:
  template <typename... Members>
  void AddAll(Members&... members) {
    (Add(members), ...);
  }

  void Add(std::string& text) {
    changes_.push_back([&text] { text += "x"; });
  }
  void Add(bool& truth) {
    changes_.push_back([&truth] { truth = !truth; });
  }
  void Add(std::int64_t& number) {
    changes_.push_back([&number] { number ^= 1; });
  }
  void Add(CallSpec::ParameterType& kind) {
    changes_.push_back(
        [&kind] { kind = kind == CallSpec::String ? CallSpec::Flag : CallSpec::String; });
  }
  void Add(MetaType& type) {
    changes_.push_back(
        [&type] { type = type == MetaType::String ? MetaType::Int : MetaType::String; });
  }
  void Add(std::optional<ValueKind>& kind) {
    changes_.push_back([&kind] {
      kind = kind.has_value() ? std::nullopt : std::optional<ValueKind>(ValueKind());
    });
  }
  void Add(std::map<std::string, std::string>& texts) {
    changes_.push_back([&texts] { texts["new key"] = ""; });
  }

  template <typename Element>
  void Add(std::vector<Element>& elements) {
    changes_.push_back([&elements] { elements.emplace_back(); });
    for (Element& element : elements) {
      Add(element);
    }
  }

  void Add(ValueKind& kind) { AddAll(kind.type, kind.isList); }
  void Add(Field& field) { AddAll(field.path, field.kind, field.typeName, field.documentation); }
  void Add(Result& result) {
    AddAll(result.kind, result.typeName, result.description, result.fields);
  }
  void Add(AllowedValue& value) { AddAll(value.value, value.description); }
  void Add(Constraint& constraint) {
    AddAll(constraint.minimum, constraint.maximum, constraint.integers, constraint.strings,
           constraint.expression, constraint.text);
  }
  void Add(Parameter& parameter) {
    AddAll(parameter.name, parameter.shortName, parameter.kind, parameter.description,
           parameter.required, parameter.secret, parameter.multiple, parameter.constraint);
  }
  void Add(Example& example) { AddAll(example.arguments, example.description); }
  void Add(Command& command) {
    AddAll(command.path, command.plugin, command.description, command.examples, command.metaData,
           command.formatter, command.formatParameters, command.parameters, command.result);
  }
  void Add(Namespace& node) { AddAll(node.path, node.description, node.plugins); }
  void Add(Fault& fault) { AddAll(fault.path, fault.plugin, fault.text); }

  std::vector<std::function<void()>> changes_;
};

}  // namespace

Tree MakeRandomTree(Random& random) {
  return {InOrder(MakeList(random, MakeNamespace)), InOrder(MakeList(random, MakeCommand)),
          InOrder(MakeList(random, MakeFault))};
}

Tree MakeChangedTree(const Tree& tree, Random& random) {
  Tree changed = tree;
  Changes(changed).MakeOne(random);
  return changed;
}

}  // namespace Kestrel::Catalog
