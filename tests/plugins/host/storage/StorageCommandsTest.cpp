// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <algorithm>

#include "plugins/host/support/HostCall.h"
#include "plugins/host/support/JsonWitness.h"
#include "plugins/host/support/Namespaces.h"
#include "plugins/host/support/Rows.h"
#include "support/ScopedEnvironment.h"
#include "support/ScopedTempDir.h"
#include "support/Witness.h"

// The commands in the namespace "storage", compared with other programs.
namespace Kestrel::Testing {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;

std::string Replace(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos;
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

// ---- storage mount list

std::vector<Row> FindmntRows() {
  std::vector<Row> rows;
  const Json answer = JsonWitness(
      "findmnt --json --list --nofsroot"
      " --output ID,PARENT,TARGET,SOURCE,FSTYPE,OPTIONS,FSROOT,MAJ:MIN");
  for (const auto& [key, entry] : answer.get_child("filesystems")) {
    rows.push_back({{"Id", MemberText(entry, "id")},
                    {"Parent Id", MemberText(entry, "parent")},
                    {"Mount Point", Shown(MemberText(entry, "target"))},
                    {"Source", Shown(MemberText(entry, "source"))},
                    {"Type", MemberText(entry, "fstype")},
                    {"Options", Replace(MemberText(entry, "options"), ",", ", ")},
                    {"Root", Shown(MemberText(entry, "fsroot"))},
                    {"Device", MemberText(entry, "maj:min")}});
  }
  return rows;
}

std::vector<Row> MountRows() {
  return OnlyFields(
      CallRows("storage mount list", {{"all", ""}}),
      {"Id", "Parent Id", "Mount Point", "Source", "Type", "Options", "Root", "Device"});
}

// Returns whether the path of a mount leads to that mount, and not to another mount that hides it.
// The kernel reports the mount to which the directory at a path belongs.
bool LeadsTo(const std::string& target, const std::string& id) {
  struct statx found = {};
  const int result = ::statx(AT_FDCWD, target.c_str(), AT_NO_AUTOMOUNT, STATX_MNT_ID, &found);
  return result == 0 && std::to_string(found.stx_mnt_id) == id;
}

bool KernelNamesMounts() {
  struct statx found = {};
  return ::statx(AT_FDCWD, "/", 0, STATX_MNT_ID, &found) == 0 &&
         (found.stx_mask & STATX_MNT_ID) != 0;
}

// Returns the mount point without its escapes.
std::string PathOf(const Row& row) {
  return Replace(Replace(row.at("Mount Point"), "\\x0a", "\n"), "\\x09", "\t");
}

TEST(StorageMountListTest, AgreesWithFindmnt) {
  const Agreement agreement = Compare(MountRows, FindmntRows);
  EXPECT_THAT(agreement.witness, Not(IsEmpty()));
  EXPECT_EQ(agreement.command, agreement.witness);
}

TEST(StorageMountListTest, ReportsWhichMountsAreReadOnly) {
  for (const Row& row : CallRows("storage mount list", {{"all", ""}})) {
    const std::string options = ", " + row.at("Options") + ",";
    EXPECT_EQ(row.at("Read Only"), options.find(", ro,") == std::string::npos ? "false" : "true")
        << row.at("Mount Point");
  }
}

TEST(StorageMountListTest, ReportsWhichMountsAPathLeadsTo) {
  if (!KernelNamesMounts()) {
    GTEST_SKIP() << "This kernel does not tell which mount a directory belongs to";
  }
  const Agreement agreement = Compare(
      [] {
        return CallRows("storage mount list", {{"all", ""}});
      },
      FindmntRows);
  for (const Row& row : agreement.command) {
    EXPECT_EQ(row.at("Hidden"), LeadsTo(PathOf(row), row.at("Id")) ? "false" : "true")
        << row.at("Mount Point");
  }
}

void Mount(const char* source, const std::string& target, const char* type, unsigned long flags) {
  ASSERT_EQ(::mount(source, target.c_str(), type, flags, nullptr), 0) << target;
}

TEST(StorageMountListTest, ListsStrangeNamesAndMountsOverMounts) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNS, [] {
    const ScopedTempDir folder;
    for (const char* name : {"a blank", "back\\slash", "two\nlines", "a\ttab", "hash#", "\\040"}) {
      Mount("my source", folder.MakeDirectory(name), "tmpfs", 0);
    }
    Mount("outer", folder.MakeDirectory("outer"), "tmpfs", 0);
    Mount("inner", folder.MakeDirectory("outer/in/ner"), "tmpfs", 0);
    Mount("deep", folder.MakeDirectory("outer/in/ner/deep"), "tmpfs", MS_RDONLY);
    Mount("middle", folder.GetPath("outer/in"), "tmpfs", 0);
    Mount("again", folder.GetPath("outer/in"), "tmpfs", 0);
    folder.Write("hash#/bound/file", "x");
    Mount(folder.GetPath("hash#/bound").c_str(), folder.MakeDirectory("bind"), nullptr, MS_BIND);

    EXPECT_EQ(MountRows(), FindmntRows());
    std::vector<std::string> hidden;
    for (const Row& row :
         CallRows("storage mount list", {{"all", ""}, {"below", folder.GetPath()}})) {
      EXPECT_EQ(row.at("Hidden"), LeadsTo(PathOf(row), row.at("Id")) ? "false" : "true")
          << row.at("Source") << " on " << row.at("Mount Point");
      if (row.at("Hidden") == "true") {
        hidden.push_back(row.at("Source"));
      }
    }
    EXPECT_THAT(hidden, ElementsAre("inner", "deep", "middle"));
    EXPECT_THAT(
        CallColumn("storage mount list", "Mount Point",
                   {{"below", folder.GetPath()}, {"type", "tmpfs"}}),
        ElementsAre(folder.GetPath("a blank"), folder.GetPath("back\\slash"),
                    folder.GetPath("two\\x0alines"), folder.GetPath("a\\x09tab"),
                    folder.GetPath("hash#"), folder.GetPath("\\040"), folder.GetPath("outer"),
                    folder.GetPath("outer/in"), folder.GetPath("bind")));
    EXPECT_THAT(CallColumn("storage mount list", "Root", {{"below", folder.GetPath("bind")}}),
                ElementsAre("/bound"));
    EXPECT_EQ(::system(("umount -l '" + folder.GetPath() + "'/* 2>/dev/null; true").c_str()), 0);
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(StorageMountListTest, FiltersChooseAmongTheMounts) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNS, [] {
    const ScopedTempDir folder;
    Mount("one", folder.MakeDirectory("one"), "tmpfs", MS_NOEXEC);
    Mount("two", folder.MakeDirectory("two"), "tmpfs", MS_RDONLY);
    Mount("three", folder.MakeDirectory("three"), "ramfs", MS_NODEV);
    const auto sources = [&folder](const Parameters& more) {
      Parameters parameters = {{"below", folder.GetPath() + "/"}};
      parameters.insert(parameters.end(), more.begin(), more.end());
      return CallColumn("storage mount list", "Source", parameters);
    };
    EXPECT_THAT(sources({}), ElementsAre("one", "two", "three"));
    EXPECT_THAT(sources({{"type", "ramfs"}}), ElementsAre("three"));
    EXPECT_THAT(sources({{"type", "ramfs"}, {"type", "tmpfs"}}),
                ElementsAre("one", "two", "three"));
    EXPECT_THAT(sources({{"type", "ext9"}}), IsEmpty());
    EXPECT_THAT(sources({{"option", "noexec"}}), ElementsAre("one"));
    EXPECT_THAT(sources({{"option", "noexec"}, {"option", "ro"}}), ElementsAre("one", "two"));
    EXPECT_THAT(sources({{"read-only", "yes"}}), ElementsAre("two"));
    EXPECT_THAT(sources({{"read-only", "no"}}), ElementsAre("one", "three"));
    EXPECT_THAT(sources({{"t", "ramfs"}, {"o", "ro"}}), IsEmpty());
    EXPECT_THAT(CallColumn("storage mount list", "Source", {{"below", folder.GetPath("on")}}),
                IsEmpty());
    for (const char* name : {"one", "two", "three"}) {
      ::umount(folder.GetPath(name).c_str());
    }
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(StorageMountListTest, RejectsInvalidBooleans) {
  EXPECT_THAT(Call("storage mount list", {{"read-only", "maybe"}}).GetErrors(),
              ElementsAre("Invalid data 'maybe' for parameter read-only expected one of [1, 0, y, "
                          "n, true, false, True, False, yes, no, t, f, T, F]"));
  EXPECT_THAT(
      Call("storage mount list", {{"all", "x"}}).GetErrors(),
      ElementsAre("Invalid data 'x' for parameter all.  This parameter is a flag and cannot "
                  "accept any values. "));
}

TEST(StorageMountListTest, ReportsThatTheKernelsTableIsMissing) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNS, [] {
    Call("storage mount list");  // loads the plug-in while /proc is mounted
    Mount("none", "/proc", "tmpfs", 0);
    EXPECT_THAT(Call("storage mount list").GetErrors(),
                ElementsAre("Unable to read the mounts in "
                            "/proc/self/mountinfo: No such file or directory"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

// ---- storage filesystem list

std::vector<Row> DfRows(const std::string& arguments) {
  std::vector<Row> rows;
  std::vector<std::string> lines = WitnessLines(
      "df --all " + arguments +
      " --output=source,fstype,itotal,iused,size,used,avail,pcent,target 2>/dev/null || true");
  for (std::size_t index = 1; index < lines.size(); ++index) {
    const std::vector<std::string> words = WordsIn(lines[index], 9);
    rows.push_back({{"Source", words.at(0)},
                    {"Type", words.at(1)},
                    {"Inodes", words.at(2)},
                    {"Used Inodes", words.at(3)},
                    {"Size", words.at(4)},
                    {"Used", words.at(5)},
                    {"Available", words.at(6)},
                    {"Percent", words.at(7).substr(0, words.at(7).find('%'))},
                    {"Mount Point", words.at(8)}});
  }
  return rows;
}

// df writes "-" for unknown values.
long NumberIn(const Row& row, const std::string& field) {
  return row.at(field) == "-" ? 0 : std::stol(row.at(field));
}

const Row* Find(const std::vector<Row>& rows, const std::string& mountPoint) {
  // Of several mounts at one mount point, the last one hides the others.
  const auto found = std::find_if(rows.rbegin(), rows.rend(), [&mountPoint](const Row& row) {
    return row.at("Mount Point") == mountPoint;
  });
  return found == rows.rend() ? nullptr : &*found;
}

// Returns the fields whose values are not between those that df printed before and after the
// command.
std::string Outside(const Row& row, const Row& before, const Row& after,
                    const std::map<std::string, std::string>& fields) {
  std::string outside;
  for (const auto& [field, witnessField] : fields) {
    const long value = std::stol(row.at(field));
    const auto [low, high] =
        std::minmax({NumberIn(before, witnessField), NumberIn(after, witnessField)});
    if (value < low || value > high) {
      outside += row.at("Mount Point") + ": " + field + " " + std::to_string(value) + "; ";
    }
  }
  return outside;
}

// Returns the differences between the command and df, which runs before and after it.
std::string DifferencesFromDf(const std::string& arguments,
                              const std::map<std::string, std::string>& fields) {
  const std::vector<Row> before = DfRows(arguments);
  const std::vector<Row> rows = CallRows("storage filesystem list", {{"all", ""}});
  const std::vector<Row> after = DfRows(arguments);
  std::string difference = rows.empty() ? "no rows" : "";
  for (const Row& row : rows) {
    const Row* const first = Find(before, row.at("Mount Point"));
    const Row* const second = Find(after, row.at("Mount Point"));
    if (first == nullptr || second == nullptr || row.at("Type") != first->at("Type") ||
        row.at("Source") != first->at("Source")) {
      difference += row.at("Mount Point") + ": not in df; ";
    } else {
      difference += Outside(row, *first, *second, fields);
    }
  }
  return difference;
}

// Compares the command with df until all values agree, because other programs can change them.
void ExpectAgreementWithDf(const std::string& arguments,
                           const std::map<std::string, std::string>& fields) {
  std::string difference;
  for (int attempt = 0; attempt < 20; ++attempt) {
    difference = DifferencesFromDf(arguments, fields);
    if (difference.empty()) {
      return;
    }
  }
  ADD_FAILURE() << difference;
}

TEST(StorageFilesystemListTest, AgreesWithDfInBytes) {
  ExpectAgreementWithDf("--block-size=1", {{"Size Bytes", "Size"},
                                           {"Used Bytes", "Used"},
                                           {"Available Bytes", "Available"},
                                           {"Percent", "Percent"},
                                           {"Inodes", "Inodes"},
                                           {"Used Inodes", "Used Inodes"}});
}

TEST(StorageFilesystemListTest, ListsOnlyFileSystemsWithASizeOrAProblem) {
  const auto everything = CallRows("storage filesystem list", {{"all", ""}});
  const auto rows = CallRows("storage filesystem list");
  EXPECT_THAT(CallColumn("storage filesystem list", "Mount Point"), Contains("/"));
  EXPECT_LE(rows.size(), everything.size());
  for (const Row& row : rows) {
    EXPECT_TRUE(row.at("Size Bytes") != "0" || row.at("Status") != "ok") << row.at("Mount Point");
  }
}

TEST(StorageFilesystemListTest, AFurtherMountOfAFileSystemIsSkipped) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNS, [] {
    const ScopedTempDir folder;
    folder.MakeDirectory("sub");
    Mount("mine", folder.MakeDirectory("whole"), "tmpfs", 0);
    folder.MakeDirectory("whole/part");
    Mount(folder.GetPath("whole/part").c_str(), folder.MakeDirectory("part"), nullptr, MS_BIND);
    Mount(folder.GetPath("whole").c_str(), folder.MakeDirectory("copy"), nullptr, MS_BIND);
    const auto points = [](const Parameters& parameters) {
      std::vector<std::string> found;
      for (const Row& row : CallRows("storage filesystem list", parameters)) {
        if (row.at("Source") == "mine") {
          found.push_back(row.at("Mount Point"));
        }
      }
      return found;
    };
    EXPECT_THAT(points({}), ElementsAre(folder.GetPath("whole")));
    EXPECT_THAT(points({{"all", ""}}), ElementsAre(folder.GetPath("whole"), folder.GetPath("part"),
                                                   folder.GetPath("copy")));
    // The mount of the whole file system is listed even if it is not the first one.
    ASSERT_EQ(::umount(folder.GetPath("whole").c_str()), 0);
    EXPECT_THAT(points({}), ElementsAre(folder.GetPath("copy")));
    ASSERT_EQ(::umount(folder.GetPath("copy").c_str()), 0);
    EXPECT_THAT(points({}), ElementsAre(folder.GetPath("part")));
    ASSERT_EQ(::umount(folder.GetPath("part").c_str()), 0);
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(StorageFilesystemListTest, FiltersByTypeAndUsage) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNS, [] {
    const ScopedTempDir folder;
    const std::string path = folder.MakeDirectory("small");
    ASSERT_EQ(::mount("mine", path.c_str(), "tmpfs", 0, "size=64k"), 0);
    folder.Write("small/half", std::string(32 << 10, 'x'));
    const auto sources = [](const Parameters& parameters) {
      return CallColumn("storage filesystem list", "Source", parameters);
    };
    EXPECT_THAT(sources({{"type", "tmpfs"}}), Contains("mine"));
    EXPECT_THAT(sources({{"type", "ext9"}}), IsEmpty());
    EXPECT_THAT(sources({{"minimum-percent", "50"}}), Contains("mine"));
    EXPECT_THAT(sources({{"minimum-percent", "51"}}), Not(Contains("mine")));
    for (const Row& row : CallRows("storage filesystem list", {{"type", "tmpfs"}})) {
      if (row.at("Source") == "mine") {
        EXPECT_EQ(row.at("Size"), "64.0 KiB");
        EXPECT_EQ(row.at("Size Bytes"), "65536");
        EXPECT_EQ(row.at("Used Bytes"), "32768");
        EXPECT_EQ(row.at("Available Bytes"), "32768");
        EXPECT_EQ(row.at("Percent"), "50");
        EXPECT_EQ(row.at("Status"), "ok");
      }
    }
    ASSERT_EQ(::umount(path.c_str()), 0);
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(StorageFilesystemListTest, ASilentFileSystemIsListedAsSuch) {
  const ScopedEnvironment silent("KESTREL_SILENT_PATHS", "/");
  const auto rows = CallRows("storage filesystem list", {{"timeout", "1"}});
  const Row* const root = Find(rows, "/");
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->at("Status"), "no answer");
  EXPECT_EQ(root->at("Size"), "0 B");
  EXPECT_EQ(root->at("Percent"), "0");
  EXPECT_GT(rows.size(), 1u);
}

TEST(StorageFilesystemListTest, TheRowOfAFileSystemThatFailsContainsTheReason) {
  const ScopedEnvironment deadly("KESTREL_DEADLY_PATHS", "/");
  const auto rows = CallRows("storage filesystem list");
  const Row* const root = Find(rows, "/");
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->at("Status"), "Input/output error");
}

TEST(StorageFilesystemListTest, RefusesNumbersOutsideTheirRanges) {
  EXPECT_THAT(Call("storage filesystem list", {{"minimum-percent", "101"}}).GetErrors(),
              ElementsAre("Invalid data constraint for parameter 'minimum-percent'. Expected "
                          "integer in the range 0-100"));
  EXPECT_THAT(Call("storage filesystem list", {{"timeout", "0"}}).GetErrors(),
              ElementsAre("Invalid data constraint for parameter 'timeout'. Expected integer in "
                          "the range 1-60"));
  EXPECT_THAT(Call("storage filesystem list", {{"timeout", "soon"}}).GetErrors(),
              ElementsAre("Invalid data 'soon' for parameter timeout expected type Integer"));
}

// ---- storage device list

std::vector<Row> LsblkRows() {
  std::map<std::string, Row> rows;  // lsblk repeats a device that belongs to several others
  std::map<std::string, std::vector<std::string>> parents;
  const Json answer = JsonWitness(
      "lsblk --json --bytes --all --list --output"
      " NAME,KNAME,TYPE,SIZE,RO,RM,ROTA,LOG-SEC,PKNAME,MOUNTPOINTS,MAJ:MIN,MODEL");
  for (const auto& [key, device] : answer.get_child("blockdevices")) {
    const std::string name = MemberText(device, "kname");
    std::vector<std::string> points = MemberTexts(device, "mountpoints");
    points.erase(std::remove(points.begin(), points.end(), "[SWAP]"), points.end());
    const std::string parent = MemberText(device, "pkname");
    if (!parent.empty()) {
      parents[name].push_back(parent);
    }
    const long size = std::stol(MemberText(device, "size", "0"));
    rows[name] = {{"Name", name},
                  {"Kind", MemberText(device, "type")},
                  {"Number", MemberText(device, "maj:min")},
                  {"Size Bytes", std::to_string(size)},
                  {"Sector Size", MemberText(device, "log-sec")},
                  {"Read Only", MemberText(device, "ro")},
                  {"Removable", MemberText(device, "rm")},
                  {"Rotational", MemberText(device, "rota")},
                  {"Model", MemberText(device, "model", "none")},
                  {"Parents", Joined(Sorted(parents[name]))},
                  {"Mount Points", Shown(Joined(Sorted(points)))}};
  }
  std::vector<Row> list;
  list.reserve(rows.size());
  for (const auto& [name, row] : rows) {
    list.push_back(row);
  }
  return list;
}

std::vector<Row> DeviceRows() {
  std::vector<Row> rows =
      OnlyFields(CallRows("storage device list", {{"all", ""}}),
                 {"Name", "Kind", "Number", "Size Bytes", "Sector Size", "Read Only", "Removable",
                  "Rotational", "Model", "Parents", "Mount Points"});
  std::sort(rows.begin(), rows.end(),
            [](const Row& left, const Row& right) { return left.at("Name") < right.at("Name"); });
  return rows;
}

TEST(StorageDeviceListTest, AgreesWithLsblk) {
  const Agreement agreement = Compare(DeviceRows, LsblkRows);
  EXPECT_EQ(agreement.command, agreement.witness);
}

TEST(StorageDeviceListTest, ListsDevicesWithASizeByDefault) {
  const auto everything = CallRows("storage device list", {{"all", ""}});
  std::vector<std::string> expected;
  for (const Row& row : everything) {
    if (row.at("Size Bytes") != "0") {
      expected.push_back(row.at("Name"));
    }
  }
  EXPECT_EQ(CallColumn("storage device list", "Name"), expected);
}

TEST(StorageDeviceListTest, FiltersChooseAmongTheDevices) {
  const auto everything = CallRows("storage device list", {{"all", ""}});
  const auto expect = [&everything](Parameters parameters, const std::string& what,
                                    const std::function<bool(const Row&)>& filter) {
    parameters.emplace_back("all", "");
    EXPECT_EQ(CallRows("storage device list", parameters), Filter(everything, filter)) << what;
  };
  const auto has = [](const char* field, const char* value) {
    return [field, value](const Row& row) { return row.at(field) == value; };
  };
  expect({{"kind", "disk"}}, "kind", has("Kind", "disk"));
  expect({{"kind", "raid4"}}, "kind", has("Kind", "raid4"));
  expect({{"read-only", "true"}}, "read-only", has("Read Only", "true"));
  expect({{"read-only", "false"}}, "read-only", has("Read Only", "false"));
  expect({{"removable", "true"}}, "removable", has("Removable", "true"));
  expect({{"removable", "false"}}, "removable", has("Removable", "false"));
  expect({{"minimum-size", "1000"}}, "minimum-size",
         [](const Row& row) { return std::stol(row.at("Size Bytes")) >= 1000L << 20; });
  if (!everything.empty()) {
    const std::string name = everything.front().at("Name");
    expect({{"name", name}, {"name", "none"}}, "name", has("Name", name.c_str()));
  }
}

TEST(StorageDeviceListTest, ReportsThePropertiesOfTheDeviceManager) {
  const auto devices = CallRows("storage device list");
  if (devices.empty()) {
    GTEST_SKIP() << "This machine shows no block device that holds something";
  }
  const std::string refusal = RunInNamespaces(CLONE_NEWNS, [&devices] {
    const ScopedTempDir folder;
    const std::string data = "udev/data/b" + devices.front().at("Number");
    folder.Write(data,
                 "I:1\nE:ID_FS_TYPE=xfs\nE:ID_FS_LABEL=My_Disk\nE:ID_FS_LABEL_ENC=My\\x20Disk\n"
                 "E:ID_FS_UUID=12-34\nE:ID_FS_UUID_ENC=12-34\n");
    Mount(folder.GetPath().c_str(), "/run", nullptr, MS_BIND);
    const Row row = CallRows("storage device list").at(0);
    const Json witness =
        JsonWitness("lsblk --json --nodeps --output FSTYPE,LABEL,UUID /dev/" + row.at("Name"));
    ASSERT_FALSE(witness.empty());
    const Json& device = witness.get_child("blockdevices").front().second;
    EXPECT_EQ(row.at("Filesystem"), MemberText(device, "fstype"));
    EXPECT_EQ(row.at("Label"), MemberText(device, "label"));
    EXPECT_EQ(row.at("UUID"), MemberText(device, "uuid"));
    EXPECT_EQ(row.at("Filesystem"), "xfs");
    EXPECT_EQ(row.at("Label"), "My Disk");
    EXPECT_EQ(row.at("UUID"), "12-34");
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(StorageDeviceListTest, ContentThatCannotBeReadIsUnknown) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNS, [] {
    Mount("none", "/run", "tmpfs", 0);
    Mount("none", "/dev", "tmpfs", 0);
    for (const Row& row : CallRows("storage device list")) {
      EXPECT_EQ(row.at("Filesystem"), "unknown") << row.at("Name");
      EXPECT_EQ(row.at("UUID"), "unknown") << row.at("Name");
    }
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(StorageDeviceListTest, ReportsThatTheKernelsFoldersAreMissing) {
  const std::string refusal = RunInNamespaces(CLONE_NEWNS, [] {
    Mount("none", "/sys", "tmpfs", 0);
    EXPECT_THAT(CallErrors("storage device list", {{"all", ""}}),
                ElementsAre("Unable to read /sys/block: No such file or directory"));
  });
  if (!refusal.empty()) {
    GTEST_SKIP() << refusal;
  }
}

TEST(StorageDeviceListTest, HasAWordForEveryMissingValue) {
  for (const Row& row : CallRows("storage device list", {{"all", ""}})) {
    for (const char* const field : {"Model", "Transport", "Filesystem", "Label", "UUID",
                                    "Partition Label", "Partition UUID"}) {
      EXPECT_NE(row.at(field), "") << row.at("Name") << " " << field;
    }
  }
}

TEST(StorageDeviceListTest, RejectsInvalidKindsAndSizes) {
  EXPECT_THAT(
      Call("storage device list", {{"kind", "disc"}}).GetErrors(),
      ElementsAre("Invalid data constraint for parameter 'kind'. Expected a single value from the "
                  "set [disk, part, rom, loop, lvm, crypt, mpath, dm, raid0, raid1, raid4, raid5, "
                  "raid6, raid10, linear] got 'disc'"));
  EXPECT_THAT(Call("storage device list", {{"minimum-size", "-1"}}).GetErrors(),
              ElementsAre("Invalid data constraint for parameter 'minimum-size'. Expected integer "
                          "in the range 0-1099511627776"));
}

TEST(StorageDeviceListTest, TakesEveryNameLiterally) {
  for (const char* const name : {"-x", "sda 1", "../sda", "'", "sda\n", ""}) {
    EXPECT_THAT(CallRows("storage device list", {{"name", name}, {"all", ""}}), IsEmpty()) << name;
  }
}

// ---- storage device counter list

// Returns the numbers that the kernel publishes in a separate file for each device.
std::map<std::string, std::vector<std::string>> SysStatistics() {
  std::map<std::string, std::vector<std::string>> statistics;
  for (const std::string& line :
       WitnessLines("for file in /sys/block/*/stat /sys/block/*/*/stat; do "
                    "if [ -f \"$file\" ]; then echo \"$file\" $(cat \"$file\"); fi; done")) {
    std::vector<std::string> words = WordsIn(line);
    const std::string folder = words[0].substr(0, words[0].rfind('/'));
    words.erase(words.begin());
    statistics[Replace(folder.substr(folder.rfind('/') + 1), "!", "/")] = words;
  }
  return statistics;
}

bool IsBetween(long value, const std::string& low, const std::string& high, long unit = 1) {
  return value >= std::stol(low) * unit && value <= std::stol(high) * unit;
}

TEST(StorageDeviceCounterListTest, AgreesWithTheFilesOfTheDevices) {
  const auto before = SysStatistics();
  const auto rows = CallRows("storage device counter list", {{"all", ""}});
  const auto after = SysStatistics();
  EXPECT_EQ(rows.size(), before.size());
  for (const Row& row : rows) {
    const std::string& name = row.at("Name");
    ASSERT_EQ(before.count(name), 1U) << name;
    const auto& low = before.at(name);
    const auto& high = after.at(name);
    EXPECT_TRUE(IsBetween(std::stol(row.at("Reads")), low.at(0), high.at(0))) << name;
    EXPECT_TRUE(IsBetween(std::stol(row.at("Read Bytes")), low.at(2), high.at(2), 512)) << name;
    EXPECT_TRUE(IsBetween(std::stol(row.at("Writes")), low.at(4), high.at(4))) << name;
    EXPECT_TRUE(IsBetween(std::stol(row.at("Written Bytes")), low.at(6), high.at(6), 512)) << name;
    EXPECT_TRUE(IsBetween(std::stol(row.at("Busy Milliseconds")), low.at(9), high.at(9))) << name;
  }
}

TEST(StorageDeviceCounterListTest, WithAnIntervalOnlyTheIntervalIsCounted) {
  const auto since = CallRows("storage device counter list");
  const auto during = CallRows("storage device counter list", {{"interval", "1"}});
  ASSERT_GE(during.size(), since.size());
  for (const Row& row : during) {
    EXPECT_LE(std::stol(row.at("Busy Milliseconds")), 60000) << row.at("Name");
    EXPECT_GE(std::stol(row.at("Reads")), 0) << row.at("Name");
  }
}

TEST(StorageDeviceCounterListTest, DevicesThatWereNeverUsedAreSkipped) {
  const auto everything = CallRows("storage device counter list", {{"all", ""}});
  const auto used = CallRows("storage device counter list");
  EXPECT_LE(used.size(), everything.size());
  for (const Row& row : used) {
    EXPECT_NE(row.at("Reads") + row.at("Writes") + row.at("Discards") + row.at("Flushes") +
                  row.at("In Progress"),
              "00000")
        << row.at("Name");
  }
}

TEST(StorageDeviceCounterListTest, RejectsAnIntervalOutsideItsRange) {
  for (const char* const interval : {"0", "3601", "-1"}) {
    EXPECT_THAT(CallErrors("storage device counter list", {{"interval", interval}}),
                ElementsAre("Invalid data constraint for parameter 'interval'. Expected integer in "
                            "the range 1-3600"));
  }
}

}  // namespace
}  // namespace Kestrel::Testing
