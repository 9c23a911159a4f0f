// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Input: a value document, as a command prints it.
//
// The result must equal that of a reader that builds a tree of the document, including the parser's
// diagnostics. A document must be refused instead if its entities stand for more than 10 MB of
// text. A value must be readable again after it has been printed.

#include "kestrel/autocli/XmlUtil.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <string>

#include "FuzzInput.h"
#include "Printed.h"
#include "Property.h"
#include "Usage.h"
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

std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> ParseTree(const std::string& text) {
  return {xmlReadMemory(text.data(), static_cast<int>(text.size()), "STDOUT", nullptr, 0),
          xmlFreeDoc};
}

Value ReadTree(const std::string& text) {
  const std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document = ParseTree(text);
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

// The size of the text that the entities of a document stand for. The text itself may be too long
// to be made.
class EntityText {
 public:
  explicit EntityText(const xmlDoc& document) : document_(document) {}

  // Returns the size of the text of all references in `first`, its next siblings and the elements
  // among them.
  double SizeBelow(const xmlNode* first) {
    double size = 0;
    for (const xmlNode* node = first; node != nullptr; node = node->next) {
      if (node->type == XML_ENTITY_REF_NODE) {
        size += SizeOf(AsText(node->name));
      } else if (node->type == XML_ELEMENT_NODE) {
        size += SizeBelow(node->children);
      }
      const xmlAttr* attribute = node->type == XML_ELEMENT_NODE ? node->properties : nullptr;
      for (; attribute != nullptr; attribute = attribute->next) {
        size += SizeBelow(attribute->children);
      }
    }
    return size;
  }

 private:
  static std::string AsText(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

  double SizeOf(const std::string& name) {
    const xmlEntity* const entity =
        xmlGetDocEntity(&document_, reinterpret_cast<const xmlChar*>(name.c_str()));
    if (entity == nullptr || entity->content == nullptr) {
      return 0;
    }
    // An entity that refers to itself stands for text without an end.
    const auto [known, isNew] = sizes_.emplace(name, std::numeric_limits<double>::infinity());
    return isNew ? sizes_[name] = SizeOfText(AsText(entity->content)) : known->second;
  }

  double SizeOfText(const std::string& text) {
    double size = static_cast<double>(text.size());
    for (std::size_t i = text.find('&'); i != std::string::npos; i = text.find('&', i + 1)) {
      size += SizeOf(text.substr(i + 1, text.find(';', i) - i - 1));
    }
    return size;
  }

  const xmlDoc& document_;
  std::map<std::string, double> sizes_;
};

bool HasTooLongEntities(const std::string& text) {
  const XmlMessages messages;
  const std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document = ParseTree(text);
  return document != nullptr &&
         EntityText(*document).SizeBelow(xmlDocGetRootElement(document.get())) > kMaxEntityText;
}

bool IsRefused(const Outcome& outcome) {
  const std::string message =
      "throws Error parsing command output.  The entities stand for more than 10 MB of text";
  return outcome.text.size() >= message.size() &&
         outcome.text.substr(outcome.text.size() - message.size()) == message;
}

// Requires that a refused document has entities that are too long. Default values of attributes may
// also be the reason, and they are not in the tree.
void RequireReason(const std::string& text) {
  const bool hasReason = HasTooLongEntities(text) || text.find("<!ATTLIST") != std::string::npos;
  Require(hasReason, "a refused document has entities that stand for more than 10 MB");
}

}  // namespace
}  // namespace Kestrel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace Kestrel::Fuzz;
  const std::string text = FuzzInput(data, size).TakeRest();
  const Usage usage(size);
  const Outcome read = OutcomeOf([&] { return Kestrel::AutoCli::XmlUtil_ParseXmlOutput(text); });
  usage.Check(read.text.size() + (text.find("<!") == std::string::npos ? 0 : kMaxEntityText));
  if (IsRefused(read)) {
    RequireReason(text);
    return 0;
  }
  Require(!HasTooLongEntities(text), "entities stand for at most 10 MB");
  RequireEqual(read.text, OutcomeOf([&] { return ReadTree(text); }).text,
               "a document is read as from its tree");
  if (read.value != nullptr) {
    const XmlMessages messages;
    RequireJsonReadsBack(read.value);
    RequireXmlReadsBack(read.value);
  }
  return 0;
}
