// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/frame/ListCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kestrel/KestrelException.h>
#include <kestrel/autocli/Dispatcher.h>

#include <sstream>
#include <utility>
#include <vector>

namespace Kestrel::Host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Parameters = std::vector<std::pair<std::string, std::string>>;

const StructShape& Shape() {
  static const StructShape shape = StructShape("Parcel")
                                       .String("Name", "What is in it.")
                                       .Int("Shelf", "Where it is.")
                                       .Bool("Open", "Whether it was opened.")
                                       .Strings("Labels", "What is written on it.")
                                       .Size("Room Taken", "How much room it takes.");
  return shape;
}

struct Parcel {
  const char* name;
  long shelf;
  bool isOpen;
  long bytes;
};

constexpr Parcel kParcels[] = {{"pear", 10, true, 2048},
                               {"fig", 9, false, 100},
                               {"Plum", 10, false, 1 << 30},
                               {"", -1, true, 1}};

class ParcelList final : public ListCommand {
 public:
  ParcelList() : ListCommand("List the parcels.", Shape, "The parcels.") {
    ShowColumns("Name,Shelf,Room Taken Bytes");
  }

  mutable int runs = 0;

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("none", CallSpec::Flag, "List none.").AddTo(spec);
    Parameter("fail", CallSpec::Flag, "Fail after the first one.").AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    ++runs;
    if (input.IsFlagSet("none")) {
      return;
    }
    for (const Parcel& parcel : kParcels) {
      auto row = Shape().NewStruct();
      row->SetField("Name", parcel.name);
      row->SetField("Shelf", parcel.shelf);
      row->SetField("Open", parcel.isOpen);
      row->SetField("Labels", MetaObj::MetaList::New(MetaObj::MetaType::String));
      SetSize(*row, "Room Taken", parcel.bytes);
      rows.Add(row);
      if (input.IsFlagSet("fail")) {
        throw KestrelException("The shelf is gone");
      }
    }
  }
};

class ListCommandTest : public ::testing::Test {
 protected:
  ListCommandTest() { dispatcher_.GetRootNamespace()->RegisterNamespaceNode(command_, "parcels"); }

  void Call(const Parameters& parameters) {
    input_ = AutoCli::CommandInput::New();
    output_ = AutoCli::CommandOutput::New();
    input_->SetCommandPath({"parcels"});
    for (const auto& [name, value] : parameters) {
      input_->AddParameter(name, value);
    }
    dispatcher_.ExecuteCommand(input_, output_);
  }

  std::vector<std::string> Names(const Parameters& parameters) {
    Call(parameters);
    EXPECT_THAT(output_->GetErrors(), IsEmpty());
    std::vector<std::string> names;
    const auto list = std::dynamic_pointer_cast<MetaObj::MetaList>(output_->GetRootObject());
    for (const auto& row : list->GetObjects()) {
      names.push_back(
          std::dynamic_pointer_cast<MetaObj::MetaStruct>(row)->GetField("Name")->ToString());
    }
    return names;
  }

  std::vector<std::string> Errors(const Parameters& parameters) {
    Call(parameters);
    return output_->GetErrors();
  }

  std::string Printed(const Parameters& parameters, AutoCli::FormatParameters choices = {}) {
    Call(parameters);
    auto format = dispatcher_.GetDefaultOutputFormatParameters(input_, output_);
    format.OverrideValues(choices);
    AutoCli::DisplayContext display;
    std::ostringstream out;
    dispatcher_.FormatOutput(output_, format, display, out);
    return out.str();
  }

  AutoCli::Dispatcher dispatcher_;
  const std::shared_ptr<ParcelList> command_ = std::make_shared<ParcelList>();
  std::shared_ptr<AutoCli::CommandInput> input_;
  std::shared_ptr<AutoCli::CommandOutput> output_;
};

TEST_F(ListCommandTest, KeepsTheOrderOfItsRows) {
  EXPECT_THAT(Names({}), ElementsAre("pear", "fig", "Plum", ""));
}

TEST_F(ListCommandTest, SortsStringsByBytes) {
  EXPECT_THAT(Names({{"sort", "Name"}}), ElementsAre("", "Plum", "fig", "pear"));
}

TEST_F(ListCommandTest, SortsIntegersByValueAndKeepsTheOrderOfEqualRows) {
  EXPECT_THAT(Names({{"sort", "Shelf"}}), ElementsAre("", "fig", "pear", "Plum"));
  EXPECT_THAT(Names({{"sort", "Shelf"}, {"descending", ""}}),
              ElementsAre("pear", "Plum", "fig", ""));
}

TEST_F(ListCommandTest, SortsFalseBeforeTrue) {
  EXPECT_THAT(Names({{"sort", "Open"}}), ElementsAre("fig", "Plum", "pear", ""));
  EXPECT_THAT(Names({{"sort", "Open"}, {"descending", ""}}),
              ElementsAre("pear", "", "fig", "Plum"));
}

TEST_F(ListCommandTest, SortsASizeByItsBytesUnderBothOfItsNames) {
  const auto ordered = ElementsAre("", "fig", "pear", "Plum");
  EXPECT_THAT(Names({{"sort", "Room Taken"}}), ordered);
  EXPECT_THAT(Names({{"sort", "Room Taken Bytes"}}), ordered);
}

TEST_F(ListCommandTest, LimitsTheListAfterSortingIt) {
  EXPECT_THAT(Names({{"limit", "2"}}), ElementsAre("pear", "fig"));
  EXPECT_THAT(Names({{"sort", "Name"}, {"limit", "1"}}), ElementsAre(""));
  EXPECT_THAT(Names({{"limit", "5"}}), ElementsAre("pear", "fig", "Plum", ""));
}

TEST_F(ListCommandTest, RefusesAnUnknownFieldBeforeMakingRows) {
  const auto refusal = ElementsAre(
      "There is no field 'name' to sort by. Sort by one of: Name, Open, Room Taken, Room Taken "
      "Bytes, Shelf.");
  EXPECT_THAT(Errors({{"sort", "name"}}), refusal);
  EXPECT_THAT(Errors({{"sort", "name"}, {"none", ""}}), refusal);
  EXPECT_EQ(command_->runs, 0);
}

TEST_F(ListCommandTest, RefusesAFieldWithoutAnOrder) {
  EXPECT_THAT(Errors({{"sort", "Labels"}}),
              ElementsAre("There is no field 'Labels' to sort by. Sort by one of: Name, Open, Room "
                          "Taken, Room Taken Bytes, Shelf."));
}

TEST_F(ListCommandTest, RefusesDescendingAlone) {
  EXPECT_THAT(Errors({{"descending", ""}}),
              ElementsAre("--descending needs --sort with the name of a field."));
}

TEST_F(ListCommandTest, RefusesALimitOutsideItsRange) {
  for (const char* const limit : {"-1", "0", "1000000001"}) {
    EXPECT_THAT(
        Errors({{"limit", limit}}),
        ElementsAre("Invalid data constraint for parameter 'limit'. Expected integer in the "
                    "range 1-1000000000"))
        << limit;
  }
}

TEST_F(ListCommandTest, SortsAnEmptyList) {
  EXPECT_THAT(Names({{"none", ""}, {"sort", "Name"}, {"descending", ""}}), IsEmpty());
}

TEST_F(ListCommandTest, ShowsSizesToPeopleOnlyWhenAsked) {
  EXPECT_EQ(Printed({{"human", ""}, {"limit", "2"}}),
            "Name  Shelf  Room Taken\n"
            "----  -----  ----------\n"
            "pear     10  2.0 KiB\n"
            "fig       9  100 B\n");
  // One command object serves many calls, so the next call must show bytes again.
  EXPECT_EQ(Printed({{"limit", "2"}}),
            "Name  Shelf  Room Taken Bytes\n"
            "----  -----  ----------------\n"
            "pear     10              2048  \n"
            "fig       9               100  \n");
}

TEST_F(ListCommandTest, ReturnsTheSameResultWithAndWithoutSizesForPeople) {
  AutoCli::FormatParameters json;
  json.SetFormatter("json");
  EXPECT_EQ(Printed({{"human", ""}}, json), Printed({}, json));
}

TEST_F(ListCommandTest, ShowsTheColumnsThatTheUserChooses) {
  AutoCli::FormatParameters choices;
  choices.SetParameter("fields", "Shelf,Name");
  EXPECT_EQ(Printed({{"limit", "1"}}, choices),
            "Shelf  Name\n"
            "-----  ----\n"
            "   10  pear\n");
}

TEST_F(ListCommandTest, ReportsAFailureWithoutPrefixAndWithoutRows) {
  EXPECT_THAT(Errors({{"fail", ""}}), ElementsAre("The shelf is gone"));
  EXPECT_EQ(output_->GetRootObject(), nullptr);
}

}  // namespace
}  // namespace Kestrel::Host
