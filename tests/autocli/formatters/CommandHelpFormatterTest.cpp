// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/CommandHelpFormatter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iomanip>
#include <ios>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "support/Golden.h"
#include "support/LimitedBuffer.h"
#include "support/SampleValues.h"

namespace Kestrel::AutoCli {
namespace {

using namespace ::Kestrel::Testing;  // NOLINT: helpers of these tests
using MetaObj::MetaInt;
using MetaObj::MetaList;
using MetaObj::MetaObject;
using MetaObj::MetaString;
using MetaObj::MetaStruct;
using MetaObj::MetaType;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

struct Parameter {
  std::string name;
  std::string shortName;
  std::string description;
  bool isRequired = false;
  bool isSecret = false;
};

struct Example {
  std::string description;
  std::string syntax;
};

std::shared_ptr<MetaStruct> MakeParameter(const Parameter& parameter) {
  auto structure = MetaStruct::New("VexilCommandParameter");
  structure->SetField("Name", parameter.name);
  structure->SetField("Short Name", parameter.shortName);
  structure->SetField("Description", parameter.description);
  structure->SetField("Required", parameter.isRequired);
  structure->SetField("Secret", parameter.isSecret);
  return structure;
}

std::shared_ptr<MetaStruct> MakeExample(const Example& example) {
  auto structure = MetaStruct::New("VexilCommandExample");
  structure->SetField("Description", example.description);
  structure->SetField("Syntax", example.syntax);
  return structure;
}

std::shared_ptr<MetaStruct> MakePage(const std::vector<Parameter>& parameters,
                                     const std::vector<Example>& examples = {}) {
  const auto parameterList = MetaList::New(MetaType::Struct, MakeParameter({}));
  for (const Parameter& parameter : parameters) {
    parameterList->Add(MakeParameter(parameter));
  }
  const auto exampleList = MetaList::New(MetaType::Struct, MakeExample({}));
  for (const Example& example : examples) {
    exampleList->Add(MakeExample(example));
  }
  auto page = MetaStruct::New("VexilCommandHelp");
  page->SetField("Dispatcher", "vexil");
  page->SetField("Path", "storage disk list");
  page->SetField("Description", "List the disks.");
  page->SetField("Param List", parameterList);
  page->SetField("Example List", exampleList);
  return page;
}

std::string Print(const std::shared_ptr<MetaObject>& page, int width = 0) {
  CommandHelpFormatter formatter;
  return FormatToText(formatter, page, {}, width);
}

const char kHead[] =
    "Usage: vexil storage disk list <options>\n"
    "\n"
    "Description: List the disks.\n"
    "\n";

/// Returns the page without its first lines.
std::string PrintBody(const std::shared_ptr<MetaObject>& page, int width = 0) {
  const std::string text = Print(page, width);
  EXPECT_THAT(text, StartsWith(kHead));
  return text.substr(std::min(std::string(kHead).size(), text.size()));
}

TEST(CommandHelpFormatterTest, DocumentsItself) {
  const CommandHelpFormatter formatter;
  EXPECT_EQ(formatter.GetName(), "commandhelp");
  EXPECT_EQ(formatter.GetDescription(), "Handle --help output for commands");
  EXPECT_THAT(formatter.GetParams(), IsEmpty());
}

TEST(CommandHelpFormatterTest, RefusesARootThatIsNotAHelpPage) {
  const std::shared_ptr<MetaObject> roots[] = {nullptr,
                                               MetaInt::New(1),
                                               MetaList::New(MetaType::Int),
                                               MetaStruct::New("Other"),
                                               MetaStruct::New("vexilcommandhelp"),
                                               std::make_shared<LyingValue>(MetaType::Struct)};
  for (const auto& root : roots) {
    CommandHelpFormatter formatter;
    FormatParameters params;
    DisplayContext display;
    std::ostringstream out;
    EXPECT_THAT([&] { formatter.Format(MakeOutput(root), params, display, out); },
                ThrowsMessage<KestrelException>("Error: Unexpected type for output, formatter "
                                                "expected a struct with help information"));
    EXPECT_EQ(out.str(), "");
  }
}

TEST(CommandHelpFormatterTest, WithoutParametersAndExamplesPrintsUsageAndDescriptionOnly) {
  EXPECT_EQ(Print(MakePage({})), kHead);
}

TEST(CommandHelpFormatterTest, DoesNotWrapTheDescriptionOfTheCommand) {
  const auto page = MakePage({});
  page->SetField("Description", "Some words that are longer than the screen\nand a second line");
  EXPECT_EQ(Print(page, 20),
            "Usage: vexil storage disk list <options>\n\n"
            "Description: Some words that are longer than the screen\nand a second line\n\n");
}

TEST(CommandHelpFormatterTest, MissingStringsCountAsEmpty) {
  EXPECT_EQ(Print(MetaStruct::New("VexilCommandHelp")), "Usage:   <options>\n\nDescription: \n\n");
  const auto page = MetaStruct::New("VexilCommandHelp");
  page->SetField("Dispatcher", 1);
  page->SetField("Path", std::vector<std::string>{"a", "b"});
  page->SetField("Description", true);
  page->SetField("Param List", "none");
  page->SetField("Example List", 5);
  EXPECT_EQ(Print(page), "Usage:   <options>\n\nDescription: \n\n");
}

TEST(CommandHelpFormatterTest, PrintsLongAndShortNamesInOneColumn) {
  EXPECT_EQ(PrintBody(MakePage({{"device", "d", "The device.", true}, {"verbose", "", "More."}})),
            "  -d|--device    The device. (required)\n"
            "     --verbose   More.\n");
}

TEST(CommandHelpFormatterTest, MarksRequiredAndSecretParameters) {
  const std::string warning =
      "WARNING: Providing secret values on the command line is insecure because it may be logged "
      "or "
      "preserved in history files. Instead, specify this option with no value on the command line, "
      "and enter the value on the supplied prompt.\n";
  EXPECT_EQ(PrintBody(MakePage({{"ab", "", "Text."}})), "     --ab   Text.\n");
  EXPECT_EQ(PrintBody(MakePage({{"ab", "", "Text.", true}})), "     --ab   Text. (required)\n");
  EXPECT_EQ(PrintBody(MakePage({{"ab", "", "Text.", false, true}})),
            "     --ab   Text. (secret)\n            " + warning);
  EXPECT_EQ(PrintBody(MakePage({{"ab", "", "Text.", true, true}})),
            "     --ab   Text. (required secret)\n            " + warning);
}

TEST(CommandHelpFormatterTest, AnEmptyDescriptionWithoutFlagsDoesNotEndTheLine) {
  EXPECT_EQ(PrintBody(MakePage({{"ab", "", ""}, {"cd", "c", "Text."}})),
            "     --ab     -c|--cd   Text.\n");
  EXPECT_EQ(PrintBody(MakePage({{"ab", "", "", true}})), "     --ab    (required)\n");
}

TEST(CommandHelpFormatterTest, WrapsADescriptionUnderItself) {
  EXPECT_EQ(PrintBody(MakePage({{"ab", "", "Some words that do not fit.\nA line.", true}}), 30),
            "     --ab   Some words that \n"
            "            do not fit.\n"
            "            A line. (required)\n");
}

TEST(CommandHelpFormatterTest, DoesNotWrapWithoutATerminal) {
  const std::string text(300, 'w');
  EXPECT_EQ(PrintBody(MakePage({{"ab", "", text + " " + text}})),
            "     --ab   " + text + " " + text + "\n");
}

TEST(CommandHelpFormatterTest, MeasuresTheNamesOfAllParameters) {
  EXPECT_EQ(PrintBody(MakePage({{"ab", "", "1"}, {"abcdefghij", "", "2"}, {"abc", "", "3"}})),
            "     --ab           1\n"
            "     --abcdefghij   2\n"
            "     --abc          3\n");
  EXPECT_EQ(PrintBody(MakePage({{"", "", "nameless"}})), "     --   nameless\n");
}

TEST(CommandHelpFormatterTest, SkipsElementsThatAreNotStructures) {
  const auto page = MakePage({});
  page->SetField("Param List", std::vector<std::string>{"a parameter"});
  page->SetField("Example List", std::vector<std::string>{"an example"});
  EXPECT_EQ(PrintBody(page), "\nExamples: \n\n");
}

TEST(CommandHelpFormatterTest, MissingFlagsCountAsFalse) {
  const auto parameter = MetaStruct::New("VexilCommandParameter");
  parameter->SetField("Name", "ab");
  parameter->SetField("Required", "true");
  const auto page = MakePage({});
  page->SetField("Param List", MakeList({parameter}));
  EXPECT_EQ(PrintBody(page), "     --ab   ");
}

TEST(CommandHelpFormatterTest, PrintsExamples) {
  EXPECT_EQ(PrintBody(MakePage({}, {{"List all", "--all"}, {"List one", "-d sda"}})),
            "\n"
            "Examples: \n"
            "\n"
            "    List all :\n"
            "# vexil storage disk list --all        \n"
            "\n"
            "    List one :\n"
            "# vexil storage disk list -d sda        \n"
            "\n");
}

TEST(CommandHelpFormatterTest, DoesNotRepeatWhatAnExampleAlreadyHas) {
  EXPECT_EQ(PrintBody(MakePage({}, {{"List all :", "# vexil storage disk list --all"}})),
            "\nExamples: \n\n    List all :\n# vexil storage disk list --all        \n\n");
  EXPECT_EQ(PrintBody(MakePage({}, {{"List all:", "#5"}})),
            "\nExamples: \n\n    List all: :\n# vexil storage disk list #5        \n\n");
  EXPECT_EQ(PrintBody(MakePage({}, {{" :", "#  args"}})),
            "\nExamples: \n\n     :\n#  args        \n\n");
  EXPECT_EQ(PrintBody(MakePage({}, {{"", ""}})),
            "\nExamples: \n\n     :\n# vexil storage disk list         \n\n");
}

TEST(CommandHelpFormatterTest, WrapsTheDescriptionOfAnExampleButNotItsCommandLine) {
  EXPECT_EQ(PrintBody(MakePage({}, {{"Some words that do not fit", "--a-long-option value"}}), 20),
            "\n"
            "Examples: \n"
            "\n"
            "    Some words that \n"
            "    do not fit :\n"
            "# vexil storage disk list --a-long-option value        \n"
            "\n");
}

TEST(CommandHelpFormatterTest, TreatsALineBreakInAnExampleLikeAnyOtherByte) {
  EXPECT_EQ(PrintBody(MakePage({}, {{"one\ntwo", "x"}})),
            "\nExamples: \n\n    one\ntwo :\n# vexil storage disk list x        \n\n");
}

TEST(CommandHelpFormatterTest, AnEmptyListOfExamplesHasNoHeader) {
  EXPECT_EQ(PrintBody(MakePage({{"ab", "", "Text."}}, {})), "     --ab   Text.\n");
}

std::shared_ptr<MetaStruct> MakeFullPage() {
  return MakePage(
      {{"device", "d",
        "The device whose disks are listed. One of [sda, sdb, sdc] or the path of a device file "
        "below /dev.",
        true},
       {"help", "h", "Show the help message."},
       {"password", "", "The password of the device.", false, true},
       {"quiet", "q", ""},
       {"state", "", "First line of a description.\n\nThird line, with  two blanks.", true}},
      {{"List the disks of one device", "--device=sda"},
       {"List the disks of a device that is protected, asking for the password on the terminal :",
        "# vexil storage disk list --device=sdb --password"}});
}

TEST(CommandHelpFormatterTest, FitsThePageToTheWidth) {
  for (const int width : {0, 40, 80, 200}) {
    EXPECT_THAT(Print(MakeFullPage(), width),
                MatchesGolden("commandhelp/page-" + std::to_string(width)));
  }
}

TEST(CommandHelpFormatterTest, StartsDescriptionsInTheColumnAfterTheLongestName) {
  const std::string text = PrintBody(
      MakePage({{"device", "d", "The device.", true}, {"password", "", "A.", false, true}}), 80);
  EXPECT_EQ(text,
            "  -d|--device     The device. (required)\n"
            "     --password   A. (secret)\n"
            "                  WARNING: Providing secret values on the command line is \n"
            "                  insecure because it may be logged or preserved in history \n"
            "                  files. Instead, specify this option with no value on the \n"
            "                  command line, and enter the value on the supplied prompt.\n");
}

TEST(CommandHelpFormatterTest, IgnoresTheStateOfTheStreamAndClearsItsAlignment) {
  CommandHelpFormatter formatter;
  FormatParameters params;
  DisplayContext display;
  std::ostringstream out;
  out << std::hex << std::setw(20) << std::setfill('*') << std::left;
  formatter.Format(MakeOutput(MakePage({{"ab", "", "Text."}})), params, display, out);
  EXPECT_EQ(out.str(), std::string(kHead) + "     --ab   Text.\n");
  EXPECT_EQ(out.flags() & std::ios_base::adjustfield, std::ios_base::fmtflags());
  EXPECT_EQ(out.fill(), '*');
}

TEST(CommandHelpFormatterTest, KeepsTheAlignmentIfThereIsNoParameter) {
  CommandHelpFormatter formatter;
  FormatParameters params;
  DisplayContext display;
  std::ostringstream out;
  out << std::right;
  formatter.Format(MakeOutput(MakePage({})), params, display, out);
  EXPECT_EQ(out.flags() & std::ios_base::adjustfield, std::ios_base::right);
}

TEST(CommandHelpFormatterTest, FlushesOnceAndStopsAtAFullDisk) {
  CommandHelpFormatter formatter;
  FormatParameters params;
  DisplayContext display;
  LimitedBuffer buffer(1000000);
  std::ostream out(&buffer);
  formatter.Format(MakeOutput(MakeFullPage()), params, display, out);
  EXPECT_EQ(buffer.GetFlushes(), 1);
  LimitedBuffer full(10);
  std::ostream refused(&full);
  formatter.Format(MakeOutput(MakeFullPage()), params, display, refused);
  EXPECT_EQ(full.GetText(), "Usage: vex");
  EXPECT_TRUE(refused.bad());
  LimitedBuffer fullToo(10);
  std::ostream throwing(&fullToo);
  throwing.exceptions(std::ios_base::badbit);
  EXPECT_THROW(formatter.Format(MakeOutput(MakeFullPage()), params, display, throwing),
               std::ios_base::failure);
}

TEST(CommandHelpFormatterTest, PrintsTenThousandParameters) {
  std::vector<Parameter> parameters;
  for (int i = 0; i < 10000; ++i) {
    parameters.push_back({"parameter-" + std::to_string(10000 + i), "", "Text."});
  }
  const std::string text = PrintBody(MakePage(parameters), 80);
  EXPECT_EQ(text.size(), 10000 * std::string("     --parameter-10000   Text.\n").size());
  EXPECT_THAT(text, EndsWith("     --parameter-19999   Text.\n"));
}

TEST(CommandHelpFormatterTest, PrintsNamesAndDescriptionsOfAHundredThousandBytes) {
  const std::string name(100000, 'n');
  const std::string description(100000, 'd');
  EXPECT_EQ(PrintBody(MakePage({{"ab", "", "Text."}, {name, "", description}}), 80),
            "     --ab" + std::string(100001, ' ') + "Text.\n     --" + name + "   " + description +
                "\n");
}

TEST(CommandHelpFormatterTest, GetStringFieldReadsStringsOnly) {
  const auto structure = MakeDisk("disk1", 5);
  structure->SetField(std::string("a\0b", 3), "behind a NUL");
  structure->SetField("lie", std::make_shared<LyingValue>(MetaType::String));
  EXPECT_EQ(GetStringField(structure, "Name"), "disk1");
  EXPECT_EQ(GetStringField(structure, "Size"), "");
  EXPECT_EQ(GetStringField(structure, "Nope"), "");
  EXPECT_EQ(GetStringField(structure, "lie"), "");
  EXPECT_EQ(GetStringField(structure, std::string("a\0b", 3)), "behind a NUL");
  EXPECT_EQ(GetStringField(nullptr, "Name"), "");
}

}  // namespace
}  // namespace Kestrel::AutoCli
