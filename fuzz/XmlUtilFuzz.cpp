// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Input: a value document, as a command prints it.
//
// The result must equal that from a tree of the document, including the parser's diagnostics. A
// value must be readable again after it has been printed.

#include "kestrel/autocli/XmlUtil.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>

#include "FuzzInput.h"
#include "Printed.h"
#include "Property.h"
#include "XmlMessages.h"
#include "kestrel/KestrelException.h"
#include "kestrel/autocli/XmlFormatter.h"

namespace Kestrel::Fuzz {
namespace {

// The result of reading a document. The text contains the parser's diagnostics and either the
// printed value or the message of the exception.
struct Outcome {
  std::string text;
  Value value;
};

template <typename Read>
Outcome OutcomeOf(Read read) {
  const XmlMessages messages;
  try {
    const Value value = read();
    if (value == nullptr) {
      return {messages.GetText() + "no value", nullptr};
    }
    std::ostringstream out;
    AutoCli::XmlFormatter().Format(value, out, 0);
    return {messages.GetText() + out.str(), value};
  } catch (const KestrelException& error) {
    return {messages.GetText() + "throws " + error.what(), nullptr};
  }
}

bool IsTextOrComment(const xmlNode& node) {
  return node.type == XML_TEXT_NODE || node.type == XML_CDATA_SECTION_NODE ||
         node.type == XML_COMMENT_NODE;
}

Value ReadTree(const std::string& text) {
  const std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), "STDOUT", nullptr, 0), xmlFreeDoc);
  if (document == nullptr) {
    return nullptr;
  }
  const xmlNode* node = xmlDocGetRootElement(document.get())->children;
  while (node != nullptr && IsTextOrComment(*node)) {
    node = node->next;
  }
  try {
    return node == nullptr ? nullptr : AutoCli::XmlUtil_BuildMetaObject(node);
  } catch (const KestrelException& error) {
    throw KestrelException(
        std::string("Error parsing command output.  Unable to build a proper metaobject from "
                    "output tag.  output must contain properly formatted tags of type bool, int, "
                    "string, structure and list. Error was : ") +
        error.what());
  }
}

}  // namespace
}  // namespace Kestrel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  const std::string text = FuzzInput(data, size).TakeRest();
  const Outcome read = OutcomeOf([&] { return Kestrel::AutoCli::XmlUtil_ParseXmlOutput(text); });
  RequireEqual(read.text, OutcomeOf([&] { return ReadTree(text); }).text,
               "a document is read as from its tree");
  if (read.value != nullptr) {
    const XmlMessages messages;
    RequireJsonReadsBack(read.value);
    RequireXmlReadsBack(read.value);
  }
  return 0;
}
