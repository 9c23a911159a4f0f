// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The grammar, as far as it is understood:
//
//   list    = {command (";" | "&" | "|" | "&&" | "||" | newline)}
//   command = {assignment} {word | redirection} | "(" list ")" | keyword command
//   word    = {byte | "\" byte | "'" bytes "'" | '"' parts '"' | "$" expansion | "`" list "`"}

#include "tools/lint/ShellReader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <optional>
#include <utility>

#include "tools/lint/BraceExpansion.h"

namespace Kestrel::Lint {

namespace {

constexpr std::string_view kOperators = ";&|<>()\n";
constexpr std::size_t kMaxDepth = 50;

bool IsNameByte(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

bool IsOneOf(const std::string& word, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

/// A word that begins a part of a compound command, and the word that ends the compound command.
struct Keyword {
  std::string_view text;
  std::string_view end;
};

constexpr std::array<Keyword, 5> kFirstKeywords = {
    {{"if", "fi"}, {"while", "done"}, {"until", "done"}, {"for", "done"}, {"{", "}"}}};
constexpr std::array<Keyword, 4> kInnerKeywords = {
    {{"then", "fi"}, {"elif", "fi"}, {"else", "fi"}, {"do", "done"}}};

/// Returns the word that ends the compound command to which `word` belongs; empty if it is not a
/// keyword.
template <typename Keywords>
std::string_view FindEnd(const Keywords& keywords, const std::string& word) {
  const auto found = std::find_if(keywords.begin(), keywords.end(),
                                  [&](const Keyword& keyword) { return keyword.text == word; });
  return found == keywords.end() ? std::string_view() : found->end;
}

bool IsOutOfReach(const std::string& word, Shell shell) {
  return IsOneOf(word, {"case", "esac"}) ||
         (shell == Shell::Bash && IsOneOf(word, {"function", "select", "[[", "coproc", "time"}));
}

bool IsAssignment(const RawWord& word) {
  std::size_t i = 0;
  while (i < word.size() && !word[i].isQuoted && IsNameByte(word[i].byte)) {
    ++i;
  }
  return i > 0 && i < word.size() && word[i].byte == '=' && !word[i].isQuoted &&
         std::isdigit(static_cast<unsigned char>(word[0].byte)) == 0;
}

std::string TextOf(const RawWord& word) {
  std::string text;
  for (const RawByte& byte : word) {
    if (byte.byte != '\0') {
      text += byte.byte;
    }
  }
  return text;
}

bool IsUnquoted(const RawWord& word) {
  return std::none_of(word.begin(), word.end(), [](const RawByte& byte) { return byte.isQuoted; });
}

// Whether a bracket expression matches more than one byte.
bool MatchesSeveral(const RawWord& word, std::size_t begin, std::size_t end) {
  for (std::size_t i = begin; i < end; ++i) {
    if (word[i].byte == '/') {
      return false;
    }
  }
  return std::any_of(word.begin() + static_cast<std::ptrdiff_t>(begin),
                     word.begin() + static_cast<std::ptrdiff_t>(end),
                     [&](const RawByte& byte) { return byte.byte != word[begin].byte; });
}

bool IsPattern(const RawWord& word) {
  for (std::size_t i = 0; i < word.size(); ++i) {
    if (word[i].isQuoted) {
      continue;
    }
    if (word[i].byte == '?' || word[i].byte == '*') {
      return true;
    }
    // A "]" directly after the "[" is one of the bytes that match.
    for (std::size_t end = i + 2; word[i].byte == '[' && end < word.size(); ++end) {
      if (word[end].byte == ']' && !word[end].isQuoted) {
        return MatchesSeveral(word, i + 1, end);
      }
    }
  }
  return false;
}

// Whether "-" followed by `rest` is an option; "-" and "--" are not.
bool MakesOption(const std::string& rest) { return !rest.empty() && rest != "-"; }

// Whether a pattern matches names that begin with "-" and are options.
bool MayBeOption(RawWord word) {
  const auto isEmptyString = [](const RawByte& byte) { return byte.byte == '\0'; };
  word.erase(std::remove_if(word.begin(), word.end(), isEmptyString), word.end());
  if (!IsPattern(word) || word[0].isQuoted) {
    return false;
  }
  if (word[0].byte != '[') {
    return word[0].byte == '*' || (word[0].byte == '?' && MakesOption(TextOf(word).substr(1)));
  }
  const auto end = std::find_if(word.begin() + 2, word.end(), [](const RawByte& byte) {
    return byte.byte == ']' && !byte.isQuoted;
  });
  const char first = word[1].byte;
  return end != word.end() && MakesOption(TextOf({end + 1, word.end()})) &&
         (first == '-' || (end - 1)->byte == '-' ||
          (!word[1].isQuoted && (first == '!' || first == '^')));
}

bool IsHome(const RawWord& word) { return word[0].byte == '~' && !word[0].isQuoted; }

class Reader {
 public:
  Reader(std::string_view line, Shell shell, ShellReading& reading, std::size_t depth)
      : line_(line), shell_(shell), reading_(reading), depth_(depth) {}

  /// Reads a whole line, or the commands in backquotes.
  static ShellReading ReadAll(std::string_view line, Shell shell, std::size_t depth) {
    ShellReading reading;
    Reader reader(line, shell, reading, depth);
    reader.ReadList(0, false);
    reader.DropLinesNotRun();
    return reading;
  }

 private:
  /// Reads up to the end, or to the ")" that closes the list. Returns the position after it.
  std::size_t ReadList(std::size_t position, bool isNested) {
    position_ = position;
    isNested_ = isNested;
    BeginCommand();
    while (reading_.isCorrect && reading_.isUnderstood) {
      SkipSpaces();
      if (AtEnd()) {
        EndList(isNested_);
        break;
      }
      if (line_[position_] == ')') {
        ++position_;
        // In backquotes, dash ignores an unmatched ")" and everything after it.
        EndList(!isNested_ && (depth_ == 0 || shell_ == Shell::Bash));
        break;
      }
      ReadNext();
    }
    return position_;
  }

  /// Drops the commands that the shell does not run because of a mistake in their line or an
  /// earlier one.
  void DropLinesNotRun() {
    if (!reading_.isCorrect || !reading_.isUnderstood) {
      reading_.commands.resize(complete_);
    }
  }

  bool AtEnd() const { return position_ >= line_.size(); }
  char Peek(std::size_t ahead = 0) const {
    return position_ + ahead < line_.size() ? line_[position_ + ahead] : '\0';
  }

  void Fail(bool isWrong) { reading_.isCorrect = reading_.isCorrect && !isWrong; }
  void GiveUp() { reading_.isUnderstood = false; }

  void BeginCommand() {
    command_.reset();
    isFollowedByCommand_ = true;
    hasAssignment_ = false;
    isNegated_ = false;
    isAfterCompound_ = false;
  }

  bool HasWords() const { return command_ || hasAssignment_ || isAfterCompound_; }

  void EndList(bool isWrong) { Fail(isWrong || !ends_.empty() || needsCommand_); }

  // Notes the commands that run even if a later line has a mistake: a shell runs each line before
  // it reads the next one.
  void EndLine() {
    BeginCommand();
    if (!isNested_ && ends_.empty() && !needsCommand_) {
      complete_ = reading_.commands.size();
    }
  }

  void SkipSpaces() {
    while (!AtEnd()) {
      if (Peek() == ' ' || Peek() == '\t') {
        ++position_;
      } else if (Peek() == '\\' && Peek(1) == '\n') {
        position_ += 2;
      } else if (Peek() == '#') {
        position_ = std::min(line_.find('\n', position_), line_.size());
      } else {
        return;
      }
    }
  }

  void ReadNext() {
    const char c = Peek();
    if (c == '<' || c == '>') {
      ReadRedirection();
    } else if (c == '(') {
      ReadSubshell();
    } else if (kOperators.find(c) != std::string_view::npos) {
      ReadOperator();
    } else {
      TakeWord(ReadWord());
    }
  }

  std::string_view TakeOperator() {
    const std::string_view two = line_.substr(position_, 2);
    const bool isDouble =
        two == "&&" || two == "||" || (shell_ == Shell::Bash && (two == "|&" || two == "&>"));
    const std::string_view text = isDouble ? two : two.substr(0, 1);
    position_ += text.size();
    return text;
  }

  void ReadOperator() {
    const std::string_view text = TakeOperator();
    if (text == "\n") {
      EndLine();
      return;
    }
    if (text == "&>") {
      GiveUp();
    }
    Fail((!HasWords() && !isNegated_) || needsCommand_);
    BeginCommand();
    isPiped_ = text == "|" || text == "|&";
    needsCommand_ = isPiped_ || text == "&&" || text == "||";
  }

  void ReadSubshell() {
    if (HasWords() || Peek(1) == '(') {
      // A function definition, arithmetic, a list of values or, most often, a mistake.
      if (Peek(1) == '(' || (hasAssignment_ && shell_ == Shell::Bash)) {
        GiveUp();
      }
      Fail(true);
    }
    if (reading_.isCorrect && reading_.isUnderstood) {
      ReadNested(1);
    }
    needsCommand_ = false;
    isAfterCompound_ = true;
  }

  // Reads a list in parentheses. Its first byte is `ahead` bytes after the current position.
  void ReadNested(std::size_t ahead) {
    if (depth_ > kMaxDepth) {
      GiveUp();
      return;
    }
    Reader nested(line_, shell_, reading_, depth_ + 1);
    nested.needsCommand_ = ahead == 1;  // only a substitution may be empty
    position_ = nested.ReadList(position_ + ahead, true);
  }

  void ReadRedirection() {
    const char c = Peek();
    ++position_;
    if (c == '<' && Peek() == '<') {
      GiveUp();
      return;
    }
    if (Peek() == '(') {
      // Only bash has process substitution, and some versions do not have it when called as sh.
      GiveUp();
      return;
    }
    if (!AtEnd() && std::string_view("&>|").find(Peek()) != std::string_view::npos) {
      ++position_;
    }
    while (Peek() == ' ' || Peek() == '\t' || (Peek() == '\\' && Peek(1) == '\n')) {
      position_ += Peek() == '\\' ? 2 : 1;
    }
    Fail(AtEnd() || Peek() == '#' || kOperators.find(Peek()) != std::string_view::npos);
    if (reading_.isCorrect) {
      ReadWord();
      hasAssignment_ = hasAssignment_ || !command_;  // a redirection alone is a command too
      needsCommand_ = false;
    }
  }

  void TakeWord(const RawWord& word) {
    const std::string text = TextOf(word);
    const bool isDigits = !text.empty() && IsUnquoted(word) &&
                          text.find_first_not_of("0123456789") == std::string::npos;
    if (isDigits && (Peek() == '<' || Peek() == '>')) {
      return;  // the number of a file descriptor
    }
    const bool mayBeKeyword = isFollowedByCommand_ && !hasAssignment_ && IsUnquoted(word);
    if (mayBeKeyword && TakeKeyword(text)) {
      return;
    }
    Fail(isAfterCompound_);
    needsCommand_ = false;
    if (isFollowedByCommand_ && IsAssignment(word)) {
      hasAssignment_ = true;
      return;
    }
    AddWords(word);
  }

  bool TakeKeyword(const std::string& text) {
    if (IsOutOfReach(text, shell_)) {
      GiveUp();
      return true;
    }
    if (text == "!") {
      Negate();
      return true;
    }
    return TakeFirstKeyword(text) || TakeInnerKeyword(text) || TakeLastKeyword(text);
  }

  // Only bash accepts "!" without a command after it.
  void Negate() {
    Fail((isPiped_ && needsCommand_) || isAfterCompound_ || (isNegated_ && shell_ == Shell::Dash));
    needsCommand_ = needsCommand_ || shell_ == Shell::Dash;
    isNegated_ = true;
  }

  bool TakeFirstKeyword(const std::string& text) {
    const std::string_view end = FindEnd(kFirstKeywords, text);
    if (end.empty()) {
      return false;
    }
    Fail(isAfterCompound_);
    ends_.push_back(end);
    isPiped_ = false;
    needsCommand_ = true;
    return text != "for";  // what follows is read like the arguments of a command
  }

  bool TakeInnerKeyword(const std::string& text) {
    const std::string_view end = FindEnd(kInnerKeywords, text);
    if (end.empty()) {
      return false;
    }
    Fail(needsCommand_ || ends_.empty() || ends_.back() != end);
    BeginCommand();
    needsCommand_ = true;
    return true;
  }

  bool TakeLastKeyword(const std::string& text) {
    if (!IsOneOf(text, {"fi", "done", "}"})) {
      return false;
    }
    Fail(needsCommand_ || ends_.empty() || ends_.back() != text);
    if (reading_.isCorrect) {
      ends_.pop_back();
    }
    isAfterCompound_ = true;
    return true;
  }

  void AddWords(const RawWord& word) {
    const std::vector<RawWord> expanded =
        shell_ == Shell::Bash ? ExpandBraces(word) : std::vector<RawWord>{word};
    for (const RawWord& each : expanded) {
      if (each.empty()) {
        continue;
      }
      if (!command_) {
        command_ = reading_.commands.size();
        reading_.commands.emplace_back();
      }
      reading_.commands[*command_].words.push_back(
          {TextOf(each), IsPattern(each), MayBeOption(each), IsHome(each)});
      isFollowedByCommand_ = false;
    }
  }

  RawWord ReadWord() {
    RawWord word;
    while (!AtEnd() && reading_.isCorrect && reading_.isUnderstood) {
      const char c = Peek();
      if (c == ' ' || c == '\t' || kOperators.find(c) != std::string_view::npos) {
        break;
      }
      ReadPart(word);
    }
    return word;
  }

  void ReadPart(RawWord& word) {
    const char c = Peek();
    if (c == '\\') {
      ReadBackslash(word);
    } else if (c == '\'') {
      ReadSingleQuotes(word);
    } else if (c == '"') {
      ReadDoubleQuotes(word);
    } else if (c == '$') {
      ReadDollar(word, false);
    } else if (c == '`') {
      ReadBackquotes(word, false);
    } else {
      word.push_back({c, false});
      ++position_;
    }
  }

  void ReadBackslash(RawWord& word) {
    if (Peek(1) == '\n') {
      position_ += 2;
    } else if (position_ + 1 == line_.size()) {
      word.push_back({'\\', true});
      ++position_;
    } else {
      word.push_back({Peek(1), true});
      position_ += 2;
    }
  }

  void ReadSingleQuotes(RawWord& word) {
    const std::size_t end = line_.find('\'', position_ + 1);
    word.push_back({'\0', true});  // an empty string in quotes is a word
    if (end == std::string_view::npos) {
      Fail(true);
      return;
    }
    for (const char c : line_.substr(position_ + 1, end - position_ - 1)) {
      word.push_back({c, true});
    }
    position_ = end + 1;
  }

  void ReadDoubleQuotes(RawWord& word) {
    word.push_back({'\0', true});
    ++position_;
    while (reading_.isCorrect && reading_.isUnderstood) {
      if (AtEnd()) {
        Fail(true);
      } else if (Peek() == '"') {
        ++position_;
        return;
      } else if (Peek() == '\\') {
        ReadQuotedBackslash(word);
      } else if (Peek() == '$') {
        ReadDollar(word, true);
      } else if (Peek() == '`') {
        ReadBackquotes(word, true);
      } else {
        word.push_back({Peek(), true});
        ++position_;
      }
    }
  }

  void ReadQuotedBackslash(RawWord& word) {
    constexpr std::string_view kEscapable = "$`\"\\";
    if (Peek(1) == '\n') {
      position_ += 2;
      return;
    }
    const bool isEscape =
        position_ + 1 < line_.size() && kEscapable.find(Peek(1)) != std::string_view::npos;
    word.push_back({isEscape ? Peek(1) : '\\', true});
    position_ += isEscape ? 2 : 1;
  }

  void ReadDollar(RawWord& word, bool isQuoted) {
    const char next = Peek(1);
    if ((next == '(' && Peek(2) == '(') || (next == '[' && shell_ == Shell::Bash)) {
      GiveUp();  // arithmetic
    } else if (next == '(') {
      ReadNested(2);
      word.push_back({'\1', true});
    } else if (next == '{') {
      ReadVariableInBraces(word);
    } else if (next == '\'' && !isQuoted && shell_ == Shell::Bash) {
      ReadQuotesWithEscapes(word);
    } else if (next == '"' && !isQuoted && shell_ == Shell::Bash) {
      ++position_;  // quotes whose text is translated
    } else if (next != '\0' && (IsNameByte(next) ||
                                std::string_view("?$#@*!-").find(next) != std::string_view::npos)) {
      ReadVariable(word);
    } else {
      word.push_back({'$', isQuoted});
      ++position_;
    }
  }

  void ReadQuotesWithEscapes(RawWord& word) {
    ++position_;
    const std::size_t first = line_.find_first_of("'\\", position_ + 1);
    if (first != std::string_view::npos && line_[first] == '\\') {
      GiveUp();
      return;
    }
    ReadSingleQuotes(word);
  }

  void ReadVariable(RawWord& word) {
    const char first = Peek(1);
    const bool isName = IsNameByte(first) && std::isdigit(static_cast<unsigned char>(first)) == 0;
    position_ += 2;
    while (isName && IsNameByte(Peek())) {
      ++position_;
    }
    word.push_back({'\1', true});
    // When bash expands braces, it takes the second "$" of "$${" for the beginning of a variable,
    // so it leaves this brace alone, as if it were quoted.
    if (first == '$' && Peek() == '{' && shell_ == Shell::Bash) {
      word.push_back({'{', true});
      ++position_;
    }
  }

  void ReadVariableInBraces(RawWord& word) {
    const std::size_t end = line_.find('}', position_);
    if (end == std::string_view::npos) {
      Fail(true);
      return;
    }
    const std::string_view inside = line_.substr(position_ + 2, end - position_ - 2);
    const auto rest = std::find_if_not(inside.begin(), inside.end(), IsNameByte);
    const bool isPlain = rest == inside.end();
    // "${a,b}" changes the case of letters.
    const bool changesCase = shell_ == Shell::Bash && !isPlain && *rest == ',' &&
                             std::all_of(rest + 1, inside.end(), IsNameByte);
    if (rest == inside.begin() || !(isPlain || changesCase)) {
      GiveUp();
      return;
    }
    position_ = end + 1;
    word.push_back({'\1', true});
  }

  void ReadBackquotes(RawWord& word, bool isQuoted) {
    const std::string_view escapable = isQuoted ? "$`\\\"" : "$`\\";
    std::string inside;
    std::size_t end = position_ + 1;
    for (; end < line_.size() && line_[end] != '`'; ++end) {
      const bool isEscape = line_[end] == '\\' && end + 1 < line_.size() &&
                            escapable.find(line_[end + 1]) != std::string_view::npos;
      end += isEscape ? 1 : 0;
      inside += line_[end];
    }
    if (end == line_.size()) {
      Fail(true);
      return;
    }
    if (depth_ > kMaxDepth) {
      GiveUp();
      return;
    }
    AddCommands(ReadAll(inside, shell_, depth_ + 1));
    position_ = end + 1;
    word.push_back({'\1', true});
  }

  // Dash reads the commands in backquotes with the line, bash when it runs them.
  void AddCommands(const ShellReading& inner) {
    reading_.commands.insert(reading_.commands.end(), inner.commands.begin(), inner.commands.end());
    reading_.isUnderstood = reading_.isUnderstood && inner.isUnderstood;
    Fail(!inner.isCorrect && shell_ == Shell::Dash);
  }

  const std::string_view line_;
  const Shell shell_;
  ShellReading& reading_;
  const std::size_t depth_;
  std::size_t position_ = 0;
  bool isNested_ = false;
  std::optional<std::size_t> command_;  // the one that is being read
  bool isFollowedByCommand_ = true;
  bool hasAssignment_ = false;
  bool isNegated_ = false;
  bool isPiped_ = false;
  bool isAfterCompound_ = false;        // no word can follow
  bool needsCommand_ = false;           // a command must follow, perhaps on the next line
  std::vector<std::string_view> ends_;  // the words that end the open compound commands
  std::size_t complete_ = 0;            // the number of commands in complete lines
};

}  // namespace

ShellReading ReadShellLine(std::string_view line, Shell shell) {
  return Reader::ReadAll(line, shell, 0);
}

}  // namespace Kestrel::Lint
