// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Runs filled templates in the real shell. A model derives the words of a command line from the
// rules of the template language and those of the shell. The shell must see exactly these words and
// must not run anything else.

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

/// Divides one command line into words by the rules of the shell, in a folder without files.
class ShellWords {
 public:
  /// Adds a byte without quotes or a backslash. It must not be an operator of the shell.
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

  /// Quotes begin a word, even if there is nothing between them.
  void OpenQuotes() {
    if (!inComment_) {
      inWord_ = true;
      wasQuoted_ = true;
    }
  }

  /// Adds a value without quotes, with a backslash before every special byte. The shell drops a
  /// newline together with its backslash. In a comment the newline counts: it ends the comment, and
  /// the rest is another command line.
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

  /// Adds a value between double quotes, with a backslash before every special byte. The shell
  /// drops the backslash before four of them, and the newline with its own.
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

/// The text of a conditional ends at the first "}", even if that comes from a value. The brace of
/// the conditional itself then remains. Returns `value` without its first "}", and sets `after` to
/// the brace that remains.
std::string CutAtBrace(const std::string& value, std::string& after) {
  const std::size_t brace = value.find('}');
  after = brace == std::string::npos ? "" : "}";
  std::string rest = value;
  return brace == std::string::npos ? rest : rest.erase(brace, 1);
}

/// A safe way to write the parameter "xx" (a string) or "ll" (a list) into a template. `text` is
/// the template; its command `p` prints its words. `model` adds the expected words.
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
    std::string after;
    words.AddBare("-n ");
    words.AddBareValue(CutAtBrace(values[0], after));
    words.AddBare(after + " end");
  };
  const auto keptQuoted = [](ShellWords& words, const Values& values) {
    std::string after;
    words.AddBare("-n ");
    words.AddSingleQuotedValue(CutAtBrace(values[0], after));
    words.AddBare(after + " end");
  };
  // Lists are inserted after the text was cut at the first "}", so their braces do not end it.
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

std::string MakeValue(Random& random) {
  std::string value;
  for (std::size_t i = random.Below(7); i > 0; --i) {
    if (random.Chance(80)) {
      value += random.Pick(kPieces);
    } else {
      const char c = static_cast<char>(random.Below(256));
      // A pattern with one of these could match a path even in an empty folder.
      value += c == '/' || c == '.' ? 'x' : c;
    }
  }
  return value;
}

/// Command lines of one form, and the words that the shell must print for them.
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

  /// Adds a command line. Returns false, and adds nothing, when a value opens a comment and a
  /// newline in a value ends it.
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

/// Returns what the command line prints that results from the template `text`.
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

// The shell expands values in this form, so a constraint must limit them.
TEST(UnsafeFormTest, AQuotedMultiListRunsCommandsInAValue) {
  EXPECT_EQ(OutputOf("echo$multilist{ll,-p,true}", "ll", "$(echo ran)"), "-p ran\n");
  EXPECT_EQ(OutputOf("echo$multilist{ll,-p,true}", "ll", "`echo ran`"), "-p ran\n");
}

// A comment ends at a newline, even after a backslash. There are no comments between quotes.
TEST(UnsafeFormTest, ABareValueMayOpenACommentAndLeaveItsLine) {
  const std::string value = "#\necho ran";
  EXPECT_EQ(OutputOf("echo a $val{xx}", "xx", value), "a\nran\n");
  EXPECT_EQ(OutputOf("echo a $list{ll,',',false}", "ll", value), "a\nran\n");
  EXPECT_EQ(OutputOf("echo a$multilist{ll,-m,false}", "ll", value), "a -m\nran\n");
  EXPECT_EQ(OutputOf("echo a '$val{xx}'", "xx", value), "a #\necho ran\n");
  EXPECT_EQ(OutputOf("echo a $list{ll,',',true}", "ll", value), "a #echo ran\n");
}

// The last marker of a parameter determines how the value is written into all of them.
TEST(UnsafeFormTest, ABareMarkerBeforeAQuotedOneIsNotProtected) {
  EXPECT_EQ(OutputOf("echo $val{xx} '$val{xx}'", "xx", ";echo ran"), "\nran ;echo ran\n");
}

}  // namespace
}  // namespace Kestrel::AutoCli
