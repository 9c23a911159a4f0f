// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "support/BrokenDescriptors.h"

#include <string>

namespace Kestrel::Testing {

namespace {

const std::string kUnparsable = "Unable to parse XML descriptor: @";
const std::string kVersion = "Unknown vexil extention version.  Valid versions are: '1.0.0'";
const std::string kNamespace =
    "Unable to register a namespace without valid 'path' attribute or <description> being present.";
const std::string kNoPath =
    "Invalid command specification found.  <command> tags must have a non-empty 'path' attribute";
const std::string kCommand = "Unable to register the command 'vexil disk.show'  Error was ";
const std::string kNoExecute =
    kCommand +
    "Missing or empty <execute> tag.  This tag must specify a valid execution string for this "
    "command.";
const std::string kType =
    kCommand +
    "Unable to parse Input Parameter size. Missing or invalid required attribute: 'type'.  Must be "
    "one of [string, string-list, bool, bool-list, int, int-list]";
const std::string kParameter = kCommand + "Unable to parse Input Paramter size";
const std::string kRequired =
    kParameter + ". Missing or invalid 'required', must be one of ['true', 'false']";
const std::string kConstraint =
    kCommand + "Unable to build parameter constraint for parameter size.  Error was: ";
const std::string kNoData =
    kConstraint +
    "Error parsing parameter constraint.  There was no data included inside the <constraint> tag "
    "for the given constraint type";
const std::string kRange =
    kConstraint +
    "Error parsing 'range' parameter constraint.  Range requires both 'min' and 'max' attributes "
    "and that both are integers.";
const std::string kOutput = kCommand + "Unable to build output spec.  Error was ";

std::string Twice(const std::string& tag) {
  return "Illegal Duplicate tags found.  The tag " + tag +
         " was expected only once, but was found multiple times.";
}

std::string Several(const std::string& name) {
  return "More than one instance of " + name + " found, expected only one.";
}

}  // namespace

const std::vector<BrokenDescriptor>& GetBrokenDescriptors() {
  static const std::vector<BrokenDescriptor> descriptors = {
      // Files that are not XML documents.
      {"empty", kUnparsable},
      {"spaces", kUnparsable},
      {"plain-text", kUnparsable},
      {"binary", kUnparsable},
      {"truncated-in-a-tag", kUnparsable},
      {"truncated-in-a-text", kUnparsable},
      {"truncated-before-the-end", kUnparsable},
      {"two-roots", kUnparsable},
      {"text-after-the-root", kUnparsable},
      {"nul-byte", kUnparsable},
      {"undeclared-entity", kUnparsable},
      {"attribute-twice", kUnparsable},
      // Files in an unknown encoding, or not in the declared one (UTF-8 by default).
      {"latin-1-without-a-declaration", kUnparsable},
      {"unknown-encoding", kUnparsable},
      {"utf-16-without-a-mark", kUnparsable},
      {"utf-16-said-of-utf-8", kUnparsable},
      // The root.
      {"no-version", kVersion},
      {"version-as-attribute", kVersion},
      {"other-version", kVersion},
      {"version-in-spaces", kVersion},
      {"version-with-a-comment", kVersion},
      {"version-twice", Twice("version")},
      {"nothing-to-register", "Unable to find any namespaces or commands to register for plugin @"},
      {"namespaces-twice", Several("namespaces")},
      {"commands-twice", Several("commands")},
      // A namespace.
      {"namespace-without-path", kNamespace},
      {"namespace-without-description", kNamespace},
      {"namespace-with-empty-description", kNamespace},
      {"namespace-with-two-descriptions", Twice("description")},
      // A command and its parts.
      {"command-without-path", kNoPath},
      {"command-with-two-descriptions", kCommand + Twice("description")},
      {"no-input-spec",
       kCommand + "Unable to find <input-spec> element, which is required for a command."},
      {"no-output-spec",
       kCommand + "Unable to find <output-spec> element, which is required for a command."},
      {"no-format-parameters",
       kCommand + "Unable to find <format-parameters> element, which is required for a command."},
      {"no-execute", kNoExecute},
      {"empty-execute", kNoExecute},
      {"execute-hidden-by-a-comment", kNoExecute},
      {"execute-twice", kCommand + Twice("execute")},
      {"stdin-twice", kCommand + Twice("stdin")},
      {"meta-data-twice", kCommand + Several("meta-data")},
      {"input-spec-twice", kCommand + Several("input-spec")},
      {"output-spec-twice", kCommand + Several("output-spec")},
      {"format-parameters-twice", kCommand + Several("format-parameters")},
      {"meta-data-entry-without-name",
       kCommand + "Error parsing 'meta-data-entry', missing required attribute 'name'"},
      {"meta-data-with-another-element",
       kCommand + "Found unexpected tag while building meta-data set.  Unexpected tag was: entry"},
      {"formatter-twice", kCommand + "Invalid plugin format.  Duplicate <formatter> tags found"},
      // A parameter.
      {"parameter-without-name",
       kCommand + "Unable to parse Input Parameter.  Missing required attribute: 'name'"},
      {"parameter-without-type", kType},
      {"parameter-of-unknown-type", kType},
      {"parameter-without-required", kRequired},
      {"parameter-with-bad-required", kRequired},
      {"parameter-without-description", kParameter + ". Missing command description"},
      {"parameter-with-two-descriptions", kCommand + Twice("description")},
      {"parameter-with-bad-secret",
       kParameter + ". Invalid 'secret', must be one of ['true', 'false']"},
      {"secret-integer", kParameter + ". Invalid type int for secret, must be 'string'"},
      {"parameter-with-bad-name",
       kCommand + "Invalid Parameter name 'Size' parameter names can only contain lower-case "
                  "alphanumeric characters, numbers and '-'"},
      {"parameter-with-short-name-as-name",
       kCommand + "Parameter name must be at least 2 characters"},
      {"parameter-twice",
       kCommand + "Found a duplicate paramater specification for parameter named 'size'"},
      {"parameters-with-one-short-name",
       kCommand +
           "Invalid short name specified for --sort. The short name -s is already used for --size"},
      // A constraint.
      {"constraint-without-type", kConstraint + "Missing or invalid constraint 'type', must be one "
                                                "of [stringenum, intenum, regex, range] got ''"},
      {"constraint-of-unknown-type",
       kConstraint + "Missing or invalid constraint 'type', must be one of [stringenum, intenum, "
                     "regex, range] got 'enum'"},
      {"constraint-twice", kCommand + Several("constraint")},
      {"constraint-without-data", kNoData},
      {"constraint-with-data-of-another-type", kNoData},
      {"enum-twice", kConstraint + Several("enum")},
      {"enum-value-without-value",
       kConstraint + "Error parsing 'enum-value', missing required attribute 'value'"},
      {"enum-with-another-element",
       kConstraint + "Found unexpected tag while building an enum.  Unexpected tag was: value"},
      {"enum-value-twice",
       kConstraint + "Duplicate Value found in ParameterConstraint::AddStringEnum: a"},
      {"integer-enum-of-words",
       kConstraint + "Error parsing integer enumeration. Expected integer, but got one"},
      {"integer-enum-too-large",
       kConstraint +
           "Error parsing integer enumeration. Expected integer, but got 9223372036854775808"},
      {"integer-enum-twice",
       kConstraint + "Duplicate Value found in ParameterConstraint::AddIntEnum"},
      {"empty-regex",
       kConstraint + "Error parsing regex from parameter constraint.Missing or empty 'regex' tag"},
      {"range-without-minimum", kRange},
      {"range-without-maximum", kRange},
      {"range-of-words", kRange},
      {"range-upside-down",
       kConstraint +
           "Invalid values for SetIntRange, constraints must have a min value <= max value"},
      {"constraint-that-does-not-fit",
       kCommand + "Invalid constraint specified for parameter size.  The parameter constraint "
                  "specified is not allowed for a parameter of this type."},
      // A declared result.
      {"output-spec-with-two-values",
       kCommand + "Found more than one node under 'output-spec', where only one node is supported. "
                  " The tag was int"},
      {"output-spec-of-unknown-kind",
       kOutput + "Unable to make a MetaObject from a node with tag 'integer'"},
      {"output-spec-with-bad-list",
       kOutput +
           "Invalid list type attribute.  Must be one of [string, int, bool, structure, list]"},
      {"output-spec-with-list-of-lists", kOutput + "Struct type expected for list."},
      {"output-spec-with-nameless-field",
       kOutput + "Invalid <field> tag found.  <field> requires a 'name' attribute."},
      {"output-spec-with-nameless-structure", kOutput + "Invalid name specified for MetaStruct: "},
      // Two faults; the first one in the fixed order is reported.
      {"two-faults-version-and-namespaces", kVersion},
      {"two-faults-namespace-and-commands", kNamespace},
      {"two-faults-path-and-parts", kNoPath},
      {"two-faults-meta-data-and-input-spec",
       kCommand + "Found unexpected tag while building meta-data set.  Unexpected tag was: x"},
      {"two-faults-input-spec-and-output-spec",
       kCommand + "Unable to find <input-spec> element, which is required for a command."},
      {"two-faults-output-spec-and-format",
       kCommand + "Unable to find <output-spec> element, which is required for a command."},
      {"two-faults-format-and-execute",
       kCommand + "Unable to find <format-parameters> element, which is required for a command."},
      {"two-faults-execute-and-stdin", kNoExecute},
      {"two-faults-name-and-type",
       kCommand + "Unable to parse Input Parameter.  Missing required attribute: 'name'"},
      {"two-faults-type-and-required", kType},
      {"two-faults-required-and-description", kRequired},
      {"two-faults-description-and-secret", kParameter + ". Missing command description"},
      {"two-faults-secret-and-constraint",
       kParameter + ". Invalid 'secret', must be one of ['true', 'false']"},
  };
  return descriptors;
}

std::string GetBrokenDescriptorFolder() { return KESTREL_DATA_DIR "/descriptors/broken"; }

}  // namespace Kestrel::Testing
