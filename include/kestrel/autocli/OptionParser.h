// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <stack>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/Export.h"
#include "kestrel/callspec/InputSpec.h"

namespace Kestrel::AutoCli {

/// Splits one command line into its parts: the dispatcher options before the command path, the
/// words of the path, and the command's own parameters after it.
///
/// A short option is a dash and one ASCII letter ("-v"). A long option is two dashes, a letter and
/// at least one more letter, digit or dash ("--verbose"). Only a long option may be followed by "="
/// and at least one byte ("--level=3"). Every other token is a word, for example "-", "--", "-1",
/// "-ab", "-v=3", "--x" and "--name=".
///
/// One parser handles one command line. It knows neither which options nor which namespaces exist:
/// the caller uses the dispatcher options and the path, passes the declaration of the command
/// (SetInputSpec), and only then requests the command parameters. A user's mistakes become parse
/// errors; they never throw.
class KESTREL_API OptionParser {
 public:
  /// Makes a parser whose dispatcher name is "vexil".
  OptionParser();

  /// Makes a parser whose dispatcher name is `dispatcher`.
  explicit OptionParser(const std::string& dispatcher);

  /// Sets the dispatcher name to a copy of argv[0] and parses argv[1] to argv[argc - 1].
  ///
  /// Does nothing when argc is less than 1 or argv[0] is null. A null element ends the arguments.
  void ParseArgv(int argc, const char* const* argv);

  /// Parses tokens, the leftmost first; does not change the dispatcher name.
  void ParseVector(std::vector<std::string> tokens);

  /// Splits `line` into tokens and parses them. Returns false after parsing, and true if there was
  /// nothing to parse, for example because the line is empty, consists of spaces and tabs, or is a
  /// comment.
  ///
  /// Spaces and tabs separate tokens, except within double quotes, which are removed everywhere. An
  /// unbalanced quote extends to the end of the line. A line is a comment if its first character
  /// other than spaces, tabs and double quotes is '#'. There is no escape character.
  bool ParseString(const std::string& line);

  /// Parses tokens, the leftmost on top; an empty stack changes nothing.
  void ParseStack(std::stack<std::string> tokens);

  /// Sets the declaration of the command for processing its parameters; null means none.
  void SetInputSpec(std::shared_ptr<CallSpec::InputSpec> spec);

  /// Processes the tokens after the path into command parameters. Only the first call has an
  /// effect.
  ///
  /// Words that belong to no option become a parse error. If a declaration is set, the user is
  /// prompted for a secret parameter that was given without a value; any other parameter that needs
  /// a value and has none becomes a parse error. Throws KestrelException when reading the secret
  /// fails.
  void ProcessCommandArguments();

  /// The command's parameters as (name, value) pairs in the order typed; calls
  /// ProcessCommandArguments first. Names have no dashes and are short or long, as typed. The
  /// reference, like those that the operations below return, is valid as long as the parser exists.
  const std::vector<std::pair<std::string, std::string>>& GetCommandParameters();

  /// The values of all command parameters with exactly this name, in the order typed; calls
  /// ProcessCommandArguments first.
  std::vector<std::string> GetCommandParameter(const std::string& name);

  /// Whether there is a command parameter with exactly this name; calls ProcessCommandArguments
  /// first.
  bool HasCommandParameter(const std::string& name);

  /// The options before the path as (name, value) pairs in the order typed.
  const std::vector<std::pair<std::string, std::string>>& GetDispatcherParameters() const;

  /// The values of all dispatcher options with exactly this name, in the order typed.
  std::vector<std::string> GetDispatcherParameter(const std::string& name) const;

  /// Whether there is a dispatcher option with exactly this name.
  bool HasDispatcherParameter(const std::string& name) const;

  /// The dispatcher name: argv[0] of `ParseArgv`, or the name that the parser was made with.
  const std::string& GetDispatcher() const;

  /// The words of the path in the order typed: namespaces, then the command.
  const std::list<std::string>& GetCommandPath() const;

  /// The same list as GetCommandPath, including the command.
  const std::list<std::string>& GetNamespaces() const;

  /// The parse errors so far, in the order found. Processing the command parameters may add some.
  const std::vector<std::string>& GetParseErrors() const;

  /// Always false: no operation sets this flag.
  bool IsParsed() const;

  /// Describes the whole state for debugging. Processes the command parameters, but only after
  /// listing the errors, so that errors found by this call appear in the next one.
  std::string ToString();

  /// Reads one line from standard input while the terminal does not echo; returns it without its
  /// line end, or the empty string at the end of the input.
  ///
  /// The modes of the terminal are restored in all cases, even before a signal that can be caught
  /// ends or stops the process. Input that is not a terminal is read the same way. Throws
  /// KestrelException when reading fails.
  std::string GetSilentString();

  /// Whether `token` is an option.
  bool IsParameter(const std::string& token) const;

  /// Splits an option into its name, without dashes, and its value; returns whether it contains a
  /// value.
  ///
  /// If the option contains no value, `value` becomes empty. A token that is not an option adds a
  /// parse error and leaves `name` and `value` unchanged.
  bool ParseParameter(const std::string& token, std::string& name, std::string& value);

  /// Pops the words on top of the stack up to the first option; returns them from left to right.
  std::list<std::string> ParsePath(std::stack<std::string>& tokens);

  /// Pops the options and their values on top of the stack, up to the first word that is not the
  /// value of an option; returns them from left to right. Missing values are handled as
  /// in ProcessCommandArguments.
  ///
  /// The value of an option without "=" is the next token if that is a word, even if the option is
  /// a flag.
  std::vector<std::pair<std::string, std::string>> ParseParameters(std::stack<std::string>& tokens);

 private:
  using Pairs = std::vector<std::pair<std::string, std::string>>;

  // Has the interface of a stack with the leftmost token on top, but does not move the tokens.
  struct TokenQueue {
    bool empty() const { return next == tokens.size(); }
    std::string& top() { return tokens[next]; }
    void pop() { ++next; }

    std::vector<std::string> tokens;
    std::size_t next = 0;
  };

  template <typename Tokens>
  std::list<std::string> TakeWords(Tokens& tokens) const;
  template <typename Tokens>
  Pairs TakeOptions(Tokens& tokens, const CallSpec::InputSpec* spec);
  std::string GetMissingValue(const std::string& token, const std::string& name,
                              const CallSpec::InputSpec* spec);
  void ReportExtraArguments();

  bool parsed_ = false;
  std::vector<std::string> errors_;
  std::string dispatcher_;
  std::list<std::string> path_;
  Pairs dispatcherParameters_;
  Pairs commandParameters_;
  TokenQueue remaining_;
  std::shared_ptr<CallSpec::InputSpec> inputSpec_;
};

}  // namespace Kestrel::AutoCli
