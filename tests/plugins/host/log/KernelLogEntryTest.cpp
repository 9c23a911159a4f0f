// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "plugins/host/frame/FileDescriptor.h"
#include "plugins/host/log/KernelLog.h"
#include "support/Sanitizer.h"
#include "support/ScopedTempDir.h"

// Kernel messages in many forms. In some tests, a pipe that preserves message boundaries replaces
// the device.
namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using Testing::ScopedTempDir;
using ::testing::SizeIs;
using ::testing::ThrowsMessage;

class KernelPipeTest : public ::testing::Test {
 protected:
  KernelPipeTest() : KernelPipeTest(MakePipe()) {}

  void Write(const std::string& entry) const {
    ASSERT_EQ(write_.Write(entry.data(), entry.size()), static_cast<ssize_t>(entry.size()));
  }

  std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (const KernelMessage& message : ReadKernelLog(path_)) {
      texts.push_back(message.text);
    }
    return texts;
  }

  const FileDescriptor read_;
  const FileDescriptor write_;
  const std::string path_;

 private:
  explicit KernelPipeTest(const std::array<int, 2>& ends)
      : read_(ends[0]), write_(ends[1]), path_("/proc/self/fd/" + std::to_string(ends[0])) {}

  static std::array<int, 2> MakePipe() {
    std::array<int, 2> ends = {};
    EXPECT_EQ(::pipe2(ends.data(), O_DIRECT | O_CLOEXEC | O_NONBLOCK), 0);
    return ends;
  }
};

TEST_F(KernelPipeTest, IsReadInItsOrder) {
  Write("6,1,10,-;one\n");
  Write("4,2,20,-;two\n SUBSYSTEM=pci\n");
  Write("3,3,30,c;three");
  EXPECT_THAT(Texts(), ElementsAre("one", "two", "three"));
}

TEST_F(KernelPipeTest, MayBeEmpty) { EXPECT_THAT(Texts(), IsEmpty()); }

TEST_F(KernelPipeTest, AMessageInAnUnknownFormIsAnErrorAndNotAShorterList) {
  Write("6,1,10,-;one\n");
  Write("a new form\n");
  EXPECT_THAT([this] { ReadKernelLog(path_); },
              ThrowsMessage<KestrelException>("Unable to read " + path_ +
                                              ": a message is in an unknown form"));
}

TEST_F(KernelPipeTest, AMessageMayHave4000Bytes) {
  const std::string text(4000, 't');  // fits into one message of such a pipe
  Write("6,1,10,-;" + text + "\n");
  Write("6,2,11,-;next\n");
  EXPECT_THAT(Texts(), ElementsAre(text, "next"));
}

TEST_F(KernelPipeTest, EveryMessageIsRead) {
  std::vector<std::string> expected;
  for (int number = 0; number < 12; ++number) {
    Write("6," + std::to_string(number) + ",1,-;message " + std::to_string(number) + "\n");
    expected.push_back("message " + std::to_string(number));
  }
  EXPECT_THAT(Texts(), ElementsAreArray(expected));
}

TEST_F(KernelPipeTest, TooManyOpenFilesAreAnError) {
  if (Testing::kIsSanitized) {
    GTEST_SKIP() << "the sanitizer needs descriptors of its own";
  }
  struct rlimit limit = {};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
  struct rlimit none = limit;
  none.rlim_cur = 0;
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  EXPECT_THAT([this] { ReadKernelLog(path_); },
              ThrowsMessage<KestrelException>("Unable to read " + path_ + ": Too many open files"));
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
}

TEST(KernelDeviceTest, AFolderIsAnError) {
  const ScopedTempDir folder;
  EXPECT_THAT(
      [&] { ReadKernelLog(folder.GetPath()); },
      ThrowsMessage<KestrelException>("Unable to read " + folder.GetPath() + ": Is a directory"));
}

struct EntryCase {
  const char* name;
  const char* entry;
  int level;
  int facility;
  long microseconds;
  const char* text;
};

const EntryCase kEntries[] = {
    {"TheFirst", "5,0,0,-;Linux version 6.1\n", 5, 0, 0, "Linux version 6.1"},
    {"MostUrgent", "0,7,1,-;panic\n", 0, 0, 1, "panic"},
    {"LeastUrgent", "7,7,1,-;debug\n", 7, 0, 1, "debug"},
    {"OfAProgram", "14,7,1,-;user\n", 6, 1, 1, "user"},
    {"OfADaemon", "28,7,1,-;daemon\n", 4, 3, 1, "daemon"},
    {"OfTheLastFacility", "191,7,1,-;local\n", 7, 23, 1, "local"},
    {"OfAnUnknownFacility", "800,7,1,-;far\n", 0, 100, 1, "far"},
    {"AfterYears", "6,7,99999999999999,-;late\n", 6, 0, 99999999999999, "late"},
    {"AContinuation", "6,7,1,c;part\n", 6, 0, 1, "part"},
    {"WithItsCaller", "6,7,1,-,caller=C3;text\n", 6, 0, 1, "text"},
    {"WithFieldsOfANewKernel", "6,7,1,-,caller=T9,future=x;text\n", 6, 0, 1, "text"},
    {"Empty", "6,7,1,-;\n", 6, 0, 1, ""},
    {"OnlyASpace", "6,7,1,-; \n", 6, 0, 1, " "},
    {"AnotherTimeInTheText", "6,7,1,-;[    5.0] x\n", 6, 0, 1, "[    5.0] x"},
    {"APriorityInTheText", "6,7,1,-;<3>x\n", 6, 0, 1, "<3>x"},
    {"WithoutANewline", "6,7,1,-;text", 6, 0, 1, "text"},
    {"WithSemicolons", "6,7,1,-;a;b;c\n", 6, 0, 1, "a;b;c"},
    {"WithCommas", "6,7,1,-;a,b\n", 6, 0, 1, "a,b"},
    {"WithSpaces", "6,7,1,-;  a  \n", 6, 0, 1, "  a  "},
    {"ALineFeed", "6,7,1,-;a\\x0ab\n", 6, 0, 1, "a\nb"},
    {"ATab", "6,7,1,-;a\\x09b\n", 6, 0, 1, "a\tb"},
    {"ABackslash", "6,7,1,-;a\\x5cx0ab\n", 6, 0, 1, "a\\x0ab"},
    {"AnEscapeOfATerminal", "6,7,1,-;\\x1b[31m\n", 6, 0, 1, "\x1b[31m"},
    {"NotAscii", "6,7,1,-;\\xc3\\xa4\n", 6, 0, 1, "\xc3\xa4"},
    {"NotDecodedTwice", "6,7,1,-;\\x5cx5cx41\n", 6, 0, 1, "\\x5cx41"},
    {"NoHexadecimalDigits", "6,7,1,-;\\xgg \\x4 \\x\n", 6, 0, 1, "\\xgg \\x4 \\x"},
    {"UpperCaseIsNotOfTheKernel", "6,7,1,-;\\xAB\n", 6, 0, 1, "\\xAB"},
    {"Properties", "6,7,1,-;usb\n SUBSYSTEM=usb\n DEVICE=+usb:1-1\n", 6, 0, 1, "usb"},
};

class KernelEntryTest : public ::testing::TestWithParam<EntryCase> {};

TEST_P(KernelEntryTest, IsParsed) {
  const auto message = ParseKernelMessage(GetParam().entry);
  ASSERT_TRUE(message.has_value());
  EXPECT_EQ(message->level, GetParam().level);
  EXPECT_EQ(message->facility, GetParam().facility);
  EXPECT_EQ(message->microseconds, GetParam().microseconds);
  EXPECT_EQ(message->text, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Entries, KernelEntryTest, ::testing::ValuesIn(kEntries),
                         [](const auto& test) { return test.param.name; });

TEST(KernelEntryFormTest, IsRejectedIfItEndsBeforeItsText) {
  const std::string entry = "30,12,345678901,-;text";
  const std::size_t text = entry.find(';') + 1;
  for (std::size_t length = 0; length < text; ++length) {
    EXPECT_FALSE(ParseKernelMessage(entry.substr(0, length)).has_value()) << length;
  }
  for (std::size_t length = text; length <= entry.size(); ++length) {
    const auto message = ParseKernelMessage(entry.substr(0, length));
    ASSERT_TRUE(message.has_value()) << length;
    EXPECT_EQ(message->text, entry.substr(text, length - text));
  }
}

TEST(KernelEntryFormTest, RejectsInvalidNumbers) {
  for (const char* const entry :
       {"6.5,1,1,-;x", "6 6,1,1,-;x", "0x6,1,1,-;x", ",1,1,-;x", "6,1,,-;x", "6,1,1s,-;x",
        "99999999999999999999,1,1,-;x", "6,1,99999999999999999999,-;x", "\n6,1,1,-;x"}) {
    EXPECT_FALSE(ParseKernelMessage(entry).has_value()) << entry;
  }
}

TEST(KernelEntryFormTest, EveryFacilityHasItsWord) {
  const std::vector<std::string> words = {
      "kern",   "user",   "mail",     "daemon", "auth",   "syslog",   "lpr",     "news",
      "uucp",   "cron",   "authpriv", "ftp",    "ntp",    "security", "console", "clock",
      "local0", "local1", "local2",   "local3", "local4", "local5",   "local6",  "local7"};
  for (std::size_t facility = 0; facility < words.size(); ++facility) {
    const auto message = ParseKernelMessage(std::to_string(8 * facility + 2) + ",1,1,-;x");
    ASSERT_TRUE(message.has_value());
    EXPECT_EQ(message->level, 2);
    EXPECT_EQ(FacilityName(message->facility), words[facility]);
  }
}

}  // namespace
}  // namespace Kestrel::Host
