// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// No copy of a secret is left in memory after the command that prompted for it.

#include "autocli/process/TypedSecrets.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <string>
#include <vector>

#include "kestrel/autocli/CliDispatcher.h"
#include "kestrel/autocli/OptionParser.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"
#include "support/StreamCapture.h"

namespace Kestrel::AutoCli {
namespace {

using Testing::ScopedTempDir;
using Testing::StreamCapture;

// Each byte of the secret, plus one: the program contains no copy of the secret itself.
constexpr std::array<char, 23> kShifted = {'P', 'q', 'f', 'o', '.', 'T', 'f', 't',
                                           'b', 'n', 'f', '.', 'x', 'j', 'u', 'i',
                                           '.', 'Q', 'p', 'q', 'q', 'z', '8'};

char SecretByte(std::size_t index) { return static_cast<char>(kShifted[index] - 1); }

/// Returns the number of copies of the secret in the memory that this process can write.
int CountCopies() {
  std::ifstream maps("/proc/self/maps");
  const int memory = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
  std::vector<char> block(1 << 16);
  int copies = 0;
  for (std::string line; std::getline(maps, line);) {
    unsigned long begin = 0;
    unsigned long end = 0;
    char writable = '-';
    if (sscanf(line.c_str(), "%lx-%lx r%c", &begin, &end, &writable) != 3 || writable != 'w') {
      continue;
    }
    for (unsigned long at = begin; at < end; at += block.size() - kShifted.size()) {
      const ssize_t size =
          pread(memory, block.data(), std::min(block.size(), end - at), static_cast<off_t>(at));
      for (ssize_t i = 0; i + static_cast<ssize_t>(kShifted.size()) <= size; ++i) {
        std::size_t same = 0;
        while (same < kShifted.size() &&
               block[static_cast<std::size_t>(i) + same] == SecretByte(same)) {
          ++same;
        }
        // `block` is part of the memory that is searched. Its own contents do not count.
        const unsigned long address = at + static_cast<unsigned long>(i);
        const auto own = reinterpret_cast<unsigned long>(block.data());
        copies +=
            same == kShifted.size() && (address < own || address >= own + block.size()) ? 1 : 0;
      }
    }
  }
  close(memory);
  return copies;
}

// The number of bytes that are typed before the secret in the same line. To copy such a long line,
// the C library uses vector registers that it does not use for a short one, and the end of the line
// stays in them.
constexpr std::size_t kBytesBefore = 2000;

/// Replaces standard input by a long line that ends with the secret.
void TypeSecret() {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const std::string before(kBytesBefore, 'x');
  ASSERT_EQ(write(ends[1], before.data(), before.size()), static_cast<ssize_t>(before.size()));
  for (std::size_t i = 0; i < kShifted.size(); ++i) {
    const char byte = SecretByte(i);
    ASSERT_EQ(write(ends[1], &byte, 1), 1);
  }
  ASSERT_EQ(write(ends[1], "\n", 1), 1);
  close(ends[1]);
  dup2(ends[0], STDIN_FILENO);
  close(ends[0]);
}

std::string Descriptor(const std::string& execute, const std::string& input) {
  return "<x><version>1.0.0</version><namespaces><namespace path='sec'><description>S."
         "</description></namespace></namespaces><commands><command path='sec.use'><description>U."
         "</description><input-spec><parameter name='password' type='string' required='true' "
         "secret='true' shortname='p'><description>P.</description></parameter></input-spec>"
         "<output-spec><string/></output-spec><format-parameters/><execute>" +
         execute + "</execute><stdin>" + input + "</stdin></command></commands></x>";
}

/// Calls the command and answers its prompt with the line of `TypeSecret`. Returns what went to
/// standard error.
std::string Call(const std::string& execute, const std::string& input) {
  const ScopedTempDir folder;
  const std::string path = folder.Write("sec.xml", Descriptor(execute, input));
  const int before = dup(STDIN_FILENO);
  TypeSecret();
  std::string messages;
  {
    StreamCapture out(STDOUT_FILENO);
    StreamCapture error(STDERR_FILENO);
    CliDispatcher dispatcher;
    dispatcher.AddPlugin(path);
    OptionParser parser;
    parser.ParseString("sec use --password");
    dispatcher.HandleOptions(parser, false);
    messages = error.GetText();
  }
  dup2(before, STDIN_FILENO);
  close(before);
  return messages;
}

TEST(TypedSecretsTest, NoCopyIsLeftAfterACommandThatPassedItToStandardInput) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "The sanitizer keeps memory that was released";
  }
  EXPECT_EQ(
      Call("cat >/dev/null; printf '&lt;o>&lt;string>x&lt;/string>&lt;/o>'", "$val{password}"), "");
  EXPECT_EQ(CountCopies(), 0);
}

// Tries each form in which a template inserts a value into a command line. The command prints
// nothing, so a message quotes the command line.
TEST(TypedSecretsTest, NoCopyIsLeftAfterACommandLineThatContainedIt) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "The sanitizer keeps memory that was released";
  }
  for (const std::string form :
       {"'$val{password}'", "$val{password}", "$list{password,',',true}",
        "$list{password,',',false}", "$multilist{password,-p,true}",
        "$multilist{password,-p,false}", "$if{password,-p $val{password}}"}) {
    EXPECT_NE(Call("true " + form, "").find("***"), std::string::npos) << form;
    EXPECT_EQ(CountCopies(), 0) << form;
  }
}

TEST(TypedSecretsTest, ACopyIsFoundUntilItIsWiped) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "The sanitizer has too much memory to search";
  }
  std::string copy;
  for (std::size_t i = 0; i < kShifted.size(); ++i) {
    copy += SecretByte(i);
  }
  EXPECT_GE(CountCopies(), 1);
  Wipe(copy);
  EXPECT_EQ(copy, "");
  EXPECT_EQ(CountCopies(), 0);
}

// A string that has become shorter keeps what it contained before.
TEST(TypedSecretsTest, WipesAStringBeyondItsEnd) {
  std::string text = "a former text of some length";
  const char* const bytes = text.data();
  text.resize(2);
  ASSERT_EQ(bytes[3], 'o');
  Wipe(text);
  EXPECT_EQ(text.data(), bytes);
  for (int i = 0; i < 28; ++i) {
    EXPECT_EQ(bytes[i], '\0') << i;
  }
}

/// Leaves a copy of the secret below the used part of the stack.
[[gnu::noinline]] void LeaveCopyOnStack() {
  std::array<volatile char, 80 * 1024> frame;
  for (std::size_t i = 0; i < kShifted.size(); ++i) {
    frame[i] = SecretByte(i);
  }
}

TEST(TypedSecretsTest, CopiesBelowTheUsedStackAreWiped) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "The sanitizer has too much memory to search";
  }
  {
    const TypedSecrets secrets;
    TypedSecrets::Expect();
    LeaveCopyOnStack();
    EXPECT_EQ(CountCopies(), 1);
  }
  EXPECT_EQ(CountCopies(), 0);
}

TEST(TypedSecretsTest, IsMaskedInAMessage) {
  const std::string message = Call("true '$val{password}'", "");
  EXPECT_NE(message.find("Command \"true '***'\""), std::string::npos) << message;
  std::string secret;
  for (std::size_t i = 0; i < kShifted.size(); ++i) {
    secret += SecretByte(i);
  }
  EXPECT_EQ(message.find(secret), std::string::npos);
  Wipe(secret);
}

TEST(TypedSecretsTest, CoreDumpsAreDisabledOnceASecretIsExpected) {
  rlimit original = {};
  getrlimit(RLIMIT_CORE, &original);
  const rlimit before = {std::min<rlim_t>(4096, original.rlim_max), original.rlim_max};
  if (before.rlim_cur == 0) {
    GTEST_SKIP() << "this process may not have core dumps";
  }
  setrlimit(RLIMIT_CORE, &before);
  const int wasDumpable = prctl(PR_GET_DUMPABLE);
  prctl(PR_SET_DUMPABLE, 1);
  {
    const TypedSecrets secrets;
    EXPECT_EQ(prctl(PR_GET_DUMPABLE), 1);
    TypedSecrets::Expect();
    rlimit within = {};
    getrlimit(RLIMIT_CORE, &within);
    // At 0, the system would still pipe core dumps of child processes to a program.
    EXPECT_EQ(within.rlim_cur, 1u);
    EXPECT_EQ(prctl(PR_GET_DUMPABLE), 0);
  }
  rlimit after = {};
  getrlimit(RLIMIT_CORE, &after);
  setrlimit(RLIMIT_CORE, &original);
  EXPECT_EQ(after.rlim_cur, before.rlim_cur);
  EXPECT_EQ(prctl(PR_GET_DUMPABLE), 1);
  prctl(PR_SET_DUMPABLE, wasDumpable);
}

TEST(TypedSecretsTest, MasksOnlyWhatIsAddedAfterASecretIsExpected) {
  EXPECT_EQ(TypedSecrets::Mask("a b a"), "a b a");
  const TypedSecrets secrets;
  TypedSecrets::Add("a");
  EXPECT_EQ(TypedSecrets::Mask("a b a"), "a b a");
  TypedSecrets::Expect();
  TypedSecrets::Add("a");
  TypedSecrets::Add("");
  EXPECT_EQ(TypedSecrets::Mask("a b a"), "*** b ***");
  {
    const TypedSecrets inner;
    EXPECT_EQ(TypedSecrets::Mask("a"), "***");
  }
  EXPECT_EQ(TypedSecrets::Mask("a"), "***");
}

TEST(TypedSecretsTest, AStringIsWipedOnlyIfItIsASecret) {
  std::string secret = "pw";
  std::string other = "other";
  const TypedSecrets secrets;
  TypedSecrets::WipeIfSecret(secret);
  EXPECT_EQ(secret, "pw");
  TypedSecrets::Expect();
  TypedSecrets::Add("first");
  TypedSecrets::Add("pw");
  TypedSecrets::WipeIfSecret(secret);
  TypedSecrets::WipeIfSecret(other);
  EXPECT_EQ(secret, "");
  EXPECT_EQ(other, "other");
}

TEST(TypedSecretsTest, EveryOccurrenceIsMasked) {
  const TypedSecrets secrets;
  TypedSecrets::Expect();
  TypedSecrets::Add("pw");
  EXPECT_EQ(TypedSecrets::Mask("pwpw"), "******");
  TypedSecrets::Add("*");
  EXPECT_EQ(TypedSecrets::Mask("a*b**"), "a***b******");
}

TEST(TypedSecretsTest, TheEscapedFormIsMaskedToo) {
  const TypedSecrets secrets;
  TypedSecrets::Expect();
  TypedSecrets::Add("a'b");
  const auto escape = [](const std::string&) { return std::string("a'\\''b"); };
  EXPECT_EQ(TypedSecrets::Mask("x a'\\''b a'b", escape), "x *** ***");
}

}  // namespace
}  // namespace Kestrel::AutoCli
