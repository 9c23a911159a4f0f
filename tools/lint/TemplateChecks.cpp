// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "kestrel/callspec/ParameterSpec.h"
#include "tools/lint/Checks.h"
#include "tools/lint/Injection.h"
#include "tools/lint/Markers.h"
#include "tools/lint/ShellReader.h"

namespace Kestrel::Lint {

using CallSpec::ParameterSpec;

namespace {

bool BeginsCompound(const std::string& command) {
  const std::size_t begin = command.find_first_not_of(" \t");
  if (begin == std::string::npos) {
    return false;
  }
  const std::string word =
      command.substr(begin, command.find_first_of(" \t\r\n;&|<>()", begin) - begin);
  const std::set<std::string> keywords = {"if", "for", "while", "until", "case", "{", "!"};
  return command[begin] == '(' || keywords.count(word) != 0;
}

/// Checks the templates of one command.
class TemplateCheck {
 public:
  TemplateCheck(const Document& document, const CommandParts& command, FileReport& report)
      : document_(document), command_(command), report_(report) {
    for (const auto& parameter : command.input->GetParameters()) {
      parameters_.emplace(parameter->GetName(), parameter.get());
    }
    // A refused parameter is reported once, not again at each of its markers.
    const Element* const input = command.element->Find("input-spec");
    for (const Element* parameter :
         input == nullptr ? std::vector<const Element*>() : input->FindAll("parameter")) {
      names_.push_back(parameter->Get("name"));
    }
  }

  void Run() {
    const Element* const execute = command_.element->Find("execute");
    const Element* const input = command_.element->Find("stdin");
    if (execute == nullptr || report_.HasFinding(*execute)) {
      return;
    }
    const MarkerList markers = CheckTemplate(*execute);
    if (input != nullptr) {
      CheckTemplate(*input);
    }
    CheckUnused();
    CheckSecrets(*execute, markers);
    if (BeginsCompound(execute->GetContent())) {
      report_.Add("execute-keyword", *execute,
                  "if LANG is not set, an assignment is put before the command, which is a syntax "
                  "error here",
                  "begin the command with ':;'");
    }
    CheckValues(*execute, markers);
  }

 private:
  using Adder =
      std::function<void(const char* rule, const std::string& what, const std::string& advice)>;

  void AddAt(const char* rule, const Element& element, std::size_t position,
             const std::string& what, const std::string& advice) {
    const Piece& piece = *element.GetContentPiece();
    report_.AddAt(rule, &element,
                  document_.PositionOf(piece.offsets[std::min(position, piece.offsets.size() - 1)]),
                  what, advice);
  }

  MarkerList CheckTemplate(const Element& element) {
    if (element.GetContentPiece() == nullptr) {
      return {};
    }
    MarkerList list = FindMarkers(element.GetContentPiece()->text, names_);
    for (const MarkerFault& fault : list.faults) {
      used_.insert(fault.name);
      if (HasRefused() && std::string_view(fault.rule) == "marker-unknown") {
        continue;  // it may refer to a parameter that the loader refuses
      }
      AddAt(fault.rule, element, fault.position, fault.what, fault.advice);
      hasFault_ = true;
    }
    for (const Marker& marker : list.markers) {
      used_.insert(marker.name);
      if (parameters_.count(marker.name) == 0) {
        hasFault_ = true;
        continue;
      }
      CheckKind(element, marker);
      CheckOptional(element, marker, list.markers);
    }
    return list;
  }

  bool HasRefused() const {
    return std::any_of(names_.begin(), names_.end(),
                       [this](const std::string& name) { return parameters_.count(name) == 0; });
  }

  void CheckKind(const Element& element, const Marker& marker) {
    const ParameterSpec& parameter = *parameters_.at(marker.name);
    const bool isFlag = parameter.GetType() == CallSpec::Flag;
    if (marker.kind == Marker::Kind::Value && (isFlag || parameter.AllowMultiple())) {
      AddAt("marker-kind", element, marker.begin,
            "$val does not work for the " + std::string(isFlag ? "flag" : "list") + " '" +
                marker.name + "': every call with it fails",
            isFlag ? "use $if{" + marker.name + ",text}" : "use $list or $multilist");
      hasFault_ = true;
    } else if (isFlag && marker.kind != Marker::Kind::Conditional) {
      AddAt("marker-kind", element, marker.begin, "the flag '" + marker.name + "' has no values",
            "use $if{" + marker.name + ",text}");
      hasFault_ = true;
    }
  }

  void CheckOptional(const Element& element, const Marker& marker,
                     const std::vector<Marker>& markers) {
    if (marker.kind == Marker::Kind::Conditional || parameters_.at(marker.name)->IsRequired()) {
      return;
    }
    const bool isGuarded = std::any_of(markers.begin(), markers.end(), [&](const Marker& outer) {
      return outer.kind == Marker::Kind::Conditional && outer.name == marker.name &&
             outer.begin < marker.begin && marker.begin < outer.end;
    });
    if (!isGuarded) {
      AddAt("marker-outside-if", element, marker.begin,
            "'" + marker.name + "' is optional: if it is not given, the marker itself is left",
            "put it into $if{" + marker.name + ",...}");
      hasFault_ = true;
    }
  }

  void CheckUnused() {
    for (const auto& [name, element] : command_.parameters) {
      if (used_.count(name) == 0 && !report_.HasFinding(*element)) {
        report_.Add("parameter-unused", *element, "no template contains '" + name + "'",
                    "use it, or remove the parameter");
      }
    }
  }

  void CheckSecrets(const Element& execute, const MarkerList& list) {
    for (const Marker& marker : list.markers) {
      const auto parameter = parameters_.find(marker.name);
      if (parameter != parameters_.end() && parameter->second->IsSecret()) {
        AddAt("secret-on-command-line", execute, marker.begin,
              "every user of the machine can read the secret '" + marker.name + "'",
              "pass it in 'stdin'");
      }
    }
  }

  // Values are not examined until all other mistakes in the template have been corrected.
  void CheckValues(const Element& execute, const MarkerList& list) {
    if (hasFault_) {
      return;
    }
    const Injection injection(execute.GetContent(), command_.input);
    std::set<std::string> done;
    for (const Marker& marker : list.markers) {
      if (marker.kind != Marker::Kind::Conditional && done.insert(marker.name).second &&
          !HasLostConstraint(*parameters_.at(marker.name), *command_.parameters.at(marker.name))) {
        const Verdict verdict = injection.Judge(marker.name);
        Report(execute, marker, verdict);
        if (verdict.isUnknown) {
          return;
        }
      }
    }
  }

  void Report(const Element& execute, const Marker& marker, const Verdict& verdict) {
    const Adder add = [&](const char* rule, const std::string& what, const std::string& advice) {
      AddAt(rule, execute, marker.begin, what, advice);
    };
    if (verdict.isUnknown) {
      add("marker-place", "what the shell makes of '" + marker.name + "' here is not known",
          "pass it as an argument of a plain command, or in 'stdin'");
    } else if (!verdict.program.empty()) {
      add("marker-program",
          "'" + marker.name + "' becomes a part of a program for " + verdict.program,
          "pass it as an argument of its own");
    } else if (verdict.runsCommand || verdict.addsWord || verdict.addsOption) {
      ReportUnsafe(marker, verdict, add);
    } else {
      ReportChanged(marker, verdict, add);
    }
  }

  static std::string SuggestQuotes(const Marker& marker) {
    return "write '$val{" + marker.name + "}', with the quotes directly around it";
  }

  static void ReportUnsafe(const Marker& marker, const Verdict& verdict, const Adder& add) {
    const bool isValue = marker.kind == Marker::Kind::Value;
    if (verdict.runsCommand) {
      add("unsafe-command", "the value " + Quote(*verdict.runsCommand) + " runs another command",
          isValue ? SuggestQuotes(marker) + " and nothing else"
                  : "write false instead of true, or pass it in 'stdin'");
    }
    if (verdict.addsWord) {
      add("unsafe-word", "the value " + Quote(*verdict.addsWord) + " becomes several words",
          isValue ? SuggestQuotes(marker) : "restrict the values, or pass them in 'stdin'");
    }
    if (verdict.addsOption) {
      add("unsafe-option", "the value " + Quote(*verdict.addsOption) + " is taken for an option",
          "write it after '--option=', or put -- before it, or restrict the value");
    }
  }

  static void ReportChanged(const Marker& marker, const Verdict& verdict, const Adder& add) {
    if (verdict.isAltered) {
      const bool isCut = verdict.isAltered->find('}') != std::string::npos;
      const bool isValue = marker.kind == Marker::Kind::Value;
      add("changed-value", "the value " + Quote(*verdict.isAltered) + " arrives altered",
          isCut     ? "exclude '}' by a constraint, because it ends the $if, or use 'stdin'"
          : isValue ? SuggestQuotes(marker) + ", or use 'stdin'"
                    : "restrict the values, or pass them in 'stdin'");
    } else if (verdict.losesQuotes) {
      add("changed-quotes", "the value " + Quote(*verdict.losesQuotes) + " loses its quotes",
          "restrict the value, or pass it in 'stdin', if quotes matter");
    }
  }

  const Document& document_;
  const CommandParts& command_;
  FileReport& report_;
  std::map<std::string, const ParameterSpec*> parameters_;
  std::vector<std::string> names_;
  std::set<std::string> used_;
  bool hasFault_ = false;
};

}  // namespace

void CheckTemplates(const Document& document, const CommandParts& command, FileReport& report) {
  TemplateCheck(document, command, report).Run();
}

}  // namespace Kestrel::Lint
