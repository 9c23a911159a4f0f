// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// XmlLimitsTest reads whole documents. These tests check the counts themselves, because in most
// documents a wrong count only costs time.

#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <string>

#include "autocli/descriptors/libxml2/XmlLimits.h"

namespace Kestrel::AutoCli {
namespace {

TEST(XmlAttributeCountTest, CountsTheAttributesOfTheTagThatHasTheMost) {
  EXPECT_EQ(CountMostAttributes(""), 0u);
  EXPECT_EQ(CountMostAttributes("= = ="), 0u);
  EXPECT_EQ(CountMostAttributes("<a/> = <a>"), 0u);
  EXPECT_EQ(CountMostAttributes("<a b='1'>=</a>"), 1u);
  EXPECT_EQ(CountMostAttributes("<a b=''/><a b='' c='' d=''/><a b='' c=''/>"), 3u);
}

TEST(XmlAttributeCountTest, AValueContainsNoAttributes) {
  EXPECT_EQ(CountMostAttributes("<a b='=='/>"), 1u);
  EXPECT_EQ(CountMostAttributes("<a b=\"==\"/>"), 1u);
  EXPECT_EQ(CountMostAttributes("<a b=\"'=\" c='\"=' d='' e='>' f=\">\"/>"), 5u);
}

TEST(XmlAttributeCountTest, ACommentASectionOrAnInstructionContainsNoTags) {
  EXPECT_EQ(CountMostAttributes("<!-- <a b='' c=''> --><a b=''/>"), 1u);
  EXPECT_EQ(CountMostAttributes("<![CDATA[<a b='' c=''>]]><a b=''/>"), 1u);
  EXPECT_EQ(CountMostAttributes("<?p <a b='' c=''>?><a b=''/>"), 1u);
  EXPECT_EQ(CountMostAttributes("<!--<=--><a/>"), 0u);
}

TEST(XmlAttributeCountTest, ALargeDocumentHasFewAttributesIfItHasFewEqualsSigns) {
  const std::string start = "<o>" + std::string(50000, ' ');
  EXPECT_TRUE(HasFewAttributes(start + std::string(10000, '=')));
  EXPECT_FALSE(HasFewAttributes(start + std::string(10001, '=')));
  EXPECT_TRUE(HasFewAttributes("<o>" + std::string(10001, '=')));
}

class ParserOfATag {
 public:
  ParserOfATag(int attributes, int namespaces) : parser_(xmlNewParserCtxt()) {
    parser_->maxatts = attributes;
    parser_->nsNr = namespaces;
  }
  ParserOfATag(const ParserOfATag&) = delete;
  ParserOfATag& operator=(const ParserOfATag&) = delete;
  ~ParserOfATag() {
    parser_->maxatts = 0;
    parser_->nsNr = 0;
    xmlFreeParserCtxt(parser_);
  }

  bool StopAtTooMany() { return StopAtTooManyAttributes(*parser_); }
  bool IsStopped() const { return parser_->instate == XML_PARSER_EOF && parser_->disableSAX == 1; }

 private:
  xmlParserCtxt* const parser_;
};

// There are five entries for an attribute and two for a namespace. The table of attributes grows to
// twice its size, so it may have twice the size that is needed. The limit for namespaces is as
// generous.
TEST(XmlAttributeCountTest, StopsTheParserWhenItsTablesAreTooLarge) {
  ParserOfATag largest(100000, 40000);
  EXPECT_FALSE(largest.StopAtTooMany());
  EXPECT_FALSE(largest.IsStopped());
  ParserOfATag attributes(100001, 0);
  EXPECT_TRUE(attributes.StopAtTooMany());
  EXPECT_TRUE(attributes.IsStopped());
  ParserOfATag namespaces(0, 40001);
  EXPECT_TRUE(namespaces.StopAtTooMany());
  EXPECT_TRUE(namespaces.IsStopped());
}

}  // namespace
}  // namespace Kestrel::AutoCli
