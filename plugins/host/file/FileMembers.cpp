// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <optional>
#include <string>

#include "plugins/host/file/Archive.h"
#include "plugins/host/file/FileCommands.h"
#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/Regex.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/TimeFormat.h"
#include "plugins/host/frame/ValueFilter.h"

namespace Kestrel::Host {
namespace {

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("ArchiveMember")
          .String("Name", "The name of the member in the archive.")
          .String("Kind", "Its kind: file, folder, link, hardlink, pipe, socket or device.")
          .String("Mode", "Its kind and permissions, as in -rw-r--r--.")
          .String("User", "The name of its owner; \"none\" if the archive has only the number.")
          .String("Group", "The name of its group; \"none\" if the archive has only the number.")
          .Int("User Id", "The number of its owner; 0 if the archive does not say.")
          .Int("Group Id", "The number of its group; 0 if the archive does not say.")
          .Size("Size", "The length of its content.")
          .String("Modified", "When it was changed; \"none\" if the archive does not say.")
          .String("Target", "What a link leads to; \"none\" for any other member.");
  return shape;
}

std::shared_ptr<MetaObj::MetaString> TextOrNone(const std::string& text) {
  return SanitizedText(text.empty() ? "none" : text);
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const ArchiveMember& member) {
  auto row = Shape().NewStruct();
  row->SetField("Name", SanitizedText(member.name));
  row->SetField("Kind", member.kind);
  row->SetField("Mode", member.mode);
  row->SetField("User", TextOrNone(member.user));
  row->SetField("Group", TextOrNone(member.group));
  row->SetField("User Id", member.userId);
  row->SetField("Group Id", member.groupId);
  SetSize(*row, "Size", member.size);
  row->SetField("Modified",
                TextOrNone(member.modified ? FormatTimestamp(*member.modified) : std::string()));
  row->SetField("Target", TextOrNone(member.target));
  return row;
}

class FileMembers final : public ListCommand {
 public:
  FileMembers()
      : ListCommand("List the members of an archive.", Shape, "The members, in their order.") {
    ShowColumns("Mode,Size Bytes,Modified,Name", {{"wrap-last", "true"}});
    AddMetaData("complete:archive", "file");
    AddExample("--archive backup.tar.gz", "List all members");
    AddExample("--archive backup.tar.gz --name '*.conf'", "List those whose names end in .conf");
    AddExample("--archive backup.tar.gz --kind file --sort Size --descending --limit 10 --human",
               "List the ten largest files");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    Parameter("archive", CallSpec::String,
              "The path of the archive: tar (also with gzip, bzip2, xz or zstd) or zip.")
        .Short("f")
        .Required()
        .AddTo(spec);
    Parameter("name", CallSpec::StringList,
              "List only members of this name, in which * stands for anything.")
        .Short("n")
        .AddTo(spec);
    Parameter("match", CallSpec::String,
              "List only members whose name contains this regular expression.")
        .Short("m")
        .AddTo(spec);
    Parameter("kind", CallSpec::StringList, "List only members of this kind, one of %ENUM%.")
        .Short("k")
        .OneOf({{"file", ""},
                {"folder", ""},
                {"link", ""},
                {"hardlink", ""},
                {"pipe", ""},
                {"socket", ""},
                {"device", ""}})
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& /*output*/,
               MetaObj::MetaList& rows) const override {
    const NameFilter names(input, "name");
    const StringFilter kinds(input, "kind");
    std::optional<Regex> match;
    if (input.HasParameter("match")) {
      match.emplace(input.GetParameter("match"));
    }
    VisitArchive(input.GetParameter("archive"), [&](const ArchiveMember& member) {
      if (names.Accepts(member.name) && kinds.Accepts(member.kind) &&
          (!match || match->IsFoundIn(member.name))) {
        rows.Add(ToStruct(member));
      }
    });
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewFileMembers() { return std::make_shared<FileMembers>(); }

}  // namespace Kestrel::Host
