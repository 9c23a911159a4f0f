// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/log/LogParameters.h"

#include <kestrel/KestrelException.h>

#include <string>

#include "plugins/host/frame/Parameter.h"
#include "plugins/host/log/LogLevel.h"
#include "plugins/host/log/LogTime.h"
#include "plugins/host/log/SinceTime.h"

namespace Kestrel::Host {
namespace {

constexpr std::size_t kDefaultLines = 50;
constexpr std::int64_t kMaxLines = 100000;

}  // namespace

void AddLogParameters(CallSpec::InputSpec& spec) {
  Parameter("since", CallSpec::String,
            "List lines from this time on: today, yesterday, a span back such as -2h (s, m, h, d, "
            "w), or a date with or without a time.")
      .Short("s")
      .AddTo(spec);
  Parameter("level", CallSpec::String,
            "List lines of this level and of more urgent ones: emerg, alert, crit, err, warning, "
            "notice, info, debug, or 0 to 7.")
      .Short("l")
      .AddTo(spec);
  Parameter("match", CallSpec::String,
            "List only lines whose text contains a match of this regular expression.")
      .Short("m")
      .AddTo(spec);
  Parameter(
      "lines", CallSpec::Int,
      "The maximum number of lines, of which the last ones are listed; %ENUM%. The default is "
      "50, or no limit with --since.")
      .Short("n")
      .Between(1, kMaxLines)
      .AddTo(spec);
}

LogChoice::LogChoice(const CallSpec::Input& input, const LocalZone& zone,
                     CallSpec::Output& output) {
  if (input.HasParameter("since")) {
    ReadSince(input.GetParameter("since"), zone, output);
  }
  if (input.HasParameter("level")) {
    ReadLevel(input.GetParameter("level"), output);
  }
  if (input.HasParameter("match")) {
    ReadMatch(input.GetParameter("match"), output);
  }
  filter_.lines = filter_.since ? kAllLines : kDefaultLines;
  if (input.HasParameter("lines")) {
    filter_.lines = static_cast<std::size_t>(input.GetParameterInt("lines"));
  }
}

void LogChoice::ReadSince(const std::string& text, const LocalZone& zone,
                          CallSpec::Output& output) {
  filter_.since = ParseSince(text, zone, CurrentSeconds());
  if (!filter_.since) {
    output.AddErrorMessage("There is no such time: '" + text + "'; --since is " + kSinceForms);
  }
}

void LogChoice::ReadLevel(const std::string& text, CallSpec::Output& output) {
  const auto level = ParseLevel(text);
  if (!level) {
    output.AddErrorMessage("There is no such level: '" + text + "'; --level is " + kLevelForms);
    return;
  }
  filter_.level = *level;
}

void LogChoice::ReadMatch(const std::string& text, CallSpec::Output& output) {
  try {
    filter_.match = &match_.emplace(text);
  } catch (const KestrelException& error) {
    output.AddErrorMessage(error.what());
  }
}

}  // namespace Kestrel::Host
