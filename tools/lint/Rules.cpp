// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/Rules.h"

namespace Kestrel::Lint {

namespace {

constexpr Severity kError = Severity::Error;
constexpr Severity kWarning = Severity::Warning;
constexpr Severity kNote = Severity::Note;

}  // namespace

const char* WordOf(Severity severity) {
  switch (severity) {
    case Severity::Error:
      return "error";
    case Severity::Warning:
      return "warning";
    case Severity::Note:
      return "note";
    case Severity::Info:
      break;
  }
  return "info";
}

const std::vector<Rule>& GetRules() {
  static const std::vector<Rule> rules = {
      {"attribute-missing", kError,
       "The element lacks an attribute that the loader requires. The loader skips the whole\n"
       "descriptor. Add the attribute."},
      {"attribute-unknown", kWarning,
       "The loader ignores attributes that it does not know, so a misspelt one has no effect.\n"
       "Correct the name, or remove the attribute. Names with a prefix are not reported."},
      {"changed-quotes", kNote,
       "In single quotes directly around a marker, a value loses its own single quotes. "
       "Everything\n"
       "else arrives as it was typed. Pass the value in 'stdin' if quotes matter."},
      {"changed-value", kWarning,
       "A value arrives at the program with other bytes than the user typed: with backslashes, "
       "without\n"
       "line ends, or as the name of a file; or the shell cannot read the line. No option or "
       "command\n"
       "is added. The message has such a value."},
      {"constraint-everything", kWarning,
       "Every value of the parameter's type passes the constraint, so it restricts nothing.\n"
       "Restrict it, or remove it."},
      {"constraint-invalid", kError,
       "The loader cannot build the constraint and skips the whole descriptor. Its message says\n"
       "what is missing."},
      {"constraint-nothing", kError,
       "No value passes the constraint, so no call with the parameter is possible."},
      {"constraint-type", kError,
       "'range' and 'intenum' are for integers, 'stringenum' and 'regex' for strings. The loader\n"
       "skips the whole descriptor."},
      {"content-cut", kError,
       "The loader takes the last piece of text in an element, comments included. A comment, a\n"
       "CDATA section or an element within it cuts off everything before. Write one piece."},
      {"description-marker", kWarning,
       "%ENUM% and %REGEX% are replaced by a description of the parameter's constraint, the first\n"
       "of each kind only. Without a constraint the help page shows them unchanged."},
      {"description-missing", kWarning,
       "A command or a parameter has no description, or an empty one. Listings and help pages "
       "show\n"
       "it."},
      {"document-type", kWarning,
       "The file has a document type, which may change what its elements mean. It is loaded, but\n"
       "nothing in it is examined except by the loader. Remove the document type."},
      {"element-missing", kError,
       "The element lacks a child that the loader requires. The loader skips the whole\n"
       "descriptor. Where there is nothing to declare, an empty child is enough."},
      {"element-twice", kError,
       "An element that is allowed once is there twice. The loader skips the whole descriptor."},
      {"element-unexpected", kError,
       "The loader refuses unknown elements in 'meta-data' and 'enum', and skips the whole\n"
       "descriptor."},
      {"element-unknown", kError,
       "The loader ignores elements that it does not know in this place, with all that is in\n"
       "them. A misspelt 'constraint' restricts nothing. Correct the name, or remove it."},
      {"encoding", kWarning,
       "The file is not in UTF-8. It is loaded, but nothing in it is examined except by the\n"
       "loader. Write it in UTF-8."},
      {"example-invalid", kError, "An example of a command is refused by its own declaration."},
      {"execute-keyword", kWarning,
       "If the variable LANG is not set, LANG=en_US.UTF-8 is put before the shell command. Before\n"
       "if, for, while, until, case, ( and { that is a syntax error. Begin the command with ':;'."},
      {"execute-missing", kError,
       "The command has no shell command. The loader skips the whole descriptor."},
      {"field-empty", kWarning,
       "A field of the declared result has no value, so it is not declared, and a result with the\n"
       "field is rejected."},
      {"fields-unknown", kError,
       "A format parameter names a field or a structure that the declared result does not have.\n"
       "The column is empty, or the unit never appears."},
      {"file-suffix", kWarning,
       "The loader ignores files whose names end neither in '.so' nor in '.xml'."},
      {"flag-required", kWarning,
       "A flag has no value: being given is all that it says. A required one says nothing."},
      {"format-parameter-unknown", kError,
       "The formatter does not have this parameter, so it has no effect."},
      {"formatter-missing", kWarning,
       "Without a default formatter the command prints its result only if the user names one."},
      {"formatter-shape", kError,
       "The formatter cannot print the declared result: every call ends with an error."},
      {"formatter-unknown", kError,
       "There is no formatter of this name. Every call ends with an error unless the user names\n"
       "another one. Formatters of shared objects that are examined too are known."},
      {"marker-kind", kError,
       "$val is for one value, $list and $multilist are for lists, and a flag has no value: only "
       "$if\n"
       "is for flags."},
      {"marker-malformed", kError,
       "A marker does not have one of the forms $val{name}, $if{name,text}, $list{name,'c',true} "
       "and\n"
       "$multilist{name,prefix,false}. It reaches the shell unchanged."},
      {"marker-misspelt", kError,
       "Something looks like a marker and is none. It reaches the shell unchanged, which takes it "
       "for\n"
       "a variable."},
      {"marker-nesting", kError,
       "The text of an $if ends at the first '}' in it that is not the end of a $val. It cannot\n"
       "contain another $if, and a list in it must be at its very end."},
      {"marker-outside-if", kError,
       "The marker of a parameter that is not given is left in the template, outside of an $if "
       "for\n"
       "that parameter. The shell takes it for a variable and braces."},
      {"marker-place", kWarning,
       "A marker is within a here-document, arithmetic, a case or another construct, and what the\n"
       "shell makes of a value there is not examined. Pass it as an argument or in 'stdin'."},
      {"marker-program", kError,
       "A value becomes a part of a program for another interpreter, whose rules of quoting the\n"
       "markers do not know. Pass it as an argument to that program."},
      {"marker-unclosed", kError, "A marker has no '}'. It reaches the shell unchanged."},
      {"marker-unknown", kError,
       "A marker names a parameter that the command does not have. It reaches the shell "
       "unchanged."},
      {"meta-data-key", kWarning,
       "The name of a meta-data entry is close to 'changes' or 'complete:PARAMETER', which have a\n"
       "meaning, but is neither. Other names can be used as you like."},
      {"meta-data-parameter", kError,
       "The entry 'complete:PARAMETER' names a parameter that the command does not have."},
      {"meta-data-twice", kWarning,
       "If a name of a meta-data entry is repeated, only the last entry counts."},
      {"meta-data-value", kError,
       "The entry has a value that means nothing: 'changes' is 'true' or 'false', and\n"
       "'complete:PARAMETER' is 'file', 'directory', or the path of a command with full stops, a\n"
       "space and a field of its result."},
      {"namespace-incomplete", kError,
       "A namespace needs a path and a description. The loader skips the whole descriptor."},
      {"not-well-formed", kError,
       "The file is not an XML document. The loader skips it. The place is that of the first\n"
       "fault that the parser found; the mistake may be before it."},
      {"number-cut", kWarning,
       "The loader reads the number at the beginning of a bound or a value and ignores the rest."},
      {"object-crash", kError,
       "The process that loaded the shared object was ended by a signal. The message names what\n"
       "was being examined. The tool would crash in the same way."},
      {"object-declaration", kError,
       "The declaration of a command throws, so its help page and every call fail. A duplicate\n"
       "parameter is the usual reason."},
      {"object-entry-point", kError,
       "The shared object has no entry point. Include kestrel/autocli/PluginEntryPoint.h and\n"
       "define the function that it declares."},
      {"object-exception", kError,
       "The shared object throws something that is not a KestrelException. The tool ends with a\n"
       "message instead of skipping the plug-in."},
      {"object-hang", kError,
       "The shared object does not finish in two seconds; those in which the machine is too busy "
       "to\n"
       "run it do not count. The message names what was being examined."},
      {"object-refused", kError, "The loader refuses the shared object; the text is its own."},
      {"object-symbol", kError,
       "The shared object needs a symbol that nothing defines. Link the library that does."},
      {"parameter-duplicate", kError,
       "Two parameters of a command have one name. The loader skips the whole descriptor."},
      {"parameter-misread", kError,
       "A command reads a parameter by a function for another type, such as a string by\n"
       "GetParameterInt, which returns -1 without a message. It is found when an example of a "
       "command\n"
       "with the meta-data 'changes' = 'false' runs."},
      {"parameter-name", kError,
       "The name of a parameter has at least two characters: lower-case letters, digits and '-'.\n"
       "The loader skips the whole descriptor."},
      {"parameter-required", kError,
       "Each parameter has the attribute 'required', 'true' or 'false'. The loader skips the "
       "whole\n"
       "descriptor."},
      {"parameter-secret", kError,
       "The attribute 'secret' is 'true' or 'false', and only a 'string' can be secret. The "
       "loader\n"
       "skips the whole descriptor."},
      {"parameter-short-name", kError,
       "A short name is one letter that no other parameter of the command has. The loader skips\n"
       "the whole descriptor."},
      {"parameter-type", kError,
       "The type of a parameter is string, string-list, bool, bool-list, int, int-list or flag.\n"
       "The loader skips the whole descriptor."},
      {"parameter-untypable", kError,
       "The parameter can be declared but not typed: an option begins with a letter, and --help\n"
       "and -h are taken."},
      {"parameter-unused", kWarning,
       "Neither template contains the parameter, so it has no effect. Its marker may be misspelt."},
      {"path-duplicate", kError,
       "Two commands, or a command and a namespace, have one path, or a top-level namespace is\n"
       "declared with two descriptions. All files that are examined together count."},
      {"path-name", kError,
       "A word of a path consists of letters and digits, begins with a lower-case letter or a\n"
       "digit, and has no two capitals in a row."},
      {"path-undeclared", kError,
       "A namespace of the path is not declared before it, in this file or in a file that is\n"
       "examined before this one. Name the files that the descriptor builds on too."},
      {"refused", kError, "The loader refuses the descriptor; the text is its own."},
      {"regex-exponential", kWarning,
       "The expression contains a loop that matches one string in two ways, as in (a+)+. Matching\n"
       "some long values takes exponential time; the library gives up and refuses them."},
      {"regex-invalid", kError,
       "The expression does not compile. The loader accepts it, and every call with the parameter\n"
       "fails."},
      {"regex-space", kWarning,
       "Spaces and line ends at the beginning or end of 'regex' are a part of the expression."},
      {"script-missing", kError, "The program that the shell command starts does not exist here."},
      {"script-not-executable", kError,
       "The program that the shell command starts is not an executable file."},
      {"script-relative", kNote,
       "The shell command runs in the folder of the user and does not know the folder of its\n"
       "descriptor. Write an absolute path."},
      {"secret-on-command-line", kError,
       "While a shell command runs, every user of the machine can read its words. Pass secrets in\n"
       "'stdin'."},
      {"shape-invalid", kError,
       "The loader cannot build the declared result and skips the whole descriptor."},
      {"shape-missing", kError,
       "Nothing, or a list without its structure, is declared as the result, so every result that\n"
       "contains something is rejected."},
      {"suppression-reason", kWarning,
       "A suppression says why the rule does not apply:\n"
       "<!-- vexil-lint disable=RULE: reason -->"},
      {"suppression-unknown", kWarning, "A suppression names a rule that does not exist."},
      {"suppression-unused", kWarning,
       "A suppression has no effect. It is for the element after it and everything in it."},
      {"text-ignored", kWarning,
       "The loader ignores text between elements. A line that was to be a comment or an element\n"
       "has no effect."},
      {"unsafe-command", kError,
       "A value makes the shell run a command that the template does not contain. The message has\n"
       "such a value. Write the quotes of '$val{name}' directly around the marker and nowhere "
       "else."},
      {"unsafe-option", kError,
       "A value becomes a word that begins with '-', which a program takes for an option: '-0' is "
       "an\n"
       "integer too. Write --name='$val{name}', put -- before it, or restrict the value."},
      {"unsafe-word", kError,
       "A value becomes more than one word: at a space, as the pattern of file names, or, in bash, "
       "at\n"
       "braces. An integer may have a space before it. Write '$val{name}' in quotes."},
      {"version", kError,
       "The version of the descriptor language is missing or unknown. It is 1.0.0, and spaces\n"
       "count. The loader skips the whole descriptor."},
  };
  return rules;
}

const Rule* FindRule(std::string_view id) {
  for (const Rule& rule : GetRules()) {
    if (id == rule.id) {
      return &rule;
    }
  }
  return nullptr;
}

}  // namespace Kestrel::Lint
