// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "metaobj/FieldLayout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaStruct.h"
#include "metaobj/FieldCursor.h"
#include "metaobj/ValueAccess.h"

namespace {

using namespace Kestrel::MetaObj;  // NOLINT: the names under test
using testing::ElementsAre;

LayoutRef LayoutOf(const std::vector<std::string>& names) {
  LayoutRef layout = FieldLayout::Root("Rec");
  for (const std::string& name : names) {
    layout = layout->With(FieldName(name), "").layout;
  }
  return layout;
}

std::vector<std::string> NamesOf(const LayoutRef& layout) {
  std::vector<std::string> names;
  for (std::size_t position = 0; position < layout->Count(); ++position) {
    names.push_back(layout->At(position).name);
  }
  return names;
}

// Adds roots to the table of shared layouts until it is full. A root beyond the bound is not
// shared: every request makes another one.
std::vector<LayoutRef> FillTable() {
  std::vector<LayoutRef> entered;
  while (true) {
    const std::string typeName = "Filler" + std::to_string(entered.size());
    LayoutRef root = FieldLayout::Root(typeName);
    if (FieldLayout::Root(typeName).Get() != root.Get()) {
      return entered;
    }
    entered.push_back(std::move(root));
  }
}

std::uint64_t HashOf(std::string_view text) { return std::hash<std::string_view>()(text); }

// Returns a string of 8 bytes with this hash. The hash of the standard library is a chain of steps
// that can each be undone: products with an odd number, and exclusive or.
std::string TextOfHash(std::uint64_t hash) {
  constexpr std::uint64_t kSeed = 0xc70f6907;
  constexpr std::uint64_t kFactor = 0xc6a4a7935bd1e995;
  constexpr std::uint64_t kInverse = 0x5f7a0ea7e59b19bd;
  const auto mix = [](std::uint64_t number) { return number ^ (number >> 47); };
  const std::uint64_t data = mix(mix(hash) * kInverse) * kInverse ^ kSeed ^ 8 * kFactor;
  const std::uint64_t word = mix(data * kInverse) * kInverse;
  std::string text(sizeof(word), '\0');
  std::memcpy(text.data(), &word, sizeof(word));
  return text;
}

// Returns another string with the hash of `text`.
std::string TwinOf(std::string_view text) { return TextOfHash(HashOf(text)); }

// Returns the number of layouts that still fit into the table.
std::size_t CountRoom() { return FillTable().size(); }

TEST(FieldLayoutTest, HasOneRootForEachType) {
  const LayoutRef one = FieldLayout::Root("One");
  const LayoutRef two = FieldLayout::Root("Two");
  EXPECT_EQ(FieldLayout::Root("One").Get(), one.Get());
  EXPECT_EQ(FieldLayout::Root("Two").Get(), two.Get());
  EXPECT_NE(one.Get(), two.Get());
  EXPECT_EQ(one->TypeName(), "One");
  EXPECT_EQ(one->Count(), 0u);
  EXPECT_EQ(one->GetRoot().Get(), one.Get());
}

TEST(FieldLayoutTest, IsSharedByShape) {
  const LayoutRef kept = LayoutOf({"a", "b"});
  EXPECT_EQ(LayoutOf({"a", "b"}).Get(), kept.Get());
}

TEST(FieldLayoutTest, IsSharedWhateverTheOrderOfTheFieldsIs) {
  const LayoutRef kept = LayoutOf({"a", "b", "c"});
  EXPECT_EQ(LayoutOf({"c", "b", "a"}).Get(), kept.Get());
  EXPECT_EQ(LayoutOf({"b", "c", "a"}).Get(), kept.Get());
  EXPECT_THAT(NamesOf(kept), ElementsAre("a", "b", "c"));
}

TEST(FieldLayoutTest, DiffersByTypeNamesAndDocumentation) {
  const LayoutRef root = FieldLayout::Root("Rec");
  const LayoutRef plain = root->With(FieldName("a"), "").layout;
  const LayoutRef documented = root->With(FieldName("a"), "text").layout;
  const LayoutRef otherName = root->With(FieldName("b"), "").layout;
  const LayoutRef otherType = FieldLayout::Root("Other")->With(FieldName("a"), "").layout;
  EXPECT_NE(plain.Get(), documented.Get());
  EXPECT_NE(plain.Get(), otherName.Get());
  EXPECT_NE(plain.Get(), otherType.Get());
  EXPECT_TRUE(plain->HasSameNames(*plain.Get()));
  EXPECT_TRUE(plain->HasSameNames(*documented.Get()));
  EXPECT_TRUE(plain->HasSameNames(*otherType.Get()));
  EXPECT_FALSE(plain->HasSameNames(*otherName.Get()));
  EXPECT_FALSE(plain->HasSameNames(*root.Get()));
}

TEST(FieldLayoutTest, DiffersByNamesOfEqualHash) {
  ASSERT_EQ(HashOf(TwinOf("a")), HashOf("a"));
  const LayoutRef one = LayoutOf({"a"});
  const LayoutRef other = LayoutOf({TwinOf("a")});
  EXPECT_THAT(NamesOf(one), ElementsAre("a"));
  EXPECT_THAT(NamesOf(other), ElementsAre(TwinOf("a")));
}

TEST(FieldLayoutTest, DiffersByDocumentationOfEqualHash) {
  const LayoutRef root = FieldLayout::Root("Rec");
  const LayoutRef one = root->With(FieldName("a"), "text").layout;
  const LayoutRef other = root->With(FieldName("a"), TwinOf("text")).layout;
  EXPECT_EQ(one->At(0).documentation, "text");
  EXPECT_EQ(other->At(0).documentation, TwinOf("text"));
}

TEST(FieldLayoutTest, DiffersByTypesOfEqualHash) {
  const LayoutRef one = FieldLayout::Root("One");
  const LayoutRef other = FieldLayout::Root(TwinOf("One"));
  EXPECT_EQ(one->TypeName(), "One");
  EXPECT_EQ(other->TypeName(), TwinOf("One"));
}

// The hash of a layout is a sum, to which the type and the documentation contribute their hashes.
TEST(FieldLayoutTest, DiffersWhenTypeAndDocumentationAreExchanged) {
  const LayoutRef one = FieldLayout::Root("One")->With(FieldName("a"), "Other").layout;
  const LayoutRef other = FieldLayout::Root("Other")->With(FieldName("a"), "One").layout;
  EXPECT_EQ(one->TypeName(), "One");
  EXPECT_EQ(other->TypeName(), "Other");
}

// The type and the name contribute 0 to the hash of `one`, so it equals the hash of `other`.
TEST(FieldLayoutTest, DiffersFromARootOfEqualHash) {
  const LayoutRef nothing = FieldLayout::Root(TextOfHash(0));
  const LayoutRef one = nothing->With(FieldName(TextOfHash(~std::uint64_t{0})), "Other").layout;
  const LayoutRef other = FieldLayout::Root("Other");
  EXPECT_EQ(one->Count(), 1u);
  EXPECT_EQ(other->Count(), 0u);
  EXPECT_EQ(other->TypeName(), "Other");
}

TEST(FieldLayoutTest, ReportsThePositionOfANewField) {
  const LayoutRef layout = LayoutOf({"b", "d"});
  EXPECT_EQ(layout->With(FieldName("a"), "").position, 0u);
  EXPECT_EQ(layout->With(FieldName("c"), "").position, 1u);
  const FieldLayout::Step first = layout->With(FieldName("e"), "");
  const FieldLayout::Step second = layout->With(FieldName("e"), "");
  EXPECT_EQ(first.position, 2u);
  EXPECT_EQ(second.position, 2u);
  EXPECT_EQ(first.layout.Get(), second.layout.Get());
}

TEST(FieldLayoutTest, KnowsAStepWhileItsResultExists) {
  const LayoutRef layout = LayoutOf({"b", "d"});
  EXPECT_EQ(layout->KnownStep(FieldName("c"), ""), nullptr);
  {
    const FieldLayout::Step taken = layout->With(FieldName("c"), "text");
    const FieldLayout::Transition* const known = layout->KnownStep(FieldName("c"), "text");
    ASSERT_NE(known, nullptr);
    EXPECT_EQ(known->next, taken.layout.Get());
    EXPECT_EQ(known->position, 1u);
    EXPECT_EQ(layout->KnownStep(FieldName("c"), ""), nullptr);
    EXPECT_EQ(layout->KnownStep(FieldName("b"), "text"), nullptr);
  }
  EXPECT_EQ(layout->KnownStep(FieldName("c"), "text"), nullptr);
}

TEST(FieldLayoutTest, KnowsTheNewestRoot) {
  const LayoutRef one = FieldLayout::Root("One");
  EXPECT_EQ(FieldLayout::NewestRoot("One").Get(), one.Get());
  {
    const LayoutRef two = FieldLayout::Root("Two");
    EXPECT_FALSE(FieldLayout::NewestRoot("One"));
    EXPECT_EQ(FieldLayout::NewestRoot("Two").Get(), two.Get());
  }
  EXPECT_FALSE(FieldLayout::NewestRoot("Two"));
}

TEST(FieldLayoutTest, FindsItsFields) {
  const LayoutRef layout = LayoutOf({"", "a", "ab", "abc"});
  EXPECT_EQ(layout->Find(FieldName("")), 0u);
  EXPECT_EQ(layout->Find(FieldName("ab")), 2u);
  EXPECT_EQ(layout->Find(FieldName("b")), FieldLayout::kNotFound);
  EXPECT_EQ(layout->Find(FieldName(std::string(256 + 2, 'a'))), FieldLayout::kNotFound);
}

TEST(FieldLayoutTest, FindsFieldsWithLongNames) {
  const std::string start = "a name of many";
  const LayoutRef layout = LayoutOf({start + " 1 bytes", start + " 2 bytes", start});
  EXPECT_EQ(layout->Find(start), 0u);
  EXPECT_EQ(layout->Find(start + " 1 bytes"), 1u);
  EXPECT_EQ(layout->Find(start + " 2 bytes"), 2u);
  EXPECT_EQ(layout->Find(start + " 3 bytes"), FieldLayout::kNotFound);
}

TEST(FieldLayoutTest, ChangesTheDocumentationOfAField) {
  const LayoutRef layout = LayoutOf({"a", "b"});
  const LayoutRef documented = layout->WithDocumentation(1, "text");
  EXPECT_EQ(documented->At(1).documentation, "text");
  EXPECT_EQ(layout->At(1).documentation, "");
  EXPECT_EQ(documented->WithDocumentation(1, "").Get(), layout.Get());
  EXPECT_EQ(documented->WithDocumentation(1, "text").Get(), documented.Get());
}

TEST(FieldLayoutTest, RemovesAField) {
  const LayoutRef layout = LayoutOf({"a", "b", "c"});
  const LayoutRef shorter = layout->Without(1);
  EXPECT_THAT(NamesOf(shorter), ElementsAre("a", "c"));
  EXPECT_EQ(LayoutOf({"a", "c"}).Get(), shorter.Get());
  EXPECT_EQ(shorter->Without(0)->Without(0).Get(), FieldLayout::Root("Rec").Get());
}

TEST(FieldLayoutTest, ExistsAsLongAsItIsUsed) {
  const std::size_t room = CountRoom();
  {
    const LayoutRef one = LayoutOf({"a", "b", "c"});
    EXPECT_EQ(CountRoom(), room - 4);
    const LayoutRef other = LayoutOf({"c"});
    EXPECT_EQ(CountRoom(), room - 5);
  }
  EXPECT_EQ(CountRoom(), room);
}

TEST(FieldLayoutTest, LeavesNoTransitionToADestroyedLayout) {
  const LayoutRef kept = LayoutOf({"a"});
  const std::size_t room = CountRoom();
  for (int round = 0; round < 100; ++round) {
    const LayoutRef passing = kept->With(FieldName("b" + std::to_string(round % 3)), "").layout;
    ASSERT_TRUE(passing);
  }
  EXPECT_EQ(CountRoom(), room);
}

TEST(FieldLayoutTest, AcceptsMoreFieldsThanItHasTransitions) {
  const LayoutRef root = FieldLayout::Root("Rec");
  std::vector<LayoutRef> next;
  for (std::size_t field = 0; field < 3 * FieldLayout::kMaxTransitions; ++field) {
    next.push_back(root->With(FieldName("f" + std::to_string(field)), "").layout);
  }
  for (std::size_t field = 0; field < next.size(); ++field) {
    EXPECT_EQ(root->With(FieldName("f" + std::to_string(field)), "").layout.Get(),
              next[field].Get());
  }
}

TEST(FieldLayoutTest, IsReachedFromMoreLayoutsThanItHasTransitions) {
  std::vector<std::string> names;
  for (std::size_t field = 0; field < 2 * FieldLayout::kMaxTransitions; ++field) {
    names.push_back("f" + std::to_string(field));
  }
  const LayoutRef whole = LayoutOf(names);
  std::vector<LayoutRef> shorter;
  for (std::size_t field = 0; field < whole->Count(); ++field) {
    shorter.push_back(whole->Without(field));
    const FieldName name(whole->At(field).name);
    EXPECT_EQ(shorter.back()->With(name, "").layout.Get(), whole.Get());
    EXPECT_EQ(shorter.back()->With(name, "").position, field);
  }
}

TEST(FieldLayoutTest, AcceptsFieldsUpToTheBound) {
  LayoutRef layout = FieldLayout::Root("Rec");
  for (std::size_t field = 0; field < FieldLayout::kMaxFields; ++field) {
    layout = layout->With(FieldName("f" + std::to_string(field)), "").layout;
    ASSERT_TRUE(layout);
  }
  EXPECT_FALSE(layout->With(FieldName("one more"), "").layout);
}

// Other values of this program may have added a few layouts.
TEST(FieldLayoutTest, SharesLayoutsUpToTheBound) {
  EXPECT_LE(CountRoom(), FieldLayout::kMaxLayouts);
  EXPECT_GT(CountRoom() + 100, FieldLayout::kMaxLayouts);
}

TEST(FieldLayoutTest, AcceptsNamesUpToTheBound) {
  const LayoutRef root = FieldLayout::Root("Rec");
  EXPECT_TRUE(root->With(FieldName(std::string(FieldLayout::kMaxNameSize, 'n')), "").layout);
  EXPECT_FALSE(root->With(FieldName(std::string(FieldLayout::kMaxNameSize + 1, 'n')), "").layout);
}

TEST(FieldLayoutTest, CopiesAndMovesItsOwners) {
  LayoutRef one = LayoutOf({"a"});
  const FieldLayout* const layout = one.Get();
  LayoutRef copy = one;
  LayoutRef moved = std::move(one);
  EXPECT_FALSE(one);
  EXPECT_EQ(copy.Get(), layout);
  copy = FieldLayout::Root("Rec");
  EXPECT_EQ(LayoutRef::Attach(moved.Detach()).Get(), layout);
}

// Structures and layouts.

TEST(FieldLayoutTest, IsSharedByStructuresOfOneShape) {
  const auto one = MetaStruct::New("Rec");
  const auto other = MetaStruct::New("Rec");
  one->SetField("a", 1);
  one->SetField("b", 2);
  other->SetField("b", "text");
  other->SetField("a", true);
  EXPECT_EQ(ValueAccess::Layout(*one), ValueAccess::Layout(*other));
  other->RemoveField("b");
  EXPECT_NE(ValueAccess::Layout(*one), ValueAccess::Layout(*other));
}

TEST(FieldLayoutTest, IsSharedByADefinitionAndItsStructures) {
  const auto definition = MetaStruct::New("Rec");
  definition->SetField("a", 1);
  const auto structure = MetaStruct::New(definition);
  structure->SetField("a", 2);
  EXPECT_EQ(ValueAccess::Layout(*structure), ValueAccess::Layout(*definition));
}

TEST(FieldLayoutTest, IsDestroyedWithItsLastStructure) {
  const std::size_t room = CountRoom();
  {
    const auto one = MetaStruct::New("Rec");
    const auto other = MetaStruct::New("Rec");
    one->SetField("a", 1);
    other->SetField("b", 1);
    EXPECT_EQ(CountRoom(), room - 3);
  }
  EXPECT_EQ(CountRoom(), room);
}

TEST(FieldLayoutTest, AStructureWithTooManyFieldsHasItsOwnIndex) {
  const std::size_t room = CountRoom();
  const auto structure = MetaStruct::New("Rec");
  for (std::size_t field = 0; field < FieldLayout::kMaxFields; ++field) {
    structure->SetField("f" + std::to_string(field), 1);
  }
  EXPECT_NE(ValueAccess::Layout(*structure), nullptr);
  structure->SetField("one more", 1);
  EXPECT_EQ(ValueAccess::Layout(*structure), nullptr);
  EXPECT_EQ(CountRoom(), room - 1);
  EXPECT_EQ(structure->GetFieldNames().size(), FieldLayout::kMaxFields + 1);
}

TEST(FieldLayoutTest, TheNumberOfLayoutsIsBounded) {
  const std::size_t room = CountRoom();
  std::vector<std::shared_ptr<MetaStruct>> structures;
  for (std::size_t each = 0; each < 2 * FieldLayout::kMaxLayouts; ++each) {
    const std::string name = std::to_string(each);
    structures.push_back(MetaStruct::New("T" + name));
    structures.back()->SetField(name, MetaInt::New(1), "doc " + name);
  }
  EXPECT_EQ(CountRoom(), 0u);
  for (std::size_t each = 0; each < structures.size(); ++each) {
    const std::string name = std::to_string(each);
    ASSERT_EQ(structures[each]->GetTypeName(), "T" + name);
    ASSERT_EQ(structures[each]->ToString(), "{'" + name + "' => '1', }");
    ASSERT_EQ(structures[each]->GetFieldDocumentation(name), "doc " + name);
  }
  // When the table is full, structures change to an index of their own.
  structures[0]->SetField("0", 2);
  EXPECT_EQ(structures[0]->GetFieldDocumentation("0"), "Documentation missing");
  EXPECT_EQ(ValueAccess::Layout(*structures[0]), nullptr);
  structures[1]->SetField("more", 3);
  EXPECT_EQ(structures[1]->ToString(), "{'1' => '1', 'more' => '3', }");
  EXPECT_TRUE(MetaStruct::New("T0")->IsSameStructure(MetaStruct::New("T0"), nullptr));
  structures.clear();
  EXPECT_EQ(CountRoom(), room);
}

TEST(FieldLayoutTest, RemovesAFieldWhenTheTableIsFull) {
  const auto structure = MetaStruct::New("Rec");
  structure->SetField("a", 1);
  structure->SetField("b", 2);
  structure->SetField("c", 3);
  const std::vector<LayoutRef> others = FillTable();
  structure->RemoveField("a");
  EXPECT_EQ(ValueAccess::Layout(*structure), nullptr);
  EXPECT_EQ(structure->ToString(), "{'b' => '2', 'c' => '3', }");
}

TEST(FieldLayoutTest, ACursorVisitsTheFieldsWithAndWithoutALayout) {
  for (const int more : {0, 100}) {
    const auto structure = MetaStruct::New("Rec");
    structure->SetField("b", MetaInt::New(2), "doc");
    structure->SetField("a", 1);
    for (int field = 0; field < more; ++field) {
      structure->SetField("z" + std::to_string(field), 0);
    }
    FieldCursor field(*structure);
    EXPECT_EQ(field.CountLeft(), static_cast<std::size_t>(more) + 2);
    EXPECT_EQ(field.Name(), "a");
    EXPECT_EQ(field.Documentation(), "");
    field.Next();
    EXPECT_EQ(field.Name(), "b");
    EXPECT_EQ(field.Documentation(), "doc");
    EXPECT_EQ(field.Value().get(), ValueAccess::Find(*structure, "b")->get());
    field.Next();
    EXPECT_EQ(field.AtEnd(), more == 0);
  }
}

// Threads look up, add and remove layouts of the same shapes at the same time.
TEST(FieldLayoutTest, NoLayoutIsLeftAfterSeveralThreads) {
  const std::size_t room = CountRoom();
  const auto work = [] {
    for (int round = 0; round < 2000; ++round) {
      const auto structure = MetaStruct::New("Rec");
      structure->SetField("a" + std::to_string(round % 5), round);
      structure->SetField("b", round);
      const auto bound = MetaStruct::New(structure);
      bound->SetField("b", 1);
    }
  };
  std::thread one(work);
  std::thread other(work);
  one.join();
  other.join();
  EXPECT_EQ(CountRoom(), room);
}

TEST(FieldLayoutTest, IsDestroyedInAnotherThread) {
  const std::size_t room = CountRoom();
  auto structure = MetaStruct::New("Rec");
  structure->SetField("a", 1000);
  std::thread([&structure] { structure.reset(); }).join();
  EXPECT_EQ(CountRoom(), room);
}

}  // namespace
