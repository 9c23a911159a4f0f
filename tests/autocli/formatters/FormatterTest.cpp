// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "kestrel/autocli/Formatter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <type_traits>

namespace Kestrel::AutoCli {
namespace {

using ::testing::IsEmpty;

class BareFormatter : public Formatter {
 public:
  using Formatter::Formatter;
  void Format(const std::shared_ptr<CallSpec::Output>&, FormatParameters& parameters,
              DisplayContext& display, std::ostream& out) override {
    out << parameters.GetFormatter() << " " << display.width << "x" << display.height;
  }
};

class DocumentedFormatter : public BareFormatter {
 public:
  explicit DocumentedFormatter(bool& isGone) : BareFormatter("documented"), isGone_(isGone) {
    description = "Says what it takes.";
    params.push_back({"first", "The first.", true});
    params.push_back({"second", "The second."});
  }
  ~DocumentedFormatter() override { isGone_ = true; }

 private:
  bool& isGone_;
};

TEST(FormatterTest, StartsWithItsNameOnly) {
  const BareFormatter formatter("bare");
  EXPECT_EQ(formatter.GetName(), "bare");
  EXPECT_EQ(formatter.GetDescription(), "");
  EXPECT_THAT(formatter.GetParams(), IsEmpty());
}

TEST(FormatterTest, ReturnsWhatTheDerivedClassDocuments) {
  bool isGone = false;
  const DocumentedFormatter formatter(isGone);
  EXPECT_EQ(formatter.GetDescription(), "Says what it takes.");
  ASSERT_EQ(formatter.GetParams().size(), 2u);
  EXPECT_EQ(formatter.GetParams()[0].name, "first");
  EXPECT_EQ(formatter.GetParams()[0].description, "The first.");
  EXPECT_TRUE(formatter.GetParams()[0].flag);
  EXPECT_EQ(formatter.GetParams()[1].name, "second");
  EXPECT_FALSE(formatter.GetParams()[1].flag);
}

TEST(FormatterTest, TheGettersReferToTheFormattersOwnValues) {
  const BareFormatter formatter("bare");
  EXPECT_EQ(&formatter.GetName(), &formatter.GetName());
  EXPECT_EQ(&formatter.GetDescription(), &formatter.GetDescription());
  EXPECT_EQ(&formatter.GetParams(), &formatter.GetParams());
}

TEST(FormatterTest, IsDestroyedThroughItsBase) {
  bool isGone = false;
  std::unique_ptr<Formatter> formatter = std::make_unique<DocumentedFormatter>(isGone);
  formatter.reset();
  EXPECT_TRUE(isGone);
}

TEST(FormatterTest, FormatsThroughItsBase) {
  BareFormatter bare("bare");
  Formatter& formatter = bare;
  FormatParameters params;
  params.SetFormatter("asked");
  DisplayContext display;
  display.width = 132;
  display.height = 43;
  std::ostringstream out;
  formatter.Format(nullptr, params, display, out);
  EXPECT_EQ(out.str(), "asked 132x43");
}

TEST(FormatterTest, IsAbstractAndConstructedFromANameOnly) {
  EXPECT_TRUE(std::is_abstract_v<Formatter>);
  EXPECT_FALSE(std::is_default_constructible_v<BareFormatter>);
}

TEST(FormatterTest, ADisplayContextStartsWithoutATerminal) {
  const DisplayContext display;
  EXPECT_EQ(display.width, 0);
  EXPECT_EQ(display.height, 0);
  EXPECT_TRUE((std::is_same_v<decltype(display.width), std::uint16_t>));
  EXPECT_TRUE((std::is_same_v<decltype(display.height), std::uint16_t>));
}

}  // namespace
}  // namespace Kestrel::AutoCli
