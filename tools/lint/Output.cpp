// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/lint/Output.h"

#include <cctype>
#include <cstddef>
#include <map>
#include <nlohmann/json.hpp>
#include <string_view>

#include "kestrel/Version.h"

namespace Kestrel::Lint {

using nlohmann::json;

namespace {

constexpr const char* kDigits = "0123456789abcdef";

// Escapes control characters, including U+0080 to U+009F, which some terminals interpret as
// commands.
std::string WithoutControls(const std::string& text) {
  std::string safe;
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto byte = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : '\0');
    const bool isPair = byte == 0xC2 && next >= 0x80 && next < 0xA0;
    if (isPair) {
      byte = next;
      ++i;
    }
    if (isPair || byte < 0x20 || byte == 0x7F) {
      safe += std::string("\\x") + kDigits[byte >> 4U] + kDigits[byte & 0xFU];
    } else {
      safe += text[i];
    }
  }
  return safe;
}

std::string AsUri(const std::string& file) {
  constexpr std::string_view kPlain = "/._-~";
  std::string uri;
  for (const char c : file) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) != 0 || kPlain.find(c) != std::string_view::npos) {
      uri += c;
    } else {
      uri += std::string("%") + kDigits[byte >> 4U] + kDigits[byte & 0xFU];
    }
  }
  return uri;
}

// Bytes that are not UTF-8 are replaced.
std::string Dump(const json& value) {
  return value.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

const char* SarifLevel(Severity severity) {
  return severity == Severity::Info ? "note" : WordOf(severity);
}

json SarifRules(std::map<std::string_view, std::size_t>& indexes) {
  json rules = json::array();
  for (const Rule& rule : GetRules()) {
    indexes.emplace(rule.id, rules.size());
    rules.push_back({{"id", rule.id},
                     {"shortDescription", {{"text", rule.explanation}}},
                     {"defaultConfiguration", {{"level", SarifLevel(rule.severity)}}}});
  }
  return rules;
}

json SarifResult(const Finding& finding, std::size_t ruleIndex) {
  const json place = {
      {"artifactLocation", {{"uri", AsUri(finding.file)}}},
      {"region", {{"startLine", finding.position.line}, {"startColumn", finding.position.column}}}};
  json locations = json::array();
  locations.push_back({{"physicalLocation", place}});
  return {{"ruleId", finding.rule->id},
          {"ruleIndex", ruleIndex},
          {"level", SarifLevel(finding.rule->severity)},
          {"message", {{"text", finding.message}}},
          {"locations", locations}};
}

}  // namespace

std::string WriteText(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings) {
    text += WithoutControls(finding.file + ":" + std::to_string(finding.position.line) + ":" +
                            std::to_string(finding.position.column) + ": " +
                            WordOf(finding.rule->severity) + ": " + finding.rule->id + ": " +
                            finding.message) +
            "\n";
  }
  return text;
}

std::string WriteJson(const std::vector<Finding>& findings) {
  json list = json::array();
  for (const Finding& finding : findings) {
    list.push_back({{"file", finding.file},
                    {"line", finding.position.line},
                    {"column", finding.position.column},
                    {"severity", WordOf(finding.rule->severity)},
                    {"rule", finding.rule->id},
                    {"message", finding.message}});
  }
  return Dump({{"findings", list}});
}

std::string WriteSarif(const std::vector<Finding>& findings) {
  std::map<std::string_view, std::size_t> indexes;
  const json driver = {
      {"name", "vexil-lint"}, {"version", KESTREL_VERSION_STRING}, {"rules", SarifRules(indexes)}};
  json results = json::array();
  for (const Finding& finding : findings) {
    results.push_back(SarifResult(finding, indexes.at(finding.rule->id)));
  }
  json runs = json::array();
  runs.push_back(
      {{"tool", {{"driver", driver}}}, {"columnKind", "unicodeCodePoints"}, {"results", results}});
  return Dump({{"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
               {"version", "2.1.0"},
               {"runs", runs}});
}

}  // namespace Kestrel::Lint
