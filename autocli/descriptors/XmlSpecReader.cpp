// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The functions of XmlPlugin.h that read one element of a descriptor each.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "autocli/descriptors/XmlNode.h"
#include "autocli/text/LeadingInteger.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/XmlPlugin.h"
#include "kestrel/autocli/XmlUtil.h"

namespace Kestrel::AutoCli {

using CallSpec::InputSpec;
using CallSpec::OutputSpec;
using CallSpec::ParameterConstraint;
using CallSpec::ParameterConstraintType;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;

namespace {

/// An element whose children are all of one name.
struct EntrySet {
  const char* name;  // in messages
  const char* entry;
  const char* attribute;  // of each entry, required
};

constexpr EntrySet kMetaData = {"meta-data set", "meta-data-entry", "name"};
constexpr EntrySet kEnum = {"an enum", "enum-value", "value"};

/// Calls `handle` with each entry and the value of its required attribute, in document order.
template <typename Handler>
void ForEachEntry(const xmlNode* node, const EntrySet& set, Handler handle) {
  for (const xmlNode* child : XmlChildren(node)) {
    if (IsTextOrComment(child)) {
      continue;
    }
    if (!IsNamed(child, set.entry)) {
      throw KestrelException(std::string("Found unexpected tag while building ") + set.name +
                             ".  Unexpected tag was: " + NameOf(child));
    }
    std::string value = XmlUtil_ExtractAttribute(child, set.attribute);
    if (value.empty()) {
      throw KestrelException(std::string("Error parsing '") + set.entry +
                             "', missing required attribute '" + set.attribute + "'");
    }
    handle(child, std::move(value));
  }
}

struct ParameterTypeWord {
  std::string_view word;
  ParameterType type;
};

constexpr ParameterTypeWord kParameterTypes[] = {
    {"string", ParameterType::String}, {"string-list", ParameterType::StringList},
    {"bool", ParameterType::Bool},     {"bool-list", ParameterType::BoolList},
    {"int", ParameterType::Int},       {"int-list", ParameterType::IntList},
    {"flag", ParameterType::Flag},
};

/// Returns the entry for `word`; null when it names no type.
const ParameterTypeWord* FindParameterType(std::string_view word) {
  for (const ParameterTypeWord& entry : kParameterTypes) {
    if (word == entry.word) {
      return &entry;
    }
  }
  return nullptr;
}

bool IsBooleanWord(std::string_view word) { return word == "true" || word == "false"; }

/// The attributes and the description of a `parameter` element, unchecked.
struct ParameterElement {
  explicit ParameterElement(const xmlNode* node)
      : name(XmlUtil_ExtractAttribute(node, "name")),
        type(XmlUtil_ExtractAttribute(node, "type")),
        required(XmlUtil_ExtractAttribute(node, "required")),
        secret(XmlUtil_ExtractAttribute(node, "secret")),
        shortName(XmlUtil_ExtractAttribute(node, "shortname")),
        description(XmlUtil_GetContentForChildByTag(node, "description")) {
    if (secret.empty()) {
      secret = "false";
    }
  }

  std::string name;
  std::string type;
  std::string required;
  std::string secret;
  std::string shortName;
  std::string description;
};

void CheckParameter(const ParameterElement& parameter) {
  if (parameter.name.empty()) {
    throw KestrelException("Unable to parse Input Parameter.  Missing required attribute: 'name'");
  }
  if (FindParameterType(parameter.type) == nullptr) {
    throw KestrelException("Unable to parse Input Parameter " + parameter.name +
                           ". Missing or invalid required attribute: 'type'.  Must be one of "
                           "[string, string-list, bool, bool-list, int, int-list]");
  }
  // "Paramter" is deliberate: scripts match these messages.
  const auto refuse = [&parameter](const std::string& reason) {
    throw KestrelException("Unable to parse Input Paramter " + parameter.name + reason);
  };
  if (!IsBooleanWord(parameter.required)) {
    refuse(". Missing or invalid 'required', must be one of ['true', 'false']");
  }
  if (parameter.description.empty()) {
    refuse(". Missing command description");
  }
  if (!IsBooleanWord(parameter.secret)) {
    refuse(". Invalid 'secret', must be one of ['true', 'false']");
  }
  if (parameter.secret == "true" && parameter.type != "string") {
    refuse(". Invalid type " + parameter.type + " for secret, must be 'string'");
  }
}

void SetConstraint(const xmlNode* constraint, ParameterSpec& parameter) {
  std::shared_ptr<ParameterConstraint> built;
  try {
    built = ExtractParamConstraint(constraint);
  } catch (const KestrelException& error) {
    throw KestrelException("Unable to build parameter constraint for parameter " +
                           parameter.GetName() + ".  Error was: " + error.what());
  }
  parameter.SetConstraint(built);
}

std::shared_ptr<ParameterConstraint> MakeStringEnum(const xmlNode* node) {
  auto constraint = ParameterConstraint::New(ParameterConstraintType::StringEnum);
  for (const std::string& value : ExtractEnum(node)) {
    constraint->AddStringEnum(value);
  }
  return constraint;
}

std::shared_ptr<ParameterConstraint> MakeIntEnum(const xmlNode* node) {
  auto constraint = ParameterConstraint::New(ParameterConstraintType::IntEnum);
  for (const std::string& value : ExtractEnum(node)) {
    std::int64_t number = 0;
    if (!ReadLeadingInteger(value, number)) {
      throw KestrelException("Error parsing integer enumeration. Expected integer, but got " +
                             value);
    }
    constraint->AddIntEnum(number);
  }
  return constraint;
}

std::shared_ptr<ParameterConstraint> MakeRegex(const xmlNode* node) {
  const std::string expression = XmlUtil_GetContent(node);
  if (expression.empty()) {
    throw KestrelException(
        "Error parsing regex from parameter constraint.Missing or empty 'regex' tag");
  }
  auto constraint = ParameterConstraint::New(ParameterConstraintType::StringRegex);
  constraint->SetStringRegex(expression);
  return constraint;
}

std::shared_ptr<ParameterConstraint> MakeRange(const xmlNode* node) {
  std::int64_t minimum = 0;
  std::int64_t maximum = 0;
  if (!ReadLeadingInteger(XmlUtil_ExtractAttribute(node, "min"), minimum) ||
      !ReadLeadingInteger(XmlUtil_ExtractAttribute(node, "max"), maximum)) {
    throw KestrelException(
        "Error parsing 'range' parameter constraint.  Range requires both 'min' and 'max' "
        "attributes and that both are integers.");
  }
  auto constraint = ParameterConstraint::New(ParameterConstraintType::IntRange);
  constraint->SetIntRange(minimum, maximum);
  return constraint;
}

/// A type of constraint: its name, the child element with its data, and its factory.
struct ConstraintWord {
  std::string_view word;
  const char* childName;
  std::shared_ptr<ParameterConstraint> (*make)(const xmlNode*);
};

constexpr ConstraintWord kConstraints[] = {
    {"stringenum", "enum", MakeStringEnum},
    {"intenum", "enum", MakeIntEnum},
    {"regex", "regex", MakeRegex},
    {"range", "range", MakeRange},
};

const ConstraintWord& FindConstraint(const std::string& word) {
  for (const ConstraintWord& entry : kConstraints) {
    if (word == entry.word) {
      return entry;
    }
  }
  throw KestrelException(
      "Missing or invalid constraint 'type', must be one of [stringenum, intenum, regex, range] "
      "got '" +
      word + "'");
}

}  // namespace

void ExtractMetaData(const xmlNode* node, const std::shared_ptr<ExtensionCommand>& command) {
  ForEachEntry(node, kMetaData, [&command](const xmlNode* entry, const std::string& name) {
    command->AddMetaData(name, XmlUtil_GetContent(entry));
  });
}

void ExtractFormatParams(const xmlNode* node, const std::shared_ptr<ExtensionCommand>& command) {
  bool hasFormatter = false;
  for (const xmlNode* child : XmlChildren(node)) {
    if (IsNamed(child, "format-parameter")) {
      command->SetDefaultOutputParameter(XmlUtil_ExtractAttribute(child, "name"),
                                         XmlUtil_GetContent(child));
    } else if (IsNamed(child, "formatter")) {
      if (hasFormatter) {
        throw KestrelException("Invalid plugin format.  Duplicate <formatter> tags found");
      }
      hasFormatter = true;
      command->SetDefaultOutputFormatter(XmlUtil_GetContent(child));
    }
  }
}

std::shared_ptr<InputSpec> ExtractInputSpec(const xmlNode* node) {
  auto inputSpec = InputSpec::New();
  for (const xmlNode* child : XmlChildren(node)) {
    if (IsNamed(child, "parameter")) {
      ExtractInputParam(child, inputSpec);
    } else if (IsNamed(child, "context-supported")) {
      inputSpec->SetContextSupported(XmlUtil_GetContent(child));
    }
  }
  return inputSpec;
}

void ExtractInputParam(const xmlNode* node, const std::shared_ptr<InputSpec>& inputSpec) {
  ParameterElement element(node);
  CheckParameter(element);
  auto parameter =
      ParameterSpec::New(std::move(element.name), FindParameterType(element.type)->type);
  if (!element.shortName.empty()) {
    parameter->SetShortName(std::move(element.shortName));
  }
  parameter->SetDescription(std::move(element.description));
  parameter->SetRequired(element.required == "true");
  if (element.secret == "true") {
    parameter->SetSecret(true);
  }
  const xmlNode* constraint = XmlUtil_FindChildNode(node, "constraint");
  if (constraint != nullptr) {
    SetConstraint(constraint, *parameter);
  }
  inputSpec->AddParameter(parameter);
}

std::shared_ptr<ParameterConstraint> ExtractParamConstraint(const xmlNode* node) {
  const ConstraintWord& constraint = FindConstraint(XmlUtil_ExtractAttribute(node, "type"));
  const xmlNode* child = XmlUtil_FindChildNode(node, constraint.childName);
  if (child == nullptr) {
    throw KestrelException(
        "Error parsing parameter constraint.  There was no data included inside the <constraint> "
        "tag for the given constraint type");
  }
  return constraint.make(child);
}

std::vector<std::string> ExtractEnum(const xmlNode* node) {
  std::vector<std::string> values;
  ForEachEntry(node, kEnum, [&values](const xmlNode*, std::string value) {
    values.push_back(std::move(value));
  });
  return values;
}

std::shared_ptr<OutputSpec> ExtractOutputSpec(const xmlNode* node) {
  auto outputSpec = OutputSpec::New();
  for (const xmlNode* child : XmlChildren(node)) {
    if (IsTextOrComment(child)) {
      continue;
    }
    if (outputSpec->GetRootObject() != nullptr) {
      throw KestrelException(
          std::string("Found more than one node under 'output-spec', where only one node is "
                      "supported.  The tag was ") +
          NameOf(child));
    }
    try {
      outputSpec->SetRootObject(XmlUtil_BuildMetaObject(child));
    } catch (const KestrelException& error) {
      throw KestrelException(std::string("Unable to build output spec.  Error was ") +
                             error.what());
    }
  }
  return outputSpec;
}

}  // namespace Kestrel::AutoCli
