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

/// Cuts one command line into its parts: the dispatcher options before the command path, the words
/// of the path, and the command's own parameters behind it.
///
/// An option is a dash and one ASCII letter ("-v"), or two dashes, a letter and at least one more
/// letter, digit or dash ("--verbose"), optionally followed by "=" and at least one byte
/// ("--level=3"). Every other token is a word: "-", "--", "-1", "-ab", "--x" and "--name=" too.
///
/// One parser serves one command line. The parser knows neither options nor namespaces: the caller
/// looks at the dispatcher options and the path, hands over what the command declares
/// (SetInputSpec), and only then asks for the command parameters. A user's mistakes become parse
/// errors; no operation throws for anything that a user typed.
class KESTREL_API OptionParser {
 public:
  /// A parser whose dispatcher is called "vexil".
  OptionParser();

  /// A parser whose dispatcher is called `dispatcher`.
  explicit OptionParser(const std::string& dispatcher);

  /// Takes argv[0] as the dispatcher's name and parses argv[1] to argv[argc - 1].
  ///
  /// Without arguments, or with a null argv[0], the name stays as it is; a null further on ends the
  /// arguments. The texts are copied.
  void ParseArgv(int argc, const char* const* argv);

  /// Parses a ready list of tokens, the leftmost first; the dispatcher's name stays as it is.
  void ParseVector(std::vector<std::string> tokens);

  /// Splits `line` into tokens and parses them; false when it did, true when there was nothing to
  /// parse (an empty line, a line of blanks, a comment).
  ///
  /// Spaces and tabs separate tokens except within double quotes, which are removed wherever they
  /// stand; an unbalanced quote runs to the end of the line. A line whose first character that is
  /// neither blank nor quote is '#' is a comment. There is no escape character.
  bool ParseString(const std::string& line);

  /// Parses tokens whose leftmost is on top; an empty stack changes nothing.
  void ParseStack(std::stack<std::string> tokens);

  /// Sets what the command declares, for the command parameters; null stands for nothing declared.
  void SetInputSpec(std::shared_ptr<CallSpec::InputSpec> spec);

  /// Turns what follows the path into command parameters; only the first call finds something to
  /// do.
  ///
  /// With a spec set, a secret parameter without a value is prompted for, and any other parameter
  /// that needs a value and has none becomes a parse error, as do words that belong to no option.
  void ProcessCommandArguments();

  /// The command's parameters as (name, value) pairs in the order typed, processed when they were
  /// not before. Names are without dashes, short or long as typed. The reference lives as long as
  /// the parser, and so do those below.
  const std::vector<std::pair<std::string, std::string>>& GetCommandParameters();

  /// The values of every command parameter of exactly that name, in order; processes like
  /// GetCommandParameters.
  std::vector<std::string> GetCommandParameter(const std::string& name);

  /// Whether a command parameter of exactly that name was given; processes likewise.
  bool HasCommandParameter(const std::string& name);

  /// The options before the path as (name, value) pairs in the order typed.
  const std::vector<std::pair<std::string, std::string>>& GetDispatcherParameters() const;

  /// The values of every dispatcher option of exactly that name, in order.
  std::vector<std::string> GetDispatcherParameter(const std::string& name) const;

  /// Whether a dispatcher option of exactly that name was given.
  bool HasDispatcherParameter(const std::string& name) const;

  /// The name of the program as invoked.
  const std::string& GetDispatcher() const;

  /// The words of the path in the order typed: namespaces, then the command.
  const std::list<std::string>& GetCommandPath() const;

  /// The same list as GetCommandPath, the command's name included.
  const std::list<std::string>& GetNamespaces() const;

  /// The mistakes found so far, in the order found. Processing the command parameters adds to them.
  const std::vector<std::string>& GetParseErrors() const;

  /// Always false: no operation marks the parser as done.
  bool IsParsed() const;

  /// A dump of everything for debugging; processes the command parameters after it has listed the
  /// errors, so that what this finds shows in the next dump.
  std::string ToString();

  /// Reads one line from standard input with the terminal's echo off, without its line end.
  ///
  /// The terminal gets its modes back on every path, also before a signal ends or stops the
  /// process. Input that is not a terminal is read the same way. Empty at the end of input.
  std::string GetSilentString();

  /// Whether `token` is an option.
  bool IsParameter(const std::string& token) const;

  /// Cuts an option into its name, without dashes, and its value; true when it carries a value.
  ///
  /// Without one, `value` becomes empty. A token that is no option adds a parse error and leaves
  /// both as they are.
  bool ParseParameter(const std::string& token, std::string& name, std::string& value);

  /// Pops the words on top of the stack, up to the first option, and returns them in order.
  std::list<std::string> ParsePath(std::stack<std::string>& tokens);

  /// Pops the options on top of the stack with their values, up to the first word that no option
  /// takes, and returns them in order, judged by the spec when one is set.
  ///
  /// An option without "=" takes the next token whenever that is a word, even when it is a flag.
  std::vector<std::pair<std::string, std::string>> ParseParameters(std::stack<std::string>& tokens);

 private:
  using Pairs = std::vector<std::pair<std::string, std::string>>;

  // Reads like a stack whose top is the leftmost token, but leaves the tokens where they are.
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
