// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "kestrel/autocli/Command.h"
#include "kestrel/callspec/ParameterSpec.h"
#include "plugins/host/support/HostCall.h"
#include "plugins/host/system/FullMachine.h"

// Properties of the lists in the namespace "system" (except the list of timers): words for missing
// values, tables that fit the screen, consistent parameters, sorting by each scalar field, and
// completion of values.
namespace Kestrel::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

using Command = AutoCli::Command;

// Returns the command at a path with spaces; null if there is none.
std::shared_ptr<Command> FindCommand(const std::string& path) {
  std::shared_ptr<AutoCli::NamespaceNode> node = GetDispatcher().GetRootNamespace();
  std::string name;
  for (const char letter : path + " ") {
    if (letter != ' ') {
      name += letter;
      continue;
    }
    node = node == nullptr ? nullptr : node->GetNamespaceNode(name);
    name.clear();
  }
  return std::dynamic_pointer_cast<Command>(node);
}

bool HasParameter(Command& command, const std::string& name) {
  const auto& parameters = command.GetInputSpec()->GetParameters();
  return std::any_of(parameters.begin(), parameters.end(),
                     [&name](const auto& parameter) { return parameter->GetName() == name; });
}

struct ListCase {
  const char* name;
  const char* path;
  Parameters parameters;
};

const ListCase kLists[] = {
    {"AccountList", "system account list", {}},
    {"CpuList", "system cpu list", {}},
    {"CpuUsageList", "system cpu usage list", {{"interval", "10"}}},
    {"CrontabList", "system crontab list", {}},
    {"DeviceList", "system device list", {}},
    {"ModuleList", "system module list", {}},
    {"ParameterList", "system parameter list", {}},
    {"ProcessList", "system process list", {}},
    {"SessionList", "system session list", {}},
};

class SystemListTest : public FullMachineTest, public ::testing::WithParamInterface<ListCase> {
 protected:
  // Removes the values that some kernels and files do not have.
  void RemoveWhatMayBeMissing() {
    File("etc/passwd", "bare:x:1000:77:::\n");
    File("proc/cpuinfo", "processor : 0\n");
    File("var/spool/cron/crontabs/anna", "@reboot run\n@never run\n");
    File("etc/cron.d/package", "@never\n");
  }

  static CommandResult List(Parameters parameters = {}) {
    const Parameters& own = GetParam().parameters;
    parameters.insert(parameters.end(), own.begin(), own.end());
    return Call(GetParam().path, parameters);
  }

  // Returns the lines of the table on a screen of `width` columns.
  static std::vector<std::string> TableLines(unsigned short width) {
    std::vector<std::string> lines(1);
    for (const char letter : Print(GetParam().path, GetParam().parameters, width)) {
      if (letter == '\n') {
        lines.emplace_back();
      } else {
        lines.back() += letter;
      }
    }
    lines.pop_back();
    return lines;
  }
};

TEST_P(SystemListTest, HasAWordForEachMissingValue) {
  RemoveWhatMayBeMissing();
  RunThere([] {
    const auto rows = List().GetStructs();
    EXPECT_THAT(rows, Not(IsEmpty()));
    for (const auto& row : rows) {
      for (const std::string& field : row->GetFieldNames()) {
        if (row->GetFieldType(field) == MetaObj::MetaType::String) {
          EXPECT_NE(TextOf(row, field), "") << field;
        }
      }
    }
  });
}

TEST_P(SystemListTest, ItsTableFitsAScreenOf80Columns) {
  RunThere([] {
    for (const std::string& line : TableLines(80)) {
      EXPECT_LE(line.size(), 80u) << line;
    }
  });
}

TEST_P(SystemListTest, OnAWideScreenEachRowIsALine) {
  RunThere([] {
    const std::size_t header = 2;
    EXPECT_THAT(TableLines(200), SizeIs(header + List().GetStructs().size()));
  });
}

TEST_P(SystemListTest, ItsLastColumnIsWrappedByDefault) {
  const auto parameters =
      FindCommand(GetParam().path)->GetDefaultOutputFormatParameters().GetParameters();
  const auto wraps = parameters.find("wrap-last");
  ASSERT_NE(wraps, parameters.end());
  EXPECT_EQ(wraps->second, "true");
}

TEST_P(SystemListTest, CanBeSortedByEachScalarFieldAndByNoOther) {
  RunThere([] {
    const auto rows = List().GetStructs();
    ASSERT_THAT(rows, Not(IsEmpty()));
    for (const std::string& field : rows[0]->GetFieldNames()) {
      const bool isScalar = rows[0]->GetFieldType(field) < MetaObj::MetaType::Struct;
      const CommandResult sorted = List({{"sort", field}});
      EXPECT_EQ(sorted.GetErrors().empty(), isScalar) << field;
      if (isScalar) {
        EXPECT_THAT(sorted.GetStructs(), SizeIs(rows.size())) << field;
      }
    }
  });
}

TEST_P(SystemListTest, LimitsItsRows) {
  RunThere([] {
    EXPECT_THAT(List({{"limit", "1"}}).GetStructs(), SizeIs(1));
    const std::size_t all = List().GetStructs().size();
    EXPECT_THAT(List({{"limit", "1000000"}}).GetStructs(), SizeIs(all));
  });
}

TEST_P(SystemListTest, AnUnknownFieldToSortByIsAnErrorThatListsTheFields) {
  RunThere([] {
    const auto errors = List({{"sort", "No Such Field"}}).GetErrors();
    ASSERT_THAT(errors, SizeIs(1));
    EXPECT_THAT(errors[0], ::testing::StartsWith("There is no field 'No Such Field' to sort by. "
                                                 "Sort by one of: "));
    for (const auto& row : List().GetStructs()) {
      for (const std::string& field : row->GetFieldNames()) {
        if (row->GetFieldType(field) < MetaObj::MetaType::Struct) {
          EXPECT_THAT(errors[0], ::testing::HasSubstr(field));
        }
      }
    }
  });
}

TEST_P(SystemListTest, DoesNotDeclareThatItChangesSomething) {
  const auto& metaData = FindCommand(GetParam().path)->GetMetaData();
  const auto changes = metaData.find("changes");
  EXPECT_TRUE(changes == metaData.end() || changes->second == "false");
}

INSTANTIATE_TEST_SUITE_P(Commands, SystemListTest, ::testing::ValuesIn(kLists),
                         [](const auto& test) { return test.param.name; });

// The parameter "--name". A name must match exactly, except that * stands for any text. The
// parameter may be repeated.
struct NameCase {
  const char* name;
  const char* path;
  std::vector<std::string> all;  // the names on the machine, in the order of the list
};

const NameCase kNames[] = {
    {"Account", "system account list", {"root", "anna"}},
    {"Module", "system module list", {"loop"}},
    {"Parameter", "system parameter list", {"net.core.somaxconn", "vm.swappiness"}},
    {"Process", "system process list", {"x", "x"}},
};

class SystemNameTest : public FullMachineTest, public ::testing::WithParamInterface<NameCase> {
 protected:
  static std::vector<std::string> Named(const std::vector<std::string>& names) {
    Parameters parameters;
    for (const std::string& name : names) {
      parameters.emplace_back("name", name);
    }
    return CallColumn(GetParam().path, "Name", parameters);
  }
};

TEST_P(SystemNameTest, WithoutANameAllAreListed) {
  RunThere([] { EXPECT_EQ(Named({}), GetParam().all); });
}

TEST_P(SystemNameTest, ANameIsExact) {
  RunThere([] {
    const std::string name = GetParam().all[0];
    for (const std::string& found : Named({name})) {
      EXPECT_EQ(found, name);
    }
    EXPECT_THAT(Named({name}), Not(IsEmpty()));
    EXPECT_THAT(Named({name + "x"}), IsEmpty());
    EXPECT_THAT(Named({name.substr(1)}), IsEmpty());
    EXPECT_THAT(Named({"^" + name + "$"}), IsEmpty()) << "it is no regular expression";
    EXPECT_THAT(Named({""}), IsEmpty());
  });
}

TEST_P(SystemNameTest, AStarStandsForAnyText) {
  RunThere([] {
    const std::string name = GetParam().all[0];
    EXPECT_EQ(Named({"*"}), GetParam().all);
    EXPECT_EQ(Named({name + "*"}), Named({name}));
    EXPECT_EQ(Named({"*" + name}), Named({name}));
    EXPECT_EQ(Named({name.substr(0, 1) + "*"}), Named({name}));
    EXPECT_THAT(Named({"*?*"}), IsEmpty()) << "no other character is special";
    EXPECT_THAT(Named({"[a-z]*"}), IsEmpty());
  });
}

TEST_P(SystemNameTest, OneOfSeveralNamesIsEnough) {
  RunThere([] {
    EXPECT_EQ(Named(GetParam().all), GetParam().all);
    EXPECT_EQ(Named({"nothing", "*"}), GetParam().all);
    EXPECT_EQ(Named({"nothing", GetParam().all[0]}), Named({GetParam().all[0]}));
  });
}

TEST_P(SystemNameTest, IsCompletedWithTheNamesInTheList) {
  const auto& metaData = FindCommand(GetParam().path)->GetMetaData();
  ASSERT_EQ(metaData.count("complete:name"), 1u);
  std::string path = GetParam().path;
  std::replace(path.begin(), path.end(), ' ', '.');
  EXPECT_EQ(metaData.at("complete:name"), path + " Name");
}

INSTANTIATE_TEST_SUITE_P(Lists, SystemNameTest, ::testing::ValuesIn(kNames),
                         [](const auto& test) { return test.param.name; });

// Regular expressions, which may match anywhere.
struct MatchCase {
  const char* name;
  const char* path;
  const char* field;
  std::vector<std::pair<std::string, std::size_t>> counts;  // an expression and its number of rows
};

const MatchCase kMatches[] = {
    {"Parameter",
     "system parameter list",
     "Name",
     {{"swap", 1}, {"^vm", 1}, {"[.]", 2}, {"core|swap", 2}, {"Swap", 0}, {"(?i)SWAP", 1}}},
    {"Process", "system process list", "Name", {{"x", 2}, {"^x$", 2}, {".", 2}, {"xx", 0}}},
    {"Crontab", "system crontab list", "Command", {{"run", 3}, {"^r.n$", 3}, {"stop", 0}}},
};

class SystemMatchTest : public FullMachineTest, public ::testing::WithParamInterface<MatchCase> {};

TEST_P(SystemMatchTest, ListsWhatContainsAMatch) {
  RunThere([] {
    for (const auto& [expression, count] : GetParam().counts) {
      EXPECT_THAT(CallColumn(GetParam().path, GetParam().field, {{"match", expression}}),
                  SizeIs(count))
          << expression;
    }
  });
}

TEST_P(SystemMatchTest, AnInvalidExpressionIsOneError) {
  RunThere([] {
    for (const char* const expression : {"(", "[", "*", "a{2,1}", "\\"}) {
      EXPECT_THAT(CallErrors(GetParam().path, {{"match", expression}}), SizeIs(1)) << expression;
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Lists, SystemMatchTest, ::testing::ValuesIn(kMatches),
                         [](const auto& test) { return test.param.name; });

// Each completion is for a parameter that exists, and names a list that has the field.
TEST(SystemCompletionTest, NamesFieldsThatExist) {
  std::size_t completed = 0;
  for (const char* const path :
       {"system account groups", "system account list", "system cpu list", "system crontab list",
        "system module check", "system module list", "system parameter get",
        "system parameter list", "system parameter set", "system process list",
        "system process signal", "system session list"}) {
    const auto command = FindCommand(path);
    ASSERT_NE(command, nullptr) << path;
    for (const auto& [key, value] : command->GetMetaData()) {
      if (key.rfind("complete:", 0) != 0) {
        continue;
      }
      EXPECT_TRUE(HasParameter(*command, key.substr(9))) << path << ": " << key;
      const std::size_t space = value.find(' ');
      std::string source = value.substr(0, space);
      std::replace(source.begin(), source.end(), '.', ' ');
      const auto list = FindCommand(source);
      ASSERT_NE(list, nullptr) << path << ": " << value;
      const auto rows =
          std::dynamic_pointer_cast<MetaObj::MetaList>(list->GetOutputSpec()->GetRootObject());
      ASSERT_NE(rows, nullptr) << path << ": " << value;
      const auto shape = std::dynamic_pointer_cast<MetaObj::MetaStruct>(rows->GetListStructure());
      ASSERT_NE(shape, nullptr) << path << ": " << value;
      EXPECT_TRUE(shape->HasField(value.substr(space + 1))) << path << ": " << value;
      ++completed;
    }
  }
  EXPECT_GE(completed, 14u);
}

TEST(SystemChangeTest, IsDeclaredByTheCommandsThatChangeSomething) {
  for (const char* const path : {"system parameter set", "system process signal"}) {
    const auto& metaData = FindCommand(path)->GetMetaData();
    ASSERT_EQ(metaData.count("changes"), 1u) << path;
    EXPECT_EQ(metaData.at("changes"), "true") << path;
  }
}

}  // namespace
}  // namespace Kestrel::Testing
