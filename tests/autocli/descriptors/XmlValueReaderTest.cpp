// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Reading a document without the parser must have the same results as reading it from the tree that
// `xmlReadMemory` makes: the same value, the same message of an exception, and the same diagnostics
// of the parser.

#include "autocli/descriptors/XmlValueReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "autocli/descriptors/XmlDocument.h"
#include "autocli/descriptors/XmlNode.h"
#include "autocli/descriptors/XmlValue.h"
#include "kestrel/autocli/XmlUtil.h"
#include "support/DescribeValue.h"
#include "support/Random.h"
#include "support/RandomXml.h"

namespace Kestrel::AutoCli {
namespace {

using MetaObj::MetaObject;
using Testing::DescribeValue;
using Testing::kXmlPieces;
using Testing::MutateXml;
using Testing::Random;
using Testing::Rounds;
using Testing::XmlDocumentMaker;

/// Collects the diagnostics of the parser as long as the object exists.
class DiagnosticsCapture {
 public:
  DiagnosticsCapture() { xmlSetGenericErrorFunc(this, Collect); }
  ~DiagnosticsCapture() { xmlSetGenericErrorFunc(nullptr, nullptr); }

  const std::string& GetText() const { return text_; }

 private:
  static void Collect(void* self, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    char* line = nullptr;
    if (vasprintf(&line, format, arguments) >= 0) {
      static_cast<DiagnosticsCapture*>(self)->text_ += line;
      std::free(line);
    }
    va_end(arguments);
  }

  std::string text_;
};

/// All observable results of one reading.
struct Reading {
  std::string result;
  std::string diagnostics;

  bool operator==(const Reading& other) const {
    return result == other.result && diagnostics == other.diagnostics;
  }
};

std::ostream& operator<<(std::ostream& out, const Reading& reading) {
  return out << reading.result << "\n" << reading.diagnostics;
}

template <typename Read>
Reading Observe(Read read) {
  const DiagnosticsCapture diagnostics;
  Reading reading;
  try {
    if constexpr (std::is_invocable_v<Read, const DiagnosticsCapture&>) {
      reading.result = DescribeValue(read(diagnostics));
    } else {
      reading.result = DescribeValue(read());
    }
  } catch (const KestrelException& error) {
    reading.result = std::string("throws ") + error.what();
  }
  reading.diagnostics = diagnostics.GetText();
  return reading;
}

std::shared_ptr<MetaObject> ParseThroughTree(const std::string& text,
                                             const DiagnosticsCapture& diagnostics) {
  xmlResetLastError();
  const XmlDocument document(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), "STDOUT", nullptr, 0),
      {xmlFreeDoc});
  // If a string is too long, the parser reports that memory ran out and leaves out the end of the
  // string. What follows in the document may then cause further errors.
  const xmlError* const last = xmlGetLastError();
  if ((last != nullptr && last->code == XML_ERR_NO_MEMORY) ||
      diagnostics.GetText().find("huge text node") != std::string::npos) {
    throw KestrelException(
        "Error parsing command output.  The document is incomplete: out of memory, or text of "
        "more than 10 MB");
  }
  if (document == nullptr) {
    return nullptr;
  }
  const xmlNode* value = xmlDocGetRootElement(document.get())->children;
  while (value != nullptr && IsTextOrComment(value)) {
    value = value->next;
  }
  if (value == nullptr) {
    return nullptr;
  }
  try {
    return XmlUtil_BuildMetaObject(value);
  } catch (const KestrelException& error) {
    throw UnbuildableXmlOutput(error);
  }
}

enum class Way { Events, Tree };

std::string_view Beginning(std::string_view text) { return text.substr(0, 2000); }

/// Reads `text` with and without a tree and compares the results. Returns the way that the library
/// uses.
Way ExpectSameReading(const std::string& text) {
  Way way = Way::Events;
  const Reading expected = Observe(
      [&](const DiagnosticsCapture& diagnostics) { return ParseThroughTree(text, diagnostics); });
  const Reading events = Observe([&] {
    std::shared_ptr<MetaObject> value;
    way = ReadXmlValue(text, value) ? Way::Events : Way::Tree;
    return value;
  });
  if (way == Way::Events) {
    EXPECT_EQ(events, expected) << Beginning(text);
  } else {
    EXPECT_EQ(events.diagnostics, "") << Beginning(text);
    EXPECT_EQ(Observe([&] { return XmlUtil_ParseXmlOutput(text); }), expected) << Beginning(text);
  }
  return way;
}

std::string Repeat(std::string_view text, std::size_t count) {
  std::string repeated;
  repeated.reserve(text.size() * count);
  for (std::size_t i = 0; i < count; ++i) {
    repeated += text;
  }
  return repeated;
}

TEST(XmlValueReaderTest, ReadsRandomDocumentsAsThroughATree) {
  Random random;
  SCOPED_TRACE(random.HowToRepeat());
  XmlDocumentMaker maker(random);
  const int rounds = Rounds(10000, 1000000);
  int onEvents = 0;
  for (int i = 0; i < rounds && !HasFailure(); ++i) {
    std::string text = maker.Make();
    for (std::size_t damage = random.Below(4); damage > 1; --damage) {
      MutateXml(text, random);
    }
    onEvents += ExpectSameReading(text) == Way::Events ? 1 : 0;
  }
  EXPECT_GT(onEvents, rounds / 5);
}

TEST(XmlValueReaderTest, RandomDocumentsLeadToEveryKindOfResult) {
  Random random;
  SCOPED_TRACE(random.HowToRepeat());
  XmlDocumentMaker maker(random);
  int values = 0;
  int nulls = 0;
  int exceptions = 0;
  for (int i = 0; i < 2000; ++i) {
    const std::string text = maker.Make();
    const std::string result = Observe([&] { return XmlUtil_ParseXmlOutput(text); }).result;
    if (result == "null") {
      ++nulls;
    } else if (result.rfind("throws ", 0) == 0) {
      ++exceptions;
    } else {
      ++values;
    }
  }
  EXPECT_GT(values, 200);
  EXPECT_GT(nulls, 200);
  EXPECT_GT(exceptions, 100);
}

/// Expects the same reading of `text` after it is cut at any place, and after a byte is removed or
/// a piece of XML is inserted at any place.
void ExpectSameReadingOfDamaged(const std::string& text) {
  for (std::size_t i = 0; i < text.size() && !testing::Test::HasFailure(); ++i) {
    ExpectSameReading(text.substr(0, i));
    ExpectSameReading(text.substr(i));
    ExpectSameReading(text.substr(0, i) + text.substr(i + 1));
    for (const std::string_view piece : kXmlPieces) {
      ExpectSameReading(std::string(text).insert(i, piece));
    }
    ExpectSameReading(std::string(text).insert(i, 1, '\0'));
  }
}

TEST(XmlValueReaderTest, ReadsADamagedDocumentAsThroughATree) {
  ExpectSameReadingOfDamaged(
      "<?xml version='1.0'?><!-- c --><o xmlns:p='urn:p'> <list type='structure'><structure "
      "typeName='S'><field name='a&lt;'><int> 7</int></field></structure></list><?pi d?><p:b "
      "p:x=\"1\"/><![CDATA[x]]>&#65;</o>\n");
}

TEST(XmlValueReaderTest, ReadsADamagedOrdinaryDocumentAsThroughATree) {
  const std::string text =
      "<?xml version='1.0'?><!-- c --><o> <list type='structure'><structure typeName='S'><field "
      "name='a&lt;'><string>\xC3\xA4]&#65;<![CDATA[x]]><!--c--></string></field></structure>"
      "</list><b x = \"1\" y='2'/></o>\n";
  EXPECT_EQ(ExpectSameReading(text), Way::Events);
  ExpectSameReadingOfDamaged(text);
}

TEST(XmlValueReaderTest, ReadsAllShortTextsAsThroughATree) {
  constexpr std::string_view kAlphabet = "<o/>!?-a &";
  std::string text;
  const std::size_t length = static_cast<std::size_t>(Rounds(4, 6));
  const std::size_t texts = [&] {
    std::size_t count = 1;
    for (std::size_t i = 0; i < length; ++i) {
      count *= kAlphabet.size() + 1;
    }
    return count;
  }();
  for (std::size_t number = 0; number < texts && !HasFailure(); ++number) {
    text.clear();
    for (std::size_t rest = number; rest > 0; rest /= kAlphabet.size() + 1) {
      const std::size_t digit = rest % (kAlphabet.size() + 1);
      if (digit > 0) {
        text += kAlphabet[digit - 1];
      }
    }
    ExpectSameReading(text);
  }
}

TEST(XmlValueReaderTest, ReadsDeepDocumentsAsThroughATree) {
  for (std::size_t depth = 250; depth < 262 && !HasFailure(); ++depth) {
    ExpectSameReading("<o><string/>" + Repeat("<a>", depth - 1) + Repeat("</a>", depth - 1) +
                      "</o>");
    ExpectSameReading("<o>" + Repeat("<a>", depth - 1) + "<a/>" + Repeat("</a>", depth - 1) +
                      "</o>");
    ExpectSameReading("<o>" + Repeat("<a>", depth));
    const std::size_t levels = depth / 3;
    const std::string rest = Repeat("<string>", depth - 3 * levels);
    ExpectSameReading(
        "<o>" + Repeat("<list type='structure'><structure typeName='S'><field name='a'>", levels) +
        rest + Repeat("</string>", depth - 3 * levels) +
        Repeat("</field></structure></list>", levels) + "</o>");
  }
}

TEST(XmlValueReaderTest, ReadsEveryDeclaredEncodingAsThroughATree) {
  constexpr std::string_view kEncodings[] = {
      "UTF-8",  "utf-8",     "UTF8",     "Utf-8",    "ISO-8859-1", "iso-8859-15", "US-ASCII",
      "ASCII",  "UTF-16",    "UTF-16LE", "UTF-16BE", "UTF-32",     "UCS-4",       "windows-1252",
      "EUC-JP", "Shift_JIS", "KOI8-R",   "EBCDIC",   "HTML",       "nonsense",    "",
      " ",      "UTF-8 ",    "-",        "\xC3\xA4", "UTF-8'",     "UTF-",
  };
  constexpr std::string_view kDeclarations[] = {
      "<?xml version='1.0' encoding='@'?>",
      "<?xml version=\"1.0\" encoding=\"@\" ?>",
      "<?xml version='1.0' encoding = '@' standalone='no'?>",
      "<?xml encoding='@'?>",
      "<?xml version='1.0' encoding='@'",
      "<?xml version='encoding' encoding='@'?>",
      "<?xml version='1.0' standalone='yes' encoding='@'?>",
      "\xEF\xBB\xBF<?xml version='1.0' encoding='@'?>",
      " <?xml version='1.0' encoding='@'?>",
      "<?xml version='1.0'encoding='@'?>",
      "<?xml version='1.0' encoding=@?>",
      "<!-- encoding='@' -->",
      "<?pi encoding='@'?>",
  };
  for (const std::string_view declaration : kDeclarations) {
    for (const std::string_view encoding : kEncodings) {
      for (const char* content : {"abc", "\xC3\xA4", "\xE4", "\xA4\xA2", "\x80"}) {
        std::string text(declaration);
        const std::size_t place = text.find('@');
        text.replace(place, 1, encoding);
        ExpectSameReading(text + "<o><string>" + content + "</string></o>");
        ExpectSameReading(text + "<o a='" + content + "'><string>x</string></o>");
      }
    }
  }
}

/// Encodes `text` with `width` bytes for each character, low byte first or last.
std::string Widen(std::string_view text, std::size_t width, bool lowFirst) {
  std::string wide;
  for (const char c : text) {
    std::string bytes(width, '\0');
    bytes[lowFirst ? 0 : width - 1] = c;
    wide += bytes;
  }
  return wide;
}

TEST(XmlValueReaderTest, ReadsWideEncodingsAsThroughATree) {
  for (const std::string_view text :
       {"<o><string>a</string></o>", "<?xml version='1.0'?><o><string>a</string></o>",
        "<?xml version='1.0' encoding='UTF-16'?><o><string>a</string></o>"}) {
    for (const bool lowFirst : {false, true}) {
      for (const std::size_t width : {2, 4}) {
        const std::string wide = Widen(text, width, lowFirst);
        ExpectSameReading(wide);
        ExpectSameReading(wide.substr(0, wide.size() - 1));
        ExpectSameReading("\xEF\xBB\xBF" + wide);
      }
      const std::string wide = Widen(text, 2, lowFirst);
      ExpectSameReading("\xFF\xFE" + wide);
      ExpectSameReading("\xFE\xFF" + wide);
    }
  }
}

constexpr std::size_t kLimit = 10000000;

std::string InString(const std::string& content) {
  return "<o><string>" + content + "</string></o>";
}

TEST(XmlValueReaderTest, ReadsLongTextsAsThroughATree) {
  for (const std::size_t size : {kLimit, kLimit + 1}) {
    const std::string text(size - 5, 'x');
    ExpectSameReading(InString(text + "&lt;xxxx"));
    ExpectSameReading("<o a='" + text + "xxxxx'><string/></o>");
  }
}

TEST(XmlValueReaderTest, ReadsLongTextsOfEveryKindAsThroughATree) {
  if (Rounds(0, 1) == 0) {
    GTEST_SKIP() << "reads a gigabyte: part of a campaign only";
  }
  for (const std::size_t size : {kLimit - 1, kLimit, kLimit + 1}) {
    const std::string text(size - 5, 'x');
    ExpectSameReading(InString(text + "xxxxx"));
    ExpectSameReading(InString("xxxx&lt;" + text));
    ExpectSameReading(InString(text + "<!-- c -->xxxxxx"));
    ExpectSameReading(InString("<![CDATA[" + text + "xxxxx]]>"));
    ExpectSameReading(InString("<![CDATA[" + text + "]]><![CDATA[xxxxx]]>"));
    ExpectSameReading(InString("<!--" + text + "xxxxx-->"));
    ExpectSameReading("<o><string/>" + text + "&lt;xxxx</o>");
    ExpectSameReading("<o><structure typeName='" + text + "xxxxx'/></o>");
    ExpectSameReading("<o a='" + text + "&lt;xxxx'><string/></o>");
  }
}

TEST(XmlValueReaderTest, ReadsLongNamesAsThroughATree) {
  for (const std::size_t size : {10000, 10001, 49999, 50000, 50001}) {
    const std::string name(size, 'n');
    ExpectSameReading("<o><string/><" + name + "/></o>");
    ExpectSameReading("<o><string " + name + "='a'/></o>");
  }
}

TEST(XmlValueReaderTest, DoesNotReadADocumentWithTooManyNames) {
  // The scanner reads at most 4 MB of different names. (The parser can store about 10 MB.)
  for (const int count : {400000, 600000}) {
    std::string text = "<o>";
    for (int i = 0; i < count; ++i) {
      text += "<n" + std::to_string(i + 1000000) + "/>";
    }
    std::shared_ptr<MetaObject> value;
    bool isRead = false;
    try {
      isRead = ReadXmlValue(text + "</o>", value);
    } catch (const KestrelException&) {
      isRead = true;  // The document is read, but its first element is not a value.
    }
    EXPECT_EQ(isRead, count == 400000);
  }
}

TEST(XmlValueReaderTest, ReadsLongAttributesAsThroughATree) {
  // The parser stores a "&" in an attribute as five bytes.
  for (const std::size_t count : {kLimit / 5 - 1, kLimit / 5, kLimit / 5 + 1}) {
    ExpectSameReading("<o a='" + Repeat("&amp;", count) + "'><string/></o>");
  }
}

TEST(XmlValueReaderTest, ReadsAmpersandsInAttributesAsThroughATree) {
  for (const char* name :
       {"&amp;", "&amp;amp;", "&amp;#38;", "&#38;#38;", "a&#x26;b&amp;&amp;",
        "&lt;&gt;&quot;&apos;&#10;&#9;", "&foo;", "&amp", "& ", "&#0;", "&amp;&"}) {
    ExpectSameReading(std::string("<o><structure typeName='S'><field name='") + name +
                      "'><int/></field></structure></o>");
  }
}

TEST(XmlValueReaderTest, ReadsManyErrorsAsThroughATree) {
  ExpectSameReading("<o>" + Repeat("<p:a/>", 1000) + "</o>");
  ExpectSameReading("<o>" + Repeat("&foo;", 1000) + "</o>");
  ExpectSameReading("<o>" + Repeat("<a b='1' b='2'>", 100) + "</o>");
}

TEST(XmlValueReaderTest, DoesNotReadUnusualDocuments) {
  std::shared_ptr<MetaObject> value;
  EXPECT_TRUE(ReadXmlValue("<?xml version='1.0'?><!-- <!DOCTYPE o> --><o/>", value));
  EXPECT_FALSE(ReadXmlValue("<?xml version='1.0'?><!-- c --> <!DOCTYPE o><o/>", value));
  EXPECT_FALSE(ReadXmlValue(" \t\r\n<!DOCTYPE o><o/>", value));
  EXPECT_FALSE(ReadXmlValue("<?p?><!DOCTYPE o><o/>", value));
  EXPECT_FALSE(ReadXmlValue("<?xml version='1.0' encoding='l1'?><o/>", value));
  EXPECT_FALSE(ReadXmlValue("<?xml version='1.0' encoding='latin1'?><o/>", value));
  EXPECT_FALSE(ReadXmlValue("<o xml:id='a'/>", value));
  EXPECT_FALSE(ReadXmlValue("<o><?pi data?></o>", value));
  EXPECT_FALSE(ReadXmlValue("<o>\r\n</o>", value));
  EXPECT_FALSE(ReadXmlValue("<o><a></o>", value));
  EXPECT_FALSE(ReadXmlValue("<o><p:a/></o>", value));
  EXPECT_FALSE(ReadXmlValue("", value));
  EXPECT_FALSE(ReadXmlValue(Widen("<o/>", 2, true), value));
}

TEST(XmlValueReaderTest, DoesNotExpandNestedEntities) {
  std::string text = "<!DOCTYPE o [<!ENTITY e0 'ha'>";
  for (int i = 1; i < 30; ++i) {
    const std::string inner = "&e" + std::to_string(i - 1) + ";";
    text += "<!ENTITY e" + std::to_string(i) + " '" + inner + inner + inner + "'>";
  }
  EXPECT_EQ(ExpectSameReading(text + "]><o><string>&e29;</string></o>"), Way::Tree);
  EXPECT_EQ(ExpectSameReading(text + "]><o a='&e29;'><string/></o>"), Way::Tree);
}

TEST(XmlValueReaderTest, ErrorsReachTheHandlerOfTheProgramOnce) {
  int errors = 0;
  xmlSetStructuredErrorFunc(&errors, [](void* count, auto*) { ++*static_cast<int*>(count); });
  std::shared_ptr<MetaObject> value;
  EXPECT_FALSE(ReadXmlValue("<o><a></o>", value));
  EXPECT_EQ(errors, 0);
  EXPECT_EQ(XmlUtil_ParseXmlOutput("<o><a></o>"), nullptr);
  EXPECT_EQ(errors, 2);
  xmlSetStructuredErrorFunc(nullptr, nullptr);
}

}  // namespace
}  // namespace Kestrel::AutoCli
