// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Runs filled templates in the real shell. A model derives the words of a command line from the
// rules of the template language and those of the shell. The shell must see exactly these words and
// must not run anything else.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/autocli/CommandOutput.h"
#include "kestrel/autocli/ExtensionCommand.h"
#include "kestrel/autocli/Util.h"
#include "kestrel/callspec/Input.h"
#include "kestrel/callspec/InputSpec.h"
#include "kestrel/callspec/OutputSpec.h"
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
  /// Adds a byte that is neither in quotes nor after a backslash. It must not be an operator of the
  /// shell.
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
  /// newline together with its backslash. In a comment a backslash has no effect, so a newline ends
  /// the comment and the rest is another command line.
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
  /// drops the backslash before four of these bytes, and drops a newline together with its
  /// backslash.
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
/// the brace that remains, or to an empty string if `value` has no "}".
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
  // Lists are inserted after the text of a conditional was cut at the first "}", so a "}" in their
  // values does not end that text.
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

/// A shell that is /bin/sh on some system.
struct Shell {
  std::string path;
  bool expandsMore;  // than the standard demands: "{a,b}" becomes two words
};

/// Returns the shell of the machine and, if it is installed, bash. Bash is started through a link
/// in `folder` that has the name sh.
std::vector<Shell> MakeShells(const ScopedTempDir& folder) {
  std::vector<Shell> shells = {{"/bin/sh", false}};
  const std::filesystem::path bash = "/bin/bash";
  if (std::filesystem::exists(bash)) {
    std::filesystem::create_symlink(bash, folder.GetPath("sh"));
    shells.push_back({folder.GetPath("sh"), false});
  }
  for (Shell& shell : shells) {
    std::string expanded;
    AutoCli_ShellCmd("'" + shell.path + "' -c 'echo {a,b}'", expanded, "");
    shell.expandsMore = expanded == "a b\n";
  }
  return shells;
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

  /// Adds a command line. Returns false, and adds nothing, when the values are refused.
  bool Add(const Values& values) {
    ShellWords model;
    form_.model(model, values);
    auto input = Input::New();
    input->SetInputSpec(spec_);
    input->AddParameter(form_.isList ? "ll" : "xx", values);
    input->AddParameter("zz", "1");
    std::string line;
    try {
      line = command_->SubstituteInput(input, false);
    } catch (const KestrelException&) {
      EXPECT_TRUE(HasNewlineAfterHash(Join(values, ""))) << Join(values, "\n");
      return false;
    }
    EXPECT_FALSE(model.LeavesTheLine()) << line;
    script_ += line + "\n";
    lines_.push_back(line);
    expected_.push_back(model.Finish());
    return true;
  }

  /// Runs the command lines in `shell` and compares their words with the expected ones. If `shell`
  /// expands more than the standard demands, command lines that contain a "{" or a tilde are not
  /// compared.
  void ExpectExactlyTheseWords(const Shell& shell) const {
    const ScopedTempDir folder;
    const std::string script = folder.Write("script", script_);
    const std::string empty = folder.MakeDirectory("empty");
    std::string shown;
    const int status =
        AutoCli_ShellCmd("cd '" + empty + "' && '" + shell.path + "' '" + script + "'", shown, "");
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(std::filesystem::is_empty(empty)) << "a value ran a command";
    std::size_t position = 0;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      const std::vector<std::string> words = TakeWords(shown, position);
      if (!shell.expandsMore || lines_[i].find_first_of("{~") == std::string::npos) {
        ASSERT_EQ(words, expected_[i]) << lines_[i];
      }
    }
    EXPECT_EQ(shown.size(), position);
  }

 private:
  static bool HasNewlineAfterHash(const std::string& value) {
    const std::size_t hash = value.find('#');
    return hash != std::string::npos && value.find('\n', hash) != std::string::npos;
  }

  static std::string TakeWord(const std::string& shown, std::size_t& position) {
    const std::size_t end = std::min(shown.find('\0', position), shown.size());
    const std::string word = shown.substr(position, end - position);
    position = std::min(end + 1, shown.size());
    return word;
  }

  /// Returns the words that one command printed. Their number precedes them in `shown`.
  static std::vector<std::string> TakeWords(const std::string& shown, std::size_t& position) {
    std::vector<std::string> words;
    for (int left = std::atoi(TakeWord(shown, position).c_str()); left > 0; --left) {
      words.push_back(TakeWord(shown, position));
    }
    return words;
  }

  const Form& form_;
  std::shared_ptr<InputSpec> spec_;
  std::shared_ptr<ExtensionCommand> command_;
  std::string script_;
  std::vector<std::string> lines_;
  std::vector<std::vector<std::string>> expected_;
};

class SafeFormTest : public testing::TestWithParam<Form> {};

TEST_P(SafeFormTest, TheShellSeesExactlyTheWordsOfTheModel) {
  const ScopedEnvironment home("HOME", std::string(kHome));
  const ScopedTempDir folder;
  const std::vector<Shell> shells = MakeShells(folder);
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
    for (const Shell& shell : shells) {
      batch.ExpectExactlyTheseWords(shell);
    }
  }
  EXPECT_GT(added, rounds / 2);
}

std::string NameOf(const testing::TestParamInfo<Form>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Forms, SafeFormTest, testing::ValuesIn(SafeForms()), NameOf);

/// Returns the output of the command line that results from the template `text`.
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

/// Executes a command. Returns its message if a value was refused, otherwise an empty string.
std::string RefusalOf(const std::string& text, const Values& xx, const Values& ll,
                      const Values& yy) {
  auto spec = InputSpec::New();
  spec->AddParameter(ParameterSpec::New("xx", ParameterType::String));
  spec->AddParameter(ParameterSpec::New("yy", ParameterType::String));
  spec->AddParameter(ParameterSpec::New("ll", ParameterType::StringList));
  const auto command = ExtensionCommand::New();
  command->SetInputSpec(spec);
  command->SetOutputSpec(CallSpec::OutputSpec::New());
  command->SetExecuteCommand(text);
  auto input = Input::New();
  input->SetInputSpec(spec);
  for (const auto& [name, values] : {std::pair{"xx", xx}, {"yy", yy}, {"ll", ll}}) {
    if (!values.empty()) {
      input->AddParameter(name, values);
    }
  }
  auto output = CommandOutput::New();
  command->ExecuteInternal(input, output);
  const std::string message = Join(Values(output->GetErrors()), "|");
  return message.find("is not passed to the shell") == std::string::npos ? "" : message;
}

/// Does the same as `RefusalOf`, and expects that something runs if, and only if, no value was
/// refused.
std::string MessageOf(const std::string& text, const Values& xx, const Values& ll,
                      const Values& yy = {}) {
  const ScopedTempDir folder;
  const std::string canary = "touch '" + folder.GetPath("canary") + "'; ";
  std::string message = RefusalOf(canary + text, xx, ll, yy);
  EXPECT_EQ(message.empty(), !std::filesystem::is_empty(folder.GetPath())) << message;
  return message;
}

// A comment ends at a newline, even after a backslash: what follows would be another command.
TEST(UnsafeFormTest, ABareValueWithANewlineAfterAHashIsRefused) {
  const std::string value = "#\necho ran";
  const auto refusal = [](const std::string& name) {
    return "The value of the parameter '" + name +
           "' is not passed to the shell: it contains a '#' and after it a newline";
  };
  EXPECT_EQ(MessageOf("echo a $val{xx}", {value}, {}), refusal("xx"));
  EXPECT_EQ(MessageOf("echo a $val{xx}", {"C# x\\ \ny"}, {}), refusal("xx"));
  EXPECT_EQ(MessageOf("echo a $if{xx,-n $val{xx}}", {value}, {}), refusal("xx"));
  EXPECT_EQ(MessageOf("echo a '$val{xx}' $val{xx}", {value}, {}), refusal("xx"));
  EXPECT_EQ(MessageOf("echo a $val{xx} '$val{xx}'", {value}, {}), refusal("xx"));
  EXPECT_EQ(MessageOf("echo a $list{ll,',',false}", {}, {value}), refusal("ll"));
  EXPECT_EQ(MessageOf("echo a $list{ll,',',false}", {}, {"#", "\necho ran"}), refusal("ll"));
  EXPECT_EQ(MessageOf("echo a$multilist{ll,-m,false}", {}, {value}), refusal("ll"));
  EXPECT_EQ(MessageOf("echo a$multilist{ll,-m,false}", {}, {"#", "\necho ran"}), refusal("ll"));
  EXPECT_EQ(MessageOf("echo $val{yy} $list{ll,',',false}", {}, {value}, {"a\nb#"}), refusal("ll"));
  EXPECT_EQ(MessageOf("echo $if{no,$val{xx}} $val{yy}", {value}, {}, {value}), refusal("yy"));
}

TEST(UnsafeFormTest, ABareValueThatCouldEndTheCommentOfAnEarlierValueIsRefused) {
  const std::string refusal =
      "The value of the parameter 'yy' is not passed to the shell: it contains a newline, and a "
      "value before it begins with a '#'";
  EXPECT_EQ(MessageOf("echo $val{xx} $val{yy}", {"#"}, {}, {"\necho ran"}), refusal);
  EXPECT_EQ(MessageOf("echo $val{xx} $val{yy}", {"a #1"}, {}, {"a\nb"}), refusal);
  EXPECT_EQ(MessageOf("echo a;$val{xx} $val{yy}", {"#"}, {}, {"a\nb"}), refusal);
  EXPECT_EQ(MessageOf("echo $val{xx} $val{yy}", {"# #"}, {}, {"a\nb"}), refusal);
  EXPECT_EQ(RefusalOf("$val{xx} $val{yy}", {"#"}, {}, {"a\nb"}), refusal);
  EXPECT_EQ(MessageOf("echo a$val{xx} $val{yy}", {"#"}, {}, {"a\nb"}), "");
  EXPECT_EQ(MessageOf("echo a#$val{xx} $val{yy}", {"c"}, {}, {"a\nb"}), "");
  EXPECT_EQ(MessageOf("echo $val{xx} $val{yy}", {";#"}, {}, {"a\nb"}), "");
  EXPECT_EQ(
      MessageOf("echo a\necho $list{ll,',',false} $val{xx} $val{yy}", {"a\nb"}, {"#"}, {"c"}),
      "The value of the parameter 'xx' is not passed to the shell: it contains a newline, and a "
      "value before it begins with a '#'");
  EXPECT_EQ(MessageOf("echo $val{yy} $val{xx}", {"#"}, {}, {"a\nb"}), "");
  EXPECT_EQ(MessageOf("echo $val{xx}\necho $val{yy}", {"#"}, {}, {"a\nb"}), "");
  EXPECT_EQ(MessageOf("echo $val{xx} $val{yy}", {"C#"}, {}, {"a\nb"}), "");
  EXPECT_EQ(MessageOf("echo '$val{xx}' $val{yy}", {"#"}, {}, {"a\nb"}), "");
  EXPECT_EQ(MessageOf("echo $val{xx} '$val{yy}'", {"#"}, {}, {"a\nb"}), "");
}

TEST(UnsafeFormTest, OtherValuesWithNewlinesPass) {
  EXPECT_EQ(OutputOf("echo a $val{xx}", "xx", "b\nc # d"), "a bc\n");
  EXPECT_EQ(OutputOf("echo a $val{xx}", "xx", "b\nc#d"), "a bc#d\n");
  EXPECT_EQ(OutputOf("echo a $list{ll,',',false}", "ll", "b\nc"), "a bc\n");
  EXPECT_EQ(OutputOf("echo a$multilist{ll,-m,false}", "ll", "b\nc"), "a -m bc\n");
  EXPECT_EQ(OutputOf("echo a '$val{xx}'", "xx", "#\necho ran"), "a #\necho ran\n");
  EXPECT_EQ(OutputOf("echo a $list{ll,',',true}", "ll", "#\necho ran"), "a #echo ran\n");
  EXPECT_EQ(OutputOf("echo a$multilist{ll,-m,true}", "ll", "#\necho ran"), "a -m #\necho ran\n");
  EXPECT_EQ(OutputOf("echo a $if{no,$val{xx}}", "xx", "#\necho ran"), "a\n");
}

TEST(UnsafeFormTest, StandardInputTakesAValueWithANewlineAfterAHash) {
  auto spec = InputSpec::New();
  spec->AddParameter(ParameterSpec::New("xx", ParameterType::String));
  const auto command = ExtensionCommand::New();
  command->SetInputSpec(spec);
  command->SetStdin("$val{xx}");
  auto input = Input::New();
  input->SetInputSpec(spec);
  input->AddParameter("xx", "#\necho");
  EXPECT_EQ(command->SubstituteInput(input, true), "#\necho");
}

// The last marker of a parameter determines how the value is written into all markers of that
// parameter.
TEST(UnsafeFormTest, ABareMarkerBeforeAQuotedOneIsNotProtected) {
  EXPECT_EQ(OutputOf("echo $val{xx} '$val{xx}'", "xx", ";echo ran"), "\nran ;echo ran\n");
}

}  // namespace
}  // namespace Kestrel::AutoCli
