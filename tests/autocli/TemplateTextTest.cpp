#include "autocli/TemplateText.h"

#include <gtest/gtest.h>

#include <string>

namespace Kestrel::AutoCli {
namespace {

std::string Cleaned(const std::string& text) {
  TemplateText cleaned(text);
  cleaned.RemoveConditionals();
  return cleaned.GetText();
}

TEST(TemplateTextTest, RemovesABlockThatABraceBeforeItLeavesOpen) {
  EXPECT_EQ(Cleaned("$if{a,b {c} d"), " d");
  EXPECT_EQ(Cleaned("x $if{q,$if{a,b {c} {d} e"), "x  e");
}

TEST(TemplateTextTest, RemovesUpToTheEndOfABlockFurtherOn) {
  EXPECT_EQ(Cleaned("{ $if{a,b} } {c}"), "{ ");
  EXPECT_EQ(Cleaned("$if{a,} {c}"), "");
}

TEST(TemplateTextTest, WalksAgainAfterARemoval) {
  EXPECT_EQ(Cleaned("{ $if{x,y} $if{a,b} } {c}"), "{  ");
}

TEST(TemplateTextTest, WhatARemovalJoinsIsOneText) { EXPECT_EQ(Cleaned("$i$if{a,b}f{c,d}e"), "e"); }

}  // namespace
}  // namespace Kestrel::AutoCli
