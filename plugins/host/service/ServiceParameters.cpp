// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/service/ServiceParameters.h"

#include <algorithm>

#include "plugins/host/frame/NamePattern.h"
#include "plugins/host/frame/Parameter.h"

namespace Kestrel::Host {
namespace {

std::string LowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return text;
}

std::string StateWords() {
  std::string words;
  for (const char* const state : kServiceStates) {
    words.append(words.empty() ? "" : ", ").append(state);
  }
  return words;
}

std::string WithoutEnding(std::string pattern, std::string_view ending) {
  if (pattern.size() > ending.size() &&
      std::string_view(pattern).substr(pattern.size() - ending.size()) == ending) {
    pattern.resize(pattern.size() - ending.size());
  }
  return pattern;
}

}  // namespace

void AddServiceName(CallSpec::InputSpec& spec) {
  Parameter("name", CallSpec::String, "The name of the service, with .service at its end or not.")
      .Short("n")
      .Required()
      .AddTo(spec);
}

void UnitNames::DeclareParameters(CallSpec::InputSpec& spec, const char* what) {
  const std::string those = std::string("List only ") + what;
  Parameter("name", CallSpec::StringList,
            (those + " with this name. * in it stands for any text.").c_str())
      .Short("n")
      .AddTo(spec);
  Parameter("match", CallSpec::String,
            (those + " whose names contain a match of this regular expression.").c_str())
      .Short("m")
      .AddTo(spec);
}

UnitNames::UnitNames(const CallSpec::Input& input, std::string_view ending) {
  input.GetParameterList("name", patterns_);
  for (std::string& pattern : patterns_) {
    pattern = WithoutEnding(std::move(pattern), ending);
  }
  if (input.HasParameter("match")) {
    match_.emplace(input.GetParameter("match"));
  }
}

bool UnitNames::Accept(const std::string& name) const {
  const auto matches = [&name](const std::string& pattern) {
    return MatchesNamePattern(name, pattern);
  };
  return (patterns_.empty() || std::any_of(patterns_.begin(), patterns_.end(), matches)) &&
         (!match_ || match_->IsFoundIn(name));
}

void ServiceStates::DeclareParameter(CallSpec::InputSpec& spec) {
  Parameter(
      "state", CallSpec::StringList,
      ("List only services in this state, in upper or lower case: " + StateWords() + ".").c_str())
      .Short("s")
      .AddTo(spec);
}

ServiceStates::ServiceStates(const CallSpec::Input& input, CallSpec::Output& output) {
  input.GetParameterList("state", states_);
  for (std::string& state : states_) {
    const std::string word = LowerCase(state);
    if (std::find(kServiceStates.begin(), kServiceStates.end(), word) == kServiceStates.end()) {
      output.AddErrorMessage("There is no such state: '" + state + "'; --state is one of " +
                             StateWords());
    }
    state = word;
  }
}

bool ServiceStates::Accept(std::string_view state) const {
  return states_.empty() || std::find(states_.begin(), states_.end(), state) != states_.end();
}

std::string TextOr(const char* word, const std::string& text) { return text.empty() ? word : text; }

}  // namespace Kestrel::Host
