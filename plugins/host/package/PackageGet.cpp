// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <string>
#include <string_view>

#include "plugins/host/frame/HostCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/TextParsing.h"
#include "plugins/host/package/PackageCommands.h"
#include "plugins/host/package/PackageDatabase.h"
#include "plugins/host/package/PackageMarks.h"
#include "plugins/host/package/PackageParameters.h"

namespace Kestrel::Host {
namespace {

// The fields that have one line and those that are lists, under the names that dpkg uses.
constexpr const char* kLineFields[] = {"Section", "Priority", "Source",
                                       "Origin",  "Homepage", "Multi-Arch"};
constexpr const char* kListFields[] = {"Pre-Depends", "Depends",    "Recommends", "Suggests",
                                       "Enhances",    "Provides",   "Breaks",     "Conflicts",
                                       "Replaces",    "Built-Using"};

const StructShape& MaintainerShape() {
  static const StructShape shape =
      StructShape("PackageMaintainer")
          .String("Name", "Who looks after the package; \"none\" when it is not recorded.")
          .String("Address", "The electronic address; \"none\" when there is none.");
  return shape;
}

void DeclareRelations(StructShape& shape) {
  shape.Strings("Pre-Depends", "What must be set up before it is unpacked.")
      .Strings("Depends", "What it needs; | is between packages of which one is enough.")
      .Strings("Recommends", "What is found with it in most cases.")
      .Strings("Suggests", "What makes it more useful.")
      .Strings("Enhances", "What it makes more useful.")
      .Strings("Provides", "The virtual packages that it provides.")
      .Strings("Breaks", "What does not work with it.")
      .Strings("Conflicts", "What cannot be installed with it.")
      .Strings("Replaces", "Whose files it may overwrite.")
      .Strings("Built-Using", "Sources that are part of it, besides its own.");
}

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("PackageDetails")
          .String("Name", "The name of the package.")
          .String("Version",
                  "Its version; \"none\" when only its settings are left, or its files are not yet "
                  "here.")
          .String("Architecture",
                  "What it runs on, \"all\" for every machine; \"none\" when it is not recorded.")
          .String("State",
                  "How far it is installed: config-files, half-installed, unpacked, "
                  "half-configured, triggers-awaited, triggers-pending or installed.")
          .String("Wanted",
                  "What the administrator wants: install, hold, deinstall, purge or unknown.")
          .Bool("Reinstall Required", "Whether it is broken and must be installed again.")
          .Bool("Manual", "Whether it was installed on request, not as a dependency.")
          .Size("Size", "How much room it takes; 0 when it is not recorded.")
          .String("Section", "The kind of software; \"none\" when it is not recorded.")
          .String("Priority", "How important it is; \"none\" when it is not recorded.")
          .String("Source", "The source that it was built from; \"none\" when it has its name.")
          .String("Origin", "Who distributes it; \"none\" when it is not recorded.")
          .Struct("Maintainer", MaintainerShape(), "Who looks after it.")
          .String("Homepage", "Where its authors publish it; \"none\" when it is not recorded.")
          .Bool("Essential", "Whether the machine does not work without it.")
          .String("Multi-Arch",
                  "How it is shared between architectures: same, foreign, allowed or no; \"none\" "
                  "when it is not recorded.")
          .With(DeclareRelations)
          .Strings("Settings", "The files with its settings, which an upgrade keeps.")
          .String("Summary", "What it is, in a few words; \"none\" when it is not recorded.")
          .String("Description", "What it is, in several lines; \"none\" when it is not recorded.");
  return shape;
}

// Parses "Name <address>".
std::shared_ptr<MetaObj::MetaStruct> ToMaintainer(std::string_view text) {
  const std::size_t start = text.find('<');
  std::string_view address =
      start == std::string_view::npos ? std::string_view() : text.substr(start + 1);
  address = address.substr(0, address.find('>'));
  auto result = MaintainerShape().NewStruct();
  result->SetField("Name", SanitizedText(TextOrNone(Trim(text.substr(0, start)))));
  result->SetField("Address", SanitizedText(TextOrNone(Trim(address))));
  return result;
}

// Omits the first line, which is the summary. The others begin with a space; one with only a full
// stop is an empty line.
std::string LongDescription(std::string_view text) {
  std::string description;
  const std::vector<std::string_view> lines = SplitLines(text);
  for (std::size_t index = 1; index < lines.size(); ++index) {
    const std::string_view line = lines[index].substr(1);
    description.append(index == 1 ? "" : "\n").append(Trim(line) == "." ? "" : line);
  }
  return description;
}

// Parses lines with a path, a checksum and possibly "obsolete" or "remove-on-upgrade". A path may
// contain spaces.
std::vector<std::string> SettingsFiles(std::string_view text) {
  std::vector<std::string> paths;
  for (std::string_view line : SplitLines(text)) {
    line = Trim(line);
    for (const std::string_view word : {" obsolete", " remove-on-upgrade"}) {
      if (line.size() > word.size() && line.substr(line.size() - word.size()) == word) {
        line.remove_suffix(word.size());
      }
    }
    if (!line.empty()) {
      paths.emplace_back(line.substr(0, line.rfind(' ')));
    }
  }
  return paths;
}

void SetState(const Package& package, bool isManual, MetaObj::MetaStruct& result) {
  result.SetField("Name", SanitizedText(package.name));
  result.SetField("Version", SanitizedText(TextOrNone(package.version)));
  result.SetField("Architecture", SanitizedText(TextOrNone(package.architecture)));
  result.SetField("State", SanitizedText(package.state));
  result.SetField("Wanted", SanitizedText(package.wanted));
  result.SetField("Reinstall Required", package.isReinstallRequired);
  result.SetField("Manual", isManual);
  SetSize(result, "Size", package.sizeBytes);
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const Package& package, bool isManual) {
  auto result = Shape().NewStruct();
  SetState(package, isManual, *result);
  const ControlStanza stanza(package.stanza);
  for (const char* const name : kLineFields) {
    result->SetField(name, SanitizedText(TextOrNone(stanza.GetFirstLine(name))));
  }
  for (const char* const name : kListFields) {
    result->SetField(name, SanitizedList(stanza.GetList(name)));
  }
  result->SetField("Essential", stanza.Get("Essential") == "yes");
  result->SetField("Maintainer", ToMaintainer(stanza.GetFirstLine("Maintainer")));
  result->SetField("Settings", SanitizedList(SettingsFiles(stanza.Get("Conffiles"))));
  result->SetField("Summary", SanitizedText(TextOrNone(package.summary)));
  result->SetField("Description",
                   SanitizedLines(TextOrNone(LongDescription(stanza.Get("Description")))));
  return result;
}

class PackageGet final : public HostCommand {
 public:
  PackageGet() : HostCommand("Show everything that is recorded about one package.") {
    ShowAsLines(
        "PackageDetails",
        "Version,Architecture,State,Wanted,Manual,Size,Section,Priority,Source,Origin,"
        "Homepage,Maintainer,Depends,Recommends,Provides,Summary,Description",
        {{"header:PackageDetails", "Package %Name%"}, {"header:PackageMaintainer", "<NONE>"}});
    AddMetaData("complete:name", "package.list Name");
    AddExample("--name dpkg", "Show the program that manages packages");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override { AddPackageName(spec); }

  void DeclareResult(CallSpec::OutputSpec& spec) const override {
    Shape().DeclareStruct(spec, "The package with all that is recorded about it.");
  }

  void Run(const CallSpec::Input& input, CallSpec::Output& output) const override {
    const PackageDatabase database;
    const Package& package = database.Require(input.GetParameter("name"));
    const PackageMarks marks(database.GetNativeArchitecture());
    output.SetRootObject(ToStruct(package, !marks.IsAutomatic(package)));
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewPackageGet() { return std::make_shared<PackageGet>(); }

}  // namespace Kestrel::Host
