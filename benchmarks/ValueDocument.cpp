// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "benchmarks/ValueDocument.h"

#include <string_view>

#include "benchmarks/Records.h"

namespace Kestrel::Benchmarks {
namespace {

void AppendEscaped(std::string_view text, std::string& document) {
  for (const char c : text) {
    switch (c) {
      case '&':
        document += "&amp;";
        break;
      case '<':
        document += "&lt;";
        break;
      case '>':
        document += "&gt;";
        break;
      default:
        document += c;
    }
  }
}

void AppendField(std::string_view name, std::string_view tag, std::string_view text,
                 std::string& document) {
  document.append("<field name=\"").append(name).append("\"><").append(tag).append(">");
  AppendEscaped(text, document);
  document.append("</").append(tag).append("></field>\n");
}

}  // namespace

std::string MakeValueDocument(std::size_t count) {
  std::string document = "<output>\n<list type=\"structure\">\n";
  for (const Record& record : MakeRecords(count)) {
    document += "<structure typeName=\"Disk\">\n";
    AppendField("Name", "string", record.name, document);
    AppendField("Size", "int", std::to_string(record.size), document);
    AppendField("Enabled", "bool", record.isEnabled ? "true" : "false", document);
    AppendField("Path", "string", record.path, document);
    AppendField("Count", "int", std::to_string(record.count), document);
    document += "</structure>\n";
  }
  return document + "</list>\n</output>\n";
}

}  // namespace Kestrel::Benchmarks
