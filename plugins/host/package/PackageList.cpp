// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <string>
#include <vector>

#include "plugins/host/frame/ListCommand.h"
#include "plugins/host/frame/SanitizedText.h"
#include "plugins/host/frame/ValueFilter.h"
#include "plugins/host/package/PackageCommands.h"
#include "plugins/host/package/PackageDatabase.h"
#include "plugins/host/package/PackageMarks.h"
#include "plugins/host/package/PackageParameters.h"

namespace Kestrel::Host {
namespace {

constexpr char kAny[] = "any";
constexpr char kInstalled[] = "installed";

const StructShape& Shape() {
  static const StructShape shape =
      StructShape("Package")
          .String("Name", "The name of the package.")
          .String("Version",
                  "Its version; \"none\" when only its settings are left, or its files are not yet "
                  "here.")
          .String("Architecture",
                  "What it runs on, \"all\" for every machine; \"none\" when it is not recorded.")
          .Size("Size", "How much room it takes; 0 when it is not recorded.")
          .String("State",
                  "How far it is installed: config-files, half-installed, unpacked, "
                  "half-configured, triggers-awaited, triggers-pending or installed.")
          .Bool("Manual", "Whether it was installed on request, not as a dependency.")
          .Bool("Held", "Whether it is held at its version.")
          .String("Summary", "What it is, in a few words; \"none\" when it is not recorded.");
  return shape;
}

std::shared_ptr<MetaObj::MetaStruct> ToStruct(const Package& package, bool isManual) {
  auto row = Shape().NewStruct();
  row->SetField("Name", SanitizedText(package.name));
  row->SetField("Version", SanitizedText(TextOrNone(package.version)));
  row->SetField("Architecture", SanitizedText(TextOrNone(package.architecture)));
  SetSize(*row, "Size", package.sizeBytes);
  row->SetField("State", SanitizedText(package.state));
  row->SetField("Manual", isManual);
  row->SetField("Held", package.IsHeld());
  row->SetField("Summary", SanitizedText(TextOrNone(package.summary)));
  return row;
}

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return text;
}

// The states of the packages to list: only "installed" unless the user specifies others.
class StateFilter {
 public:
  StateFilter(const CallSpec::Input& input, CallSpec::Output& output) {
    std::vector<std::string> words;
    input.GetParameterList("state", words);
    for (const std::string& word : words) {
      Add(word, output);
    }
    if (words.empty()) {
      states_.emplace_back(kInstalled);
    }
  }

  bool Accepts(std::string_view state) const {
    return isAny_ || std::find(states_.begin(), states_.end(), state) != states_.end();
  }

 private:
  void Add(const std::string& word, CallSpec::Output& output) {
    const std::string state = LowerCase(word);
    if (state == kAny) {
      isAny_ = true;
    } else if (std::find(kPackageStates.begin(), kPackageStates.end(), state) ==
               kPackageStates.end()) {
      output.AddErrorMessage("There is no such state: '" + word + "'; --state is one of " +
                             GetWords());
    }
    states_.push_back(state);
  }

  static std::string GetWords() {
    std::string words;
    for (const std::string& state : kPackageStates) {
      words += state + ", ";
    }
    return words + kAny;
  }

  bool isAny_ = false;
  std::vector<std::string> states_;
};

class PackageList final : public ListCommand {
 public:
  PackageList()
      : ListCommand("List the packages on this machine.", Shape,
                    "The packages in the order of their names.") {
    ShowColumns("Name,Size Bytes,Version", {{"wrap-last", "true"}});
    AddMetaData("complete:name", "package.list Name");
    AddExample("", "List the installed packages");
    AddExample("--manual true --human", "List those installed on request, with readable sizes");
    AddExample("--name 'lib*' --sort Size --descending --limit 5",
               "List the five largest libraries");
    AddExample("--state config-files", "List removed packages whose settings are left");
  }

 private:
  void DeclareParameters(CallSpec::InputSpec& spec) const override {
    AddPackageNames(spec);
    Parameter("state", CallSpec::StringList,
              "List only packages in this state: config-files, half-installed, unpacked, "
              "half-configured, triggers-awaited, triggers-pending, installed or any. The "
              "default is installed.")
        .Short("s")
        .AddTo(spec);
    Parameter("manual", CallSpec::BoolList,
              "List only packages installed on request (true) or as dependencies (false).")
        .Short("u")
        .AddTo(spec);
  }

  void AddRows(const CallSpec::Input& input, CallSpec::Output& output,
               MetaObj::MetaList& rows) const override {
    const PackageNames names(input);
    const StateFilter states(input, output);
    if (output.HasError()) {
      return;
    }
    const BoolFilter manual(input, "manual");
    const PackageDatabase database;
    const PackageMarks marks(database.GetNativeArchitecture());
    for (const Package& package : database.GetPackages()) {
      const bool isManual = !marks.IsAutomatic(package);
      if (states.Accepts(package.state) && names.Accept(package) && manual.Accepts(isManual)) {
        rows.Add(ToStruct(package, isManual));
      }
    }
  }
};

}  // namespace

std::shared_ptr<AutoCli::Command> NewPackageList() { return std::make_shared<PackageList>(); }

}  // namespace Kestrel::Host
