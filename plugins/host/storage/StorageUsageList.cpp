// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstring>
#include <iostream>
#include <string>
#include <tuple>
#include <vector>

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/storage/StorageCommands.h"
#include "plugins/host/storage/TreeUsage.h"

namespace Kestrel::Host {
namespace {

constexpr long kDefaultDepth = 1;
constexpr long kMaxDepth = 1000000;
constexpr long kMebibyte = 1 << 20;

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("StorageUsage")
          .String("Path", "The path of the folder or file.")
          .String("Kind", "\"folder\" or \"file\"; a file is whatever is not a folder.")
          .Size("Size", "The space that it and everything below it uses.")
          .Size("Apparent Size", "The sum of the lengths of the files and folders.")
          .Int("Files", "How many files and folders there are, itself included.")
          .Bool("Complete", "Whether everything below it could be read.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const TreeEntry& entry) {
  auto result = Shape().NewStruct();
  result->SetField("Path", SanitizedText(entry.path));
  result->SetField("Kind", entry.isFolder ? "folder" : "file");
  SetSize(*result, "Size", entry.usage.diskSize);
  SetSize(*result, "Apparent Size", entry.usage.apparentSize);
  result->SetField("Files", entry.usage.files);
  result->SetField("Complete", entry.isComplete);
  return result;
}

std::string Describe(const UnreadFolder& folder) {
  return "Unable to read " + SanitizedText(folder.path)->GetValue() + ": " +
         std::strerror(folder.error);
}

bool IsListedBefore(const TreeEntry& left, const TreeEntry& right) {
  return std::tie(right.usage.diskSize, left.path) < std::tie(left.usage.diskSize, right.path);
}

class StorageUsageList final : public ListCommand {
 public:
  StorageUsageList()
      : ListCommand("List how much space the folders in a folder use.", Shape,
                    "The folders, the largest first.") {
    ShowColumns("Size Bytes,Files,Path", {{"wrap-last", "true"}});
    AddMetaData("complete:directory", "directory");
    AddExample("--directory /etc/default --human", "List the space that each folder uses");
    AddExample("--directory /etc/default --all --limit 10",
               "List the ten largest folders and files");
    AddExample("--directory /usr/share/doc --depth 2 --partial",
               "List what can be read, two levels deep");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("directory", CallSpec::String, "The folder to look into.")
        .Short("d")
        .Required()
        .AddTo(spec);
    Parameter("depth", CallSpec::Int,
              "How many levels of folders to list; the default is 1; %ENUM%.")
        .Short("n")
        .Between(0, kMaxDepth)
        .AddTo(spec);
    Parameter("all", CallSpec::Flag, "Also list files.").Short("a").AddTo(spec);
    Parameter("minimum-size", CallSpec::Int, "List only what uses at least this many MiB; %ENUM%.")
        .Short("m")
        .Between(0, 1L << 40)
        .AddTo(spec);
    Parameter("all-filesystems", CallSpec::Flag,
              "Also count the file systems that are mounted below the folder.")
        .Short("x")
        .AddTo(spec);
    Parameter("partial", CallSpec::Flag,
              "List what can be read. Folders that cannot be read are reported on standard error.")
        .Short("p")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& output,
               MetaObj::MetaList& rows) const override {
    TreeOptions options;
    options.depth = input.HasParameter("depth") ? input.GetParameterInt("depth") : kDefaultDepth;
    options.listsFiles = input.IsFlagSet("all");
    options.crossesFilesystems = input.IsFlagSet("all-filesystems");
    TreeUsage tree = MeasureTree(input.GetParameter("directory"), options);
    ReportUnread(tree.unread, input.IsFlagSet("partial"), output);
    std::sort(tree.entries.begin(), tree.entries.end(), IsListedBefore);
    const long minimum = input.GetParameterInt("minimum-size");
    for (const TreeEntry& entry : tree.entries) {
      if (entry.usage.diskSize / kMebibyte >= minimum) {
        rows.Add(ToStruct(entry));
      }
    }
  }

  static void ReportUnread(const std::vector<UnreadFolder>& folders, bool isPartial,
                           CallSpec::Output& output) {
    for (const UnreadFolder& folder : folders) {
      if (isPartial) {
        // An error message of the output would suppress the rows.
        std::cerr << Describe(folder) + "\n";
      } else {
        output.AddErrorMessage(Describe(folder));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewStorageUsageList() {
  return std::make_shared<StorageUsageList>();
}

}  // namespace Kestrel::Host
