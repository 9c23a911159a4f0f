// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "vexil/formats/FormatsPlugin.h"

#include <iostream>

#include "kestrel/autocli/Dispatcher.h"
#include "support/LimitedBuffer.h"
#include "vexil/formats/FormatsFixture.h"

namespace Kestrel::Formats {
namespace {

std::vector<std::string> NamesOf(
    const std::vector<std::shared_ptr<AutoCli::Formatter>>& formatters) {
  std::vector<std::string> names;
  for (const auto& formatter : formatters) {
    names.push_back(formatter->GetName());
  }
  return names;
}

TEST(FormatsPluginTest, AddsItsFormattersToThoseOfTheLibrary) {
  AutoCli::Dispatcher dispatcher;
  dispatcher.RegisterPlugin(std::make_shared<FormatsPlugin>());
  EXPECT_THAT(NamesOf(dispatcher.GetFormatters()),
              ElementsAre("commandhelp", "csv", "json", "json-utf8", "ndjson", "pretty", "python",
                          "simple", "table", "tsv", "value-xml", "xml", "yaml"));
  EXPECT_THAT(dispatcher.GetPluginNames(), ElementsAre("Internal", "Formats"));
}

TEST(FormatsPluginTest, AddsNoCommands) {
  AutoCli::Dispatcher dispatcher;
  const auto before = dispatcher.GetRootNamespace()->GetNamespaceNodes().size();
  dispatcher.RegisterPlugin(std::make_shared<FormatsPlugin>());
  EXPECT_EQ(dispatcher.GetRootNamespace()->GetNamespaceNodes().size(), before);
}

TEST(FormatsPluginTest, FindsAndDescribesEachOfItsFormatters) {
  FormatsPlugin plugin;
  for (const auto& formatter : plugin.GetFormatters()) {
    ASSERT_TRUE(plugin.HasFormatter(formatter->GetName()));
    ASSERT_EQ(plugin.GetFormatter(formatter->GetName()), formatter);
    EXPECT_NE(formatter->GetDescription(), "");
    ASSERT_GE(formatter->GetParams().size(), 3u);
    EXPECT_EQ(formatter->GetParams()[0].name, "fields");
    EXPECT_EQ(formatter->GetParams()[1].name, "sort");
    EXPECT_EQ(formatter->GetParams()[2].name, "limit");
  }
  EXPECT_EQ(plugin.GetFormatter("csv")->GetParams().back().name, "header");
  const auto& params = plugin.GetFormatter("pretty")->GetParams();
  ASSERT_EQ(params.size(), 5u);
  EXPECT_EQ(params[3].name, "color");
  EXPECT_EQ(params[4].name, "human");
}

TEST(FormatsPluginTest, HasNoOtherFormatters) {
  FormatsPlugin plugin;
  EXPECT_FALSE(plugin.HasFormatter("json"));
  EXPECT_FALSE(plugin.HasFormatter("CSV"));
  EXPECT_EQ(plugin.GetFormatter(""), nullptr);
}

// Prints a disk with the parameter "fields". If `isChosen` is true, the user has set it, otherwise
// the command.
std::string PrintName(const ExactFormat& format, bool isChosen) {
  AutoCli::FormatParameters params = Testing::MakeParameters({{"fields", "Name"}});
  AutoCli::DisplayContext display;
  std::ostringstream out;
  const CallFacts facts = {nullptr, [isChosen](const std::string&) { return isChosen; }, nullptr};
  ExactFormatter(format, facts).Format(Testing::MakeOutput(MakeDisk("a", 1)), params, display, out);
  return out.str();
}

TEST(ExactFormatterTest, UsesTheFieldsThatTheCommandChoseOnlyForPretty) {
  EXPECT_EQ(PrintName(kNdjsonFormat, true), "{\"Name\":\"a\"}\n");
  EXPECT_EQ(PrintName(kNdjsonFormat, false), "{\"Name\":\"a\",\"Size\":1}\n");
  EXPECT_EQ(PrintName(kPrettyFormat, false), "Name: a\n");
}

TEST(ExactFormatterTest, WritesLargeResultsCompletely) {
  const auto list = MetaList::New(MetaType::Int);
  std::string expected;
  for (int i = 0; i < 300000; ++i) {
    list->Add(i);
    expected += std::to_string(i) + "\n";
  }
  EXPECT_EQ(Print(kNdjsonFormat, list), expected);
}

TEST(ExactFormatterTest, StopsWhenTheStreamFails) {
  const auto list = MakeTexts(std::vector<std::string>(100, std::string(100, 'x')));
  Testing::LimitedBuffer buffer(1000);
  std::ostream out(&buffer);
  AutoCli::FormatParameters params;
  AutoCli::DisplayContext display;
  const auto output = Testing::MakeOutput(list);
  ExactFormatter(kNdjsonFormat).Format(output, params, display, out);
  EXPECT_TRUE(out.bad());
  EXPECT_EQ(buffer.GetText().size(), 1000u);
  EXPECT_FALSE(output->HasError());
}

TEST(ExactFormatterTest, IgnoresTheWidthOfTheStream) {
  std::ostringstream out;
  out.width(20);
  AutoCli::FormatParameters params;
  AutoCli::DisplayContext display;
  ExactFormatter(kNdjsonFormat).Format(Testing::MakeOutput(MetaInt::New(5)), params, display, out);
  EXPECT_EQ(out.str(), "5\n");
}

}  // namespace
}  // namespace Kestrel::Formats
