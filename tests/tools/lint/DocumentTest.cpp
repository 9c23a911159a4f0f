// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/Document.h"

#include <gmock/gmock.h>

#include <string>

namespace Kestrel::Lint {
namespace {

using ::testing::StartsWith;

TEST(DocumentTest, CountsColumnsInCharacters) {
  const Document document("<a>\n <!-- \xC3\xA4 --><b/>\n</a>");
  const Element* const b = document.GetRoot()->Find("b");
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(b->position.line, 2U);
  EXPECT_EQ(b->position.column, 12U);
}

TEST(DocumentTest, RemembersWhereEachByteOfATextComesFrom) {
  const Document document("<a>x &lt;&#x20AC;\r\ny</a>");
  const Piece* const piece = document.GetRoot()->GetContentPiece();
  ASSERT_NE(piece, nullptr);
  EXPECT_EQ(piece->text, "x <\xE2\x82\xAC\ny");
  EXPECT_EQ(document.PositionOf(piece->offsets[2]).column, 6U);
  EXPECT_EQ(document.PositionOf(piece->offsets[5]).column, 10U);
  EXPECT_EQ(document.PositionOf(piece->offsets.back()).line, 2U);
}

TEST(DocumentTest, TakesTheLastPieceForTheContentAsTheLoaderDoes) {
  EXPECT_EQ(Document("<a>b<!--c--></a>").GetRoot()->GetContent(), "c");
  EXPECT_EQ(Document("<a>b<c/>d</a>").GetRoot()->GetContent(), "d");
  EXPECT_EQ(Document("<a> <![CDATA[&lt;]]></a>").GetRoot()->GetContent(), "&lt;");
  EXPECT_EQ(Document("<a/>").GetRoot()->GetContent(), "");
}

TEST(DocumentTest, LinksEachElementWithItsNode) {
  const Document document("<a><b><c/></b><!-- --><d e='f'/></a>");
  const Element& root = *document.GetRoot();
  EXPECT_EQ(root.Find("d")->Get("e"), "f");
  EXPECT_NE(root.Find("d")->node, nullptr);
  EXPECT_NE(root.Find("b")->Find("c")->node, root.Find("b")->node);
}

TEST(DocumentTest, ReportsThePlaceOfTheFirstFault) {
  const Document document("<a>\n  <b></c>\n</a>");
  ASSERT_TRUE(document.GetProblem().has_value());
  EXPECT_EQ(document.GetProblem()->position.line, 2U);
  EXPECT_THAT(document.GetProblem()->what, StartsWith("Opening and ending tag mismatch: b"));
}

TEST(DocumentTest, ReadsSuppressionsBeforeAnElement) {
  const Document document(
      "<a><!-- vexil-lint disable=one,two: it is old --><b/><!-- vexil-lint disable=three --></a>");
  const Element* const b = document.GetRoot()->Find("b");
  ASSERT_EQ(b->suppressions.size(), 1U);
  EXPECT_THAT(b->suppressions[0]->rules, ::testing::ElementsAre("one", "two"));
  EXPECT_TRUE(b->suppressions[0]->hasReason);
  ASSERT_EQ(document.GetSuppressions().size(), 2U);
  EXPECT_FALSE(document.GetSuppressions()[1]->hasReason);
}

}  // namespace
}  // namespace Kestrel::Lint
