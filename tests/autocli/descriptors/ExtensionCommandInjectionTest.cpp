// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// What values become in the hands of the real shell. A model derives the words of a command line
// from the template language's rules for values and the shell's rules for words; the shell must
// see exactly these, and run nothing besides.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kestrel/autocli/ExtensionCommand.h"
#include "kestrel/autocli/Util.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/InputSpec.h"
#include "support/Random.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"

namespace Kestrel::AutoCli {
namespace {

using CallSpec::Input;
using CallSpec::InputSpec;
using CallSpec::ParameterSpec;
using CallSpec::ParameterType;
using Testing::Random;
using Testing::Rounds;
using Testing::ScopedEnvironment;
using Testing::ScopedTempDir;

constexpr std::string_view kHome = "/home-of-the-test";

/// The words of one command line, by the shell's rules, in a folder without files.
class ShellWords {
 public:
  /// A byte that no quote and no backslash protects, none of the shell's operators.
  void AddBare(char c) {
    if (inComment_) {
      return;
    }
    if (c == ' ' || c == '\t') {
      EndWord();
    } else if (c == '#' && !inWord_) {
      inComment_ = true;
    } else {
      inWord_ = true;
      startsWithTilde_ = startsWithTilde_ || (word_.empty() && !wasQuoted_ && c == '~');
      word_ += c;
    }
  }

  void AddBare(std::string_view text) {
    for (const char c : text) {
      AddBare(c);
    }
  }

  void AddQuoted(char c) {
    if (!inComment_) {
      OpenQuotes();
      word_ += c;
    }
  }

  /// Quotes make a word, even an empty one.
  void OpenQuotes() {
    if (!inComment_) {
      inWord_ = true;
      wasQuoted_ = true;
    }
  }

  /// A value as it stands bare: every special byte behind a backslash. A newline vanishes with its
  /// backslash; but a comment ends at it, and what follows is another command line.
  void AddBareValue(std::string_view value) {
    for (const char c : value) {
      if (c == '\n' && inComment_) {
        leavesTheLine_ = true;
      } else if (c == '\n' || c == '\0') {
        continue;
      } else if (ExtensionCommand::isBadChar(c)) {
        AddQuoted(c);
      } else {
        AddBare(c);
      }
    }
  }

  void AddSingleQuotedValue(std::string_view value) {
    OpenQuotes();
    for (const char c : value) {
      if (c != '\'' && c != '\0') {
        AddQuoted(c);
      }
    }
  }

  /// Within double quotes the backslash protects four bytes, and stays before others.
  void AddDoubleQuotedValue(std::string_view value) {
    OpenQuotes();
    for (const char c : value) {
      if (c == '\n' || c == '\0') {
        continue;
      }
      if (ExtensionCommand::isBadChar(c) && c != '$' && c != '`' && c != '"' && c != '\\') {
        AddQuoted('\\');
      }
      AddQuoted(c);
    }
  }

  bool LeavesTheLine() const { return leavesTheLine_; }

  const std::vector<std::string>& Finish() {
    EndWord();
    return words_;
  }

 private:
  void EndWord() {
    if (inWord_) {
      words_.push_back(startsWithTilde_ && word_ == "~" ? std::string(kHome) : word_);
    }
    word_.clear();
    inWord_ = wasQuoted_ = startsWithTilde_ = false;
  }

  std::vector<std::string> words_;
  std::string word_;
  bool inWord_ = false;
  bool wasQuoted_ = false;
  bool startsWithTilde_ = false;
  bool inComment_ = false;
  bool leavesTheLine_ = false;
};

using Values = std::vector<std::string>;

std::string Join(const Values& values, std::string_view separator) {
  std::string joined;
  for (std::size_t i = 0; i < values.size(); ++i) {
    joined += i == 0 ? std::string_view() : separator;
    joined += values[i];
  }
  return joined;
}

/// What a kept text ends up with: its end is the first brace, if one came with a value.
std::string CutAtBrace(const std::string& value, std::string& behind) {
  const std::size_t brace = value.find('}');
  behind = brace == std::string::npos ? "" : "}";
  std::string rest = value;
  return brace == std::string::npos ? rest : rest.erase(brace, 1);
}

/// One safe way to write a parameter, "xx" (a text) or "ll" (a list): the line, whose command `p`
/// shows its words, and the model of these.
struct Form {
  const char* name;
  const char* text;
  bool isList;
  std::function<void(ShellWords&, const Values&)> model;
};

std::vector<Form> SafeForms() {
  const auto bare = [](ShellWords& words, const Values& values) {
    words.AddBareValue(values[0]);
    words.AddBare(" end");
  };
  const auto quoted = [](ShellWords& words, const Values& values) {
    words.AddSingleQuotedValue(values[0]);
    words.AddBare(" end");
  };
  const auto joinedBy = [](std::string_view separator, bool isQuoted) {
    return [=](ShellWords& words, const Values& values) {
      const std::string joined = Join(values, separator);
      isQuoted ? words.AddDoubleQuotedValue(joined) : words.AddBareValue(joined);
      words.AddBare(" end");
    };
  };
  const auto multiList = [](ShellWords& words, const Values& values) {
    for (const std::string& value : values) {
      words.AddBare(" -m ");
      words.AddBareValue(value);
    }
    words.AddBare(" end");
  };
  const auto keptBare = [](ShellWords& words, const Values& values) {
    std::string behind;
    words.AddBare("-n ");
    words.AddBareValue(CutAtBrace(values[0], behind));
    words.AddBare(behind + " end");
  };
  const auto keptQuoted = [](ShellWords& words, const Values& values) {
    std::string behind;
    words.AddBare("-n ");
    words.AddSingleQuotedValue(CutAtBrace(values[0], behind));
    words.AddBare(behind + " end");
  };
  // List markers are filled after the text has been kept: their braces end nothing.
  return {
      {"Bare", "p $val{xx} end", false, bare},
      {"Quoted", "p '$val{xx}' end", false, quoted},
      {"QuotedOption", "p --o='$val{xx}' end", false,
       [quoted](ShellWords& words, const Values& values) {
         words.AddBare("--o=");
         quoted(words, values);
       }},
      {"BareInIf", "p $if{xx,-n $val{xx}} end", false, keptBare},
      {"QuotedInIf", "p $if{xx,-n '$val{xx}'} end", false, keptQuoted},
      {"QuotedInIfOfALaterName", "p $if{zz,-n '$val{xx}'} end", false, keptQuoted},
      {"InAnIfThatIsRemoved", "p $if{nope,-n '$val{xx}' $val{xx}} '$val{xx}' end", false, quoted},
      {"BareInAnIfThatIsRemoved", "p $if{nope,'$val{xx}'} $val{xx} end", false, bare},
      {"List", "p $list{ll,',',false} end", true, joinedBy(",", false)},
      {"ListQuoted", "p $list{ll,',',true} end", true, joinedBy(",", true)},
      {"ListBySemicolon", "p $list{ll,';',false} end", true, joinedBy(";", false)},
      {"ListQuotedBySemicolon", "p $list{ll,';',true} end", true, joinedBy(";", true)},
      {"ListByNothing", "p $list{ll,'',false} end", true, joinedBy("", false)},
      {"ListQuotedByNothing", "p $list{ll,'',true} end", true, joinedBy("", true)},
      {"MultiList", "p$multilist{ll,-m,false} end", true, multiList},
      {"ListInIf", "p $if{ll,$list{ll,',',false}} end", true, joinedBy(",", false)},
      {"ListQuotedInIf", "p $if{ll,$list{ll,',',true}} end", true, joinedBy(",", true)},
      {"MultiListInIf", "p$if{ll,$multilist{ll,-m,false}} end", true, multiList},
      {"ListInAnIfThatIsRemoved", "p $if{nope,$list{ll,',',false}} $list{ll,',',true} end", true,
       joinedBy(",", true)},
  };
}

std::string MakeValue(Random& random) {
  constexpr std::string_view kPieces[] = {"touch canary",
                                          "; touch canary;",
                                          "$(touch canary)",
                                          "`touch canary`",
                                          ">canary",
                                          "&& touch canary",
                                          "| tee canary",
                                          "\n",
                                          "'",
                                          "\"",
                                          "\\",
                                          "$",
                                          "$HOME",
                                          "${HOME}",
                                          "$((1+1))",
                                          "*",
                                          "?",
                                          "[a-z]",
                                          "~",
                                          "#",
                                          " ",
                                          "\t",
                                          "!",
                                          "&",
                                          "(",
                                          ")",
                                          "<<x",
                                          "{",
                                          "}",
                                          "{a,b}",
                                          "=",
                                          "-",
                                          "--",
                                          "-e",
                                          "%s",
                                          "\\n",
                                          "$val{xx}",
                                          "$val{ll}",
                                          "$if{nope,",
                                          "$if{xx,",
                                          "$list{ll,',',true}",
                                          "$multilist{ll,x,true}",
                                          "'; touch canary; '",
                                          "\"; touch canary; \"",
                                          "\\'; touch canary; \\'",
                                          "$'",
                                          "a",
                                          "B1",
                                          "\r",
                                          "\x7F",
                                          "\xC3\xA4",
                                          "\xFF",
                                          "\x81",
                                          "\x82",
                                          "\x88",
                                          "do",
                                          "done",
                                          "fi",
                                          "esac",
                                          "x=1"};
  std::string value;
  for (std::size_t i = random.Below(7); i > 0; --i) {
    if (random.Chance(80)) {
      value += random.Pick(kPieces);
    } else {
      const char c = static_cast<char>(random.Below(256));
      // A pattern with one of these could match something even in an empty folder.
      value += c == '/' || c == '.' ? 'x' : c;
    }
  }
  return value;
}

/// Some command lines of one form, and what the shell must show.
class Batch {
 public:
  explicit Batch(const Form& form) : form_(form) {
    spec_ = InputSpec::New();
    for (const char* name : {"xx", "zz"}) {
      spec_->AddParameter(ParameterSpec::New(name, ParameterType::String));
    }
    spec_->AddParameter(ParameterSpec::New("ll", ParameterType::StringList));
    command_ = ExtensionCommand::New();
    command_->SetInputSpec(spec_);
    command_->SetExecuteCommand(form.text);
    script_ = "p() { printf '%s\\0' \"$#\" \"$@\"; }\n";
  }

  /// False when the values would leave their line, in a comment that one of them opens.
  bool Add(const Values& values) {
    ShellWords model;
    form_.model(model, values);
    if (model.LeavesTheLine()) {
      return false;
    }
    auto input = Input::New();
    input->SetInputSpec(spec_);
    input->AddParameter(form_.isList ? "ll" : "xx", values);
    input->AddParameter("zz", "1");
    const std::string line = command_->SubstituteInput(input, false);
    script_ += line + "\n";
    lines_.push_back(line);
    expected_.push_back(Show(model.Finish()));
    return true;
  }

  void ExpectExactlyTheseWords() const {
    const ScopedTempDir folder;
    const std::string script = folder.Write("script", script_);
    const std::string empty = folder.MakeDirectory("empty");
    std::string shown;
    const int status =
        AutoCli_ShellCmd("cd '" + empty + "' && /bin/sh '" + script + "'", shown, "");
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(std::filesystem::is_empty(empty)) << "a value ran a command";
    std::size_t position = 0;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      ASSERT_EQ(shown.substr(position, expected_[i].size()), expected_[i]) << lines_[i];
      position += expected_[i].size();
    }
    EXPECT_EQ(shown.size(), position);
  }

 private:
  static std::string Show(const std::vector<std::string>& words) {
    std::string shown = std::to_string(words.size()) + '\0';
    for (const std::string& word : words) {
      shown += word + '\0';
    }
    return shown;
  }

  const Form& form_;
  std::shared_ptr<InputSpec> spec_;
  std::shared_ptr<ExtensionCommand> command_;
  std::string script_;
  std::vector<std::string> lines_;
  std::vector<std::string> expected_;
};

class SafeFormTest : public testing::TestWithParam<Form> {};

TEST_P(SafeFormTest, TheShellSeesExactlyTheWordsOfTheModel) {
  const ScopedEnvironment home("HOME", std::string(kHome));
  Random random;
  SCOPED_TRACE(random.HowToRepeat());
  const int rounds = Rounds(10000, 1000000);
  int added = 0;
  for (int left = rounds; left > 0 && !HasFailure(); left -= 5000) {
    Batch batch(GetParam());
    for (int i = 0; i < 5000; ++i) {
      Values values(GetParam().isList ? 1 + random.Below(3) : 1);
      for (std::string& value : values) {
        value = MakeValue(random);
      }
      added += batch.Add(values) ? 1 : 0;
    }
    batch.ExpectExactlyTheseWords();
  }
  EXPECT_GT(added, rounds / 2);
}

std::string NameOf(const testing::TestParamInfo<Form>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Forms, SafeFormTest, testing::ValuesIn(SafeForms()), NameOf);

/// What the command line that `text` becomes prints.
std::string OutputOf(const std::string& text, const char* name, const std::string& value) {
  auto spec = InputSpec::New();
  spec->AddParameter(ParameterSpec::New("xx", ParameterType::String));
  spec->AddParameter(ParameterSpec::New("ll", ParameterType::StringList));
  const auto command = ExtensionCommand::New();
  command->SetInputSpec(spec);
  command->SetExecuteCommand(text);
  auto input = Input::New();
  input->SetInputSpec(spec);
  input->AddParameter(name, value);
  std::string output;
  AutoCli_ShellCmd(command->SubstituteInput(input, false), output, "");
  return output;
}

// The shell expands this form: only values that a constraint bounds may stand there.
TEST(UnsafeFormTest, AQuotedMultiListRunsWhatAValueSays) {
  EXPECT_EQ(OutputOf("echo$multilist{ll,-p,true}", "ll", "$(echo ran)"), "-p ran\n");
  EXPECT_EQ(OutputOf("echo$multilist{ll,-p,true}", "ll", "`echo ran`"), "-p ran\n");
}

// A comment ends at a newline, whatever stands before it. Within quotes there are no comments.
TEST(UnsafeFormTest, ABareValueMayOpenACommentAndLeaveItsLine) {
  const std::string value = "#\necho ran";
  EXPECT_EQ(OutputOf("echo a $val{xx}", "xx", value), "a\nran\n");
  EXPECT_EQ(OutputOf("echo a $list{ll,',',false}", "ll", value), "a\nran\n");
  EXPECT_EQ(OutputOf("echo a$multilist{ll,-m,false}", "ll", value), "a -m\nran\n");
  EXPECT_EQ(OutputOf("echo a '$val{xx}'", "xx", value), "a #\necho ran\n");
  EXPECT_EQ(OutputOf("echo a $list{ll,',',true}", "ll", value), "a #echo ran\n");
}

// The last marker of a parameter decides how all of them are written.
TEST(UnsafeFormTest, ABareMarkerBeforeAQuotedOneIsNotProtected) {
  EXPECT_EQ(OutputOf("echo $val{xx} '$val{xx}'", "xx", ";echo ran"), "\nran ;echo ran\n");
}

}  // namespace
}  // namespace Kestrel::AutoCli
