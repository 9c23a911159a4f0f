// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tools/lint/Checks.h"

namespace Kestrel::Lint {

namespace {

using Words = std::vector<std::string>;

/// What an element may contain. The root may have any name. What any other element may contain
/// depends on its name only, not on its parent.
struct Grammar {
  std::string_view parent;  // "" for the root, "*" for any other element
  std::string_view name;    // "*" for any
  Words attributes;
  Words children;
  bool hasContent;
  bool refusesOthers;  // the loader reports unknown children itself
};

const Words& ValueNames() {
  static const Words names = {"string", "int", "bool", "structure", "list"};
  return names;
}

const std::vector<Grammar>& GetGrammar() {
  static const std::vector<Grammar> grammar = {
      {"", "*", {}, {"version", "namespaces", "commands"}, false, false},
      {"*", "version", {}, {}, true, false},
      {"*", "namespaces", {}, {"namespace"}, false, false},
      {"*", "namespace", {"path"}, {"description"}, false, false},
      {"*", "commands", {}, {"command"}, false, false},
      {"*",
       "command",
       {"path"},
       {"description", "meta-data", "input-spec", "output-spec", "format-parameters", "execute",
        "stdin"},
       false,
       false},
      {"*", "description", {}, {}, true, false},
      {"*", "execute", {}, {}, true, false},
      {"*", "stdin", {}, {}, true, false},
      {"*", "meta-data", {}, {"meta-data-entry"}, false, true},
      {"*", "meta-data-entry", {"name"}, {}, true, false},
      {"*", "input-spec", {}, {"parameter", "context-supported"}, false, false},
      {"*", "context-supported", {}, {}, true, false},
      {"*",
       "parameter",
       {"name", "shortname", "type", "required", "secret"},
       {"description", "constraint"},
       false,
       false},
      {"*", "constraint", {"type"}, {"enum", "regex", "range"}, false, false},
      {"*", "enum", {}, {"enum-value"}, false, true},
      {"*", "enum-value", {"value"}, {}, false, false},
      {"*", "regex", {}, {}, true, false},
      {"*", "range", {"min", "max"}, {}, false, false},
      {"*", "output-spec", {}, ValueNames(), false, true},
      {"*", "structure", {"typeName"}, {"field"}, false, false},
      {"*", "field", {"name"}, ValueNames(), false, true},
      {"*", "list", {"type"}, ValueNames(), false, true},
      {"*", "string", {}, {}, true, false},
      {"*", "int", {}, {}, true, false},
      {"*", "bool", {}, {}, true, false},
      {"*", "format-parameters", {}, {"formatter", "format-parameter"}, false, false},
      {"*", "formatter", {}, {}, true, false},
      {"*", "format-parameter", {"name"}, {}, true, false},
  };
  return grammar;
}

const Grammar* FindGrammar(const Element& element) {
  for (const Grammar& grammar : GetGrammar()) {
    const bool isRoot = element.parent == nullptr;
    if (isRoot == grammar.parent.empty() && (isRoot || grammar.name == element.name)) {
      return &grammar;
    }
  }
  return nullptr;
}

bool Contains(const Words& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// Whether the loader reads `child`. In a constraint, it reads only the child that belongs to the
// type of the constraint.
bool LoaderReads(const Element& parent, const std::string& child) {
  const std::string& type = parent.Get("type");
  const bool isEnum = type == "stringenum" || type == "intenum";
  return parent.name != "constraint" || (isEnum ? "enum" : type) == child;
}

void CheckAttributes(const Element& element, const Grammar& grammar, FileReport& report) {
  for (const Attribute& attribute : element.attributes) {
    const bool hasPrefix = attribute.name.find(':') != std::string::npos;
    if (!hasPrefix && attribute.name != "xmlns" && !Contains(grammar.attributes, attribute.name)) {
      report.Add("attribute-unknown", element,
                 "the attribute '" + attribute.name + "' of '" + element.name + "' is ignored",
                 AdviseNearest(attribute.name, grammar.attributes, "remove it"));
    }
  }
}

void CheckChildren(const Element& element, const Grammar& grammar, FileReport& report) {
  for (const auto& child : element.children) {
    const bool isKnown = Contains(grammar.children, child->name);
    if (!isKnown && !grammar.refusesOthers) {
      report.Add("element-unknown", *child,
                 "the element '" + child->name + "' in '" + element.name + "' is ignored",
                 AdviseNearest(child->name, grammar.children, "remove it, or move it"));
    } else if (isKnown && !LoaderReads(element, child->name) && !element.Get("type").empty()) {
      report.Add("element-unknown", *child,
                 "the element '" + child->name + "' is ignored in a constraint of type '" +
                     element.Get("type") + "'",
                 "remove it, or change the type");
    }
  }
}

std::string Trim(const std::string& text) {
  constexpr const char* kSpaces = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(kSpaces);
  return text.substr(begin, text.find_last_not_of(kSpaces) - begin + 1);
}

void CheckText(const Document& document, const Element& element, FileReport& report) {
  for (const Piece& piece : element.pieces) {
    const std::size_t word = piece.text.find_first_not_of(" \t\r\n");
    if (piece.IsText() && word != std::string::npos) {
      report.AddAt("text-ignored", &element, document.PositionOf(piece.offsets[word]),
                   "the text " + Quote(Trim(piece.text)) + " in '" + element.name + "' is ignored",
                   "remove it, or put it into an element");
      return;
    }
  }
}

// The loader uses only the last piece of text, which may be a comment.
void CheckContent(const Document& document, const Element& element, FileReport& report) {
  if (element.pieces.empty() || report.HasFinding(element)) {
    return;
  }
  const Piece& last = element.pieces.back();
  const auto isLost = [&last](const Piece& piece) {
    return &piece != &last && piece.IsText() && piece.HasWords();
  };
  const auto lost = std::find_if(element.pieces.begin(), element.pieces.end(), isLost);
  if (lost != element.pieces.end()) {
    report.AddAt(
        "content-cut", &element, document.PositionOf(lost->offsets[0]),
        "only the last piece of '" + element.name + "' counts, which is " + Quote(last.text),
        "write one piece of text or one CDATA section, and nothing beside it");
  } else if (!last.IsText()) {
    report.Add("content-cut", element,
               "the content of '" + element.name + "' is that of the comment " + Quote(last.text),
               "move the comment out of the element");
  }
}

void CheckElement(const Document& document, const Element& element, FileReport& report) {
  const Grammar* const grammar = FindGrammar(element);
  if (grammar == nullptr) {
    return;
  }
  CheckAttributes(element, *grammar, report);
  CheckChildren(element, *grammar, report);
  if (grammar->hasContent) {
    CheckContent(document, element, report);
  } else {
    CheckText(document, element, report);
  }
  for (const auto& child : element.children) {
    if (Contains(grammar->children, child->name)) {
      CheckElement(document, *child, report);
    }
  }
}

}  // namespace

void CheckStructure(const Document& document, FileReport& report) {
  CheckElement(document, *document.GetRoot(), report);
}

std::vector<const Element*> FindCommands(const Element& root) {
  std::vector<const Element*> found;
  for (const Element* commands : root.FindAll("commands")) {
    const std::vector<const Element*> own = commands->FindAll("command");
    found.insert(found.end(), own.begin(), own.end());
  }
  return found;
}

}  // namespace Kestrel::Lint
