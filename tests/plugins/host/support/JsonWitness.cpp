// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "plugins/host/support/JsonWitness.h"

#include <boost/property_tree/json_parser.hpp>
#include <sstream>

#include "support/Witness.h"

namespace Kestrel::Testing {

Json JsonWitness(const std::string& command) {
  const std::string text = Witness(command);
  Json tree;
  if (text.find_first_not_of(" \n") != std::string::npos) {
    std::istringstream stream(text);
    boost::property_tree::read_json(stream, tree);
  }
  return tree;
}

std::string MemberText(const Json& node, const std::string& name, const std::string& otherwise) {
  const auto found = node.find(name);
  return found == node.not_found() || found->second.data() == "null" ? otherwise
                                                                     : found->second.data();
}

std::vector<std::string> MemberTexts(const Json& node, const std::string& name) {
  std::vector<std::string> texts;
  const auto found = node.find(name);
  if (found == node.not_found()) {
    return texts;
  }
  for (const auto& [key, element] : found->second) {
    if (element.data() != "null") {
      texts.push_back(element.data());
    }
  }
  return texts;
}

}  // namespace Kestrel::Testing
