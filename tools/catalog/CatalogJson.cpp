// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// For each struct of Catalog.h, a `Form` lists the members once; a writer and a reader process that
// list. The reader sets the members in the order of the list, so a later member may depend on an
// earlier one.

#include "tools/catalog/CatalogJson.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "kestrel/KestrelException.h"
#include "tools/catalog/CatalogWords.h"

namespace Kestrel::Catalog {

using CallSpec::ParameterConstraintType;
using CallSpec::ParameterType;
using Json = nlohmann::json;

namespace {

constexpr std::int64_t kFormat = 1;
constexpr int kIndent = 2;

template <typename Structure>
struct Form;

template <>
struct Form<Field> {
  template <typename Visit, typename Structure>
  static void List(Visit& visit, Structure& field) {
    visit("path", field.path);
    visit("kind", field.kind);
    visit("typeName", field.typeName);
    visit("documentation", field.documentation);
  }
};

template <>
struct Form<Result> {
  template <typename Visit, typename Structure>
  static void List(Visit& visit, Structure& result) {
    visit.Optional("kind", result.kind);
    visit("typeName", result.typeName);
    visit("description", result.description);
    visit("fields", result.fields);
  }
};

template <>
struct Form<AllowedValue> {
  template <typename Visit, typename Structure>
  static void List(Visit& visit, Structure& allowed) {
    visit("value", allowed.value);
    visit("description", allowed.description);
  }
};

template <>
struct Form<Constraint> {
  template <typename Visit, typename Structure>
  static void List(Visit& visit, Structure& constraint) {
    visit("type", constraint.type);
    switch (constraint.type) {
      case CallSpec::NoConstraint:
        return;
      case CallSpec::IntRange:
        visit("minimum", constraint.minimum);
        visit("maximum", constraint.maximum);
        break;
      case CallSpec::IntEnum:
        visit("integers", constraint.integers);
        break;
      case CallSpec::StringEnum:
        visit("strings", constraint.strings);
        break;
      case CallSpec::StringRegex:
        visit("expression", constraint.expression);
        break;
    }
    visit("text", constraint.text);
  }
};

template <>
struct Form<Parameter> {
  template <typename Visit, typename Structure>
  static void List(Visit& visit, Structure& parameter) {
    visit("name", parameter.name);
    visit("shortName", parameter.shortName);
    visit("kind", parameter.kind);
    visit("description", parameter.description);
    visit("required", parameter.required);
    visit("secret", parameter.secret);
    visit("multiple", parameter.multiple);
    visit("constraint", parameter.constraint);
  }
};

template <>
struct Form<Example> {
  template <typename Visit, typename Structure>
  static void List(Visit& visit, Structure& example) {
    visit("arguments", example.arguments);
    visit("description", example.description);
  }
};

template <>
struct Form<Command> {
  template <typename Visit, typename Structure>
  static void List(Visit& visit, Structure& command) {
    visit("path", command.path);
    visit("plugin", command.plugin);
    visit("description", command.description);
    visit("examples", command.examples);
    visit("metaData", command.metaData);
    visit("formatter", command.formatter);
    visit("formatParameters", command.formatParameters);
    visit("parameters", command.parameters);
    visit("result", command.result);
  }
};

template <>
struct Form<Namespace> {
  template <typename Visit, typename Structure>
  static void List(Visit& visit, Structure& node) {
    visit("path", node.path);
    visit("description", node.description);
    visit("plugins", node.plugins);
  }
};

template <>
struct Form<Fault> {
  template <typename Visit, typename Structure>
  static void List(Visit& visit, Structure& fault) {
    visit("path", fault.path);
    visit("plugin", fault.plugin);
    visit("text", fault.text);
  }
};

template <>
struct Form<Tree> {
  template <typename Visit, typename Structure>
  static void List(Visit& visit, Structure& tree) {
    visit("namespaces", tree.namespaces);
    visit("commands", tree.commands);
    visit("faults", tree.faults);
  }
};

class Writer {
 public:
  template <typename Value>
  void operator()(const char* key, const Value& value) {
    object[key] = ToJson(value);
  }

  template <typename Value>
  void Optional(const char* key, const std::optional<Value>& value) {
    if (value.has_value()) {
      (*this)(key, *value);
    }
  }

  Json object = Json::object();

 private:
  static Json ToJson(bool value) { return value; }
  static Json ToJson(std::int64_t value) { return value; }
  static Json ToJson(const std::string& value) { return value; }
  static Json ToJson(const std::map<std::string, std::string>& value) {
    return value.empty() ? Json::object() : Json(value);
  }
  static Json ToJson(ParameterType value) { return WordOf(value); }
  static Json ToJson(ParameterConstraintType value) { return WordOf(value); }
  static Json ToJson(const ValueKind& value) { return WordOf(value); }

  template <typename Element>
  static Json ToJson(const std::vector<Element>& values) {
    Json array = Json::array();
    for (const Element& value : values) {
      array.push_back(ToJson(value));
    }
    return array;
  }

  template <typename Structure>
  static Json ToJson(const Structure& structure) {
    Writer writer;
    Form<Structure>::List(writer, structure);
    return std::move(writer.object);
  }
};

/// Thrown for a wrong value. Each `ReadAt` that it passes through puts a key or an index before
/// `place`.
struct Mismatch {
  std::string place;
  std::string expected;
};

void Require(bool isSo, const char* expected) {
  if (!isSo) {
    throw Mismatch{"", expected};
  }
}

template <typename Read>
void ReadAt(const std::string& place, Read read) {
  try {
    read();
  } catch (Mismatch& mismatch) {
    mismatch.place = "/" + place + mismatch.place;
    throw;
  }
}

class Reader {
 public:
  /// Throws if the value is not an object.
  explicit Reader(const Json& object) : object_(object) {
    Require(object.is_object(), "an object");
  }

  template <typename Value>
  void operator()(const char* key, Value& value) {
    const auto found = object_.find(key);
    ReadAt(key, [&] {
      Require(found != object_.end(), "this key");
      FromJson(*found, value);
    });
    ++read_;
  }

  template <typename Value>
  void Optional(const char* key, std::optional<Value>& value) {
    if (object_.contains(key)) {
      (*this)(key, value.emplace());
    }
  }

  /// Throws if the object has keys that were not read.
  void Finish() const { Require(read_ == object_.size(), "no other keys"); }

 private:
  static void FromJson(const Json& json, bool& value) {
    Require(json.is_boolean(), "a boolean");
    value = json.get<bool>();
  }

  static void FromJson(const Json& json, std::int64_t& value) {
    constexpr auto kMax = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    Require(json.is_number_integer() &&
                (!json.is_number_unsigned() || json.get<std::uint64_t>() <= kMax),
            "an integer of 64 bits");
    value = json.get<std::int64_t>();
  }

  static void FromJson(const Json& json, std::string& value) {
    Require(json.is_string(), "a string");
    value = json.get<std::string>();
  }

  static void FromJson(const Json& json, std::map<std::string, std::string>& value) {
    Require(json.is_object(), "an object");
    for (const auto& [key, text] : json.items()) {
      ReadAt(key, [&, &name = key, &content = text] { FromJson(content, value[name]); });
    }
  }

  static void FromJson(const Json& json, ParameterType& value) {
    ReadWord(json, ParameterKindOf, value);
  }

  static void FromJson(const Json& json, ParameterConstraintType& value) {
    ReadWord(json, ConstraintTypeOf, value);
  }

  static void FromJson(const Json& json, ValueKind& value) { ReadWord(json, ValueKindOf, value); }

  template <typename Kind>
  static void ReadWord(const Json& json, std::optional<Kind> (*kindOf)(std::string_view),
                       Kind& value) {
    std::string word;
    FromJson(json, word);
    const std::optional<Kind> kind = kindOf(word);
    Require(kind.has_value(), "the word of a kind");
    value = *kind;
  }

  template <typename Element>
  static void FromJson(const Json& json, std::vector<Element>& values) {
    Require(json.is_array(), "an array");
    values.resize(json.size());
    for (std::size_t index = 0; index < values.size(); ++index) {
      ReadAt(std::to_string(index), [&] { FromJson(json[index], values[index]); });
    }
  }

  template <typename Structure>
  static void FromJson(const Json& json, Structure& structure) {
    Reader reader(json);
    Form<Structure>::List(reader, structure);
    reader.Finish();
  }

  const Json& object_;
  std::size_t read_ = 0;
};

Json Parse(std::string_view text) {
  try {
    return Json::parse(text);
  } catch (const Json::exception& error) {
    throw KestrelException(std::string("The catalog is not JSON: ") + error.what());
  }
}

}  // namespace

std::string WriteJson(const Tree& tree) {
  Writer writer;
  writer("format", kFormat);
  Form<Tree>::List(writer, tree);
  try {
    return writer.object.dump(kIndent) + "\n";
  } catch (const Json::exception& error) {
    throw KestrelException(std::string("The catalog cannot be written: ") + error.what());
  }
}

Tree ReadJson(std::string_view text) {
  const Json json = Parse(text);
  try {
    Reader reader(json);
    std::int64_t format = 0;
    reader("format", format);
    Require(format == kFormat, "the format 1");
    Tree tree;
    Form<Tree>::List(reader, tree);
    reader.Finish();
    return tree;
  } catch (const Mismatch& mismatch) {
    throw KestrelException("The catalog cannot be read: expected " + mismatch.expected + " at '" +
                           mismatch.place + "'");
  }
}

}  // namespace Kestrel::Catalog
