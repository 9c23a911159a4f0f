// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include "support/RandomXml.h"

#include <algorithm>

namespace Kestrel::Testing {

namespace {

constexpr std::string_view kTexts[] = {
    "",
    " ",
    "\n  ",
    "a",
    "12",
    " -7 x",
    "false",
    "0",
    "x &lt; y",
    "&amp;",
    "&#65;",
    "&#x20AC;",
    "&apos;&quot;",
    "]]&gt;",
    "<![CDATA[]]>",
    "<![CDATA[a<b]]>",
    "<![CDATA[a]]><![CDATA[b]]>",
    "a<!--c-->",
    "<!---->",
    "<?pi data?>",
    "<?pi?>",
    "<?pi  two words ?>",
    "\xC3\xA4\xE2\x82\xAC",
    "a\r\nb",
    "\t",
    "a<b/>c",
    "a<b>inner</b>",
    "<b/>",
    "99999999999999999999",
};

constexpr std::string_view kAttributes[] = {
    " x='1'",
    " xml:space='preserve'",
    " xml:lang='en'",
    " xmlns:p='urn:p'",
    " xmlns='urn:d'",
    " p:name='n'",
    " name='&lt;&#10;&amp;'",
    " typeName=\"T\"",
    " xml:id='a'",
    " xml:space='bad'",
    " xmlns:q=''",
    " xml:base='b'",
    " a='1' a='2'",
    " xmlns=' '",
    " xmlns:xml='urn:x'",
    " q:a='1'",
};

}  // namespace

std::string XmlDocumentMaker::Make() {
  text_.clear();
  AddProlog();
  const std::string root = Name("output");
  text_ += "<" + root;
  AddAttributes();
  text_ += ">";
  AddFiller();
  const std::size_t values = random_.Below(3);
  for (std::size_t i = 0; i < values; ++i) {
    AddValue(0);
    AddFiller();
  }
  text_ += "</" + root + ">";
  AddEpilog();
  return text_;
}

void XmlDocumentMaker::AddProlog() {
  constexpr std::string_view kPrologs[] = {
      "<?xml version='1.0'?>",
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n",
      "<?xml version='1.0' standalone='yes'?>",
      "<?xml version='1.1'?>",
      "\xEF\xBB\xBF",
      "<!-- c -->",
      "<?pi?>\n",
      "<!DOCTYPE o>",
      "<!DOCTYPE o [<!ENTITY e 'v'>]>",
      "\n",
      "<?xml version='2.0'?>",
      "<?xml version='1.0' encoding='ISO-8859-1'?>",
      "<!DOCTYPE o [<!ATTLIST string name CDATA 'd'><!ENTITY e '<int>1</int>'>]>",
  };
  if (random_.Chance(30)) {
    text_ += random_.Pick(kPrologs);
  }
}

void XmlDocumentMaker::AddEpilog() {
  constexpr std::string_view kEpilogs[] = {"\n", "<!-- c -->", "<?pi d?>", "x", "<o/>", "&#32;"};
  if (random_.Chance(15)) {
    text_ += random_.Pick(kEpilogs);
  }
}

void XmlDocumentMaker::AddAttributes() {
  while (random_.Chance(12)) {
    text_ += random_.Pick(kAttributes);
  }
}

void XmlDocumentMaker::AddFiller() {
  constexpr std::string_view kFillers[] = {
      " ",           "\n  ",     "<!-- c -->",   "text",    "<![CDATA[x]]>", "&#32;",
      "&e;",         "<?pi d?>", "<?string d?>", "<?int?>", "<?list?>",      "<?structure d?>",
      "<?field d?>", "<?text?>"};
  while (random_.Chance(25)) {
    text_ += random_.Chance(90) ? kFillers[random_.Below(4)] : random_.Pick(kFillers);
  }
}

/// Returns the name of an element, sometimes with a prefix.
std::string XmlDocumentMaker::Name(const std::string& name) {
  constexpr std::string_view kPrefixes[] = {"p:", "q:", "xml:", "p:p:"};
  return random_.Chance(3) ? std::string(random_.Pick(kPrefixes)) + name : name;
}

void XmlDocumentMaker::AddValue(int depth) {
  constexpr const char* kScalars[] = {"string", "int", "bool"};
  constexpr const char* kOthers[] = {"integer", "text", "comment", "field", "String"};
  if (random_.Chance(2)) {
    return AddScalar(random_.Pick(kOthers));
  }
  if (depth > 5 || random_.Chance(50)) {
    return AddScalar(random_.Pick(kScalars));
  }
  return random_.Chance(50) ? AddStructure(depth) : AddList(depth);
}

void XmlDocumentMaker::AddScalar(const std::string& tag) {
  const std::string name = Name(tag);
  text_ += "<" + name;
  AddAttributes();
  text_ += ">";
  if (tag == "int" && random_.Chance(80)) {
    text_ += std::to_string(random_.Below(1000));
  } else {
    for (std::size_t i = random_.Below(4); i > 0; --i) {
      text_ += random_.Pick(kTexts);
    }
  }
  text_ += "</" + name + ">";
}

void XmlDocumentMaker::AddStructure(int depth) {
  constexpr std::string_view kFields[] = {"A", "B", "long name", "", "\xC3\xA4"};
  text_ += random_.Chance(97) ? "<structure typeName='S'" : "<structure typeName='S_'";
  AddAttributes();
  text_ += ">";
  AddFiller();
  for (std::size_t i = random_.Below(4); i > 0; --i) {
    const std::size_t field = random_.Chance(97) ? random_.Below(3) : random_.Below(5);
    text_ += "<field name='" + std::string(kFields[field]) + "'>";
    AddFiller();
    if (random_.Chance(90)) {
      AddValue(depth + 1);
    }
    AddFiller();
    text_ += "</field>";
    AddFiller();
  }
  text_ += "</structure>";
}

void XmlDocumentMaker::AddList(int depth) {
  constexpr const char* kTypes[] = {"string", "int", "bool", "structure", "list", "other", ""};
  const std::size_t type = random_.Chance(92) ? random_.Below(4) : random_.Below(7);
  text_ += "<list type='" + std::string(kTypes[type]) + "'";
  AddAttributes();
  text_ += ">";
  AddFiller();
  const std::size_t begin = text_.size();
  for (std::size_t i = random_.Below(4); i > 0; --i) {
    AddElement(type, depth, begin);
    AddFiller();
  }
  text_ += "</list>";
}

void XmlDocumentMaker::AddElement(std::size_t type, int depth, std::size_t listBegin) {
  constexpr const char* kScalars[] = {"string", "int", "bool"};
  if (type < 3 && random_.Chance(95)) {
    AddScalar(kScalars[type]);
  } else if (type == 3 && text_.size() > listBegin && random_.Chance(50)) {
    text_ += text_.substr(listBegin);  // elements of one shape
  } else if (type == 3) {
    AddStructure(depth + 1);
  } else {
    AddValue(depth + 1);
  }
}

void MutateXml(std::string& text, Random& random) {
  const std::size_t position = random.Below(text.size() + 1);
  const std::size_t length = random.Below(std::min<std::size_t>(text.size() - position + 1, 12));
  switch (random.Below(6)) {
    case 0:
      text.erase(position, length);
      return;
    case 1:
      text.insert(position, random.Pick(kXmlPieces));
      return;
    case 2:
      text.replace(position, length, random.Pick(kXmlPieces));
      return;
    case 3:
      text.insert(random.Below(text.size() + 1), text.substr(position, length));
      return;
    case 4:
      text.insert(position, random.Pick(kAttributes));
      return;
    default:
      text.insert(position, 1, static_cast<char>(random.Below(256)));
  }
}

}  // namespace Kestrel::Testing
