// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "autocli/descriptors/XmlDocument.h"

namespace Kestrel::AutoCli {

/// The names with a meaning in a value document, as a parser's dictionary stores them.
///
/// The dictionary stores each name once, and the parser's events point to that copy. So names are
/// compared by their addresses.
struct XmlNames {
  explicit XmlNames(xmlDict* dictionary)
      : field(Find(dictionary, "field")),
        structure(Find(dictionary, "structure")),
        integer(Find(dictionary, "int")),
        boolean(Find(dictionary, "bool")),
        string(Find(dictionary, "string")),
        name(Find(dictionary, "name")),
        type(Find(dictionary, "type")),
        typeName(Find(dictionary, "typeName")) {}

  /// Whether all names were stored; false if memory ran out.
  bool IsComplete() const {
    return field != nullptr && structure != nullptr && integer != nullptr && boolean != nullptr &&
           string != nullptr && name != nullptr && type != nullptr && typeName != nullptr;
  }

  const xmlChar* const field;
  const xmlChar* const structure;
  const xmlChar* const integer;
  const xmlChar* const boolean;
  const xmlChar* const string;
  const xmlChar* const name;
  const xmlChar* const type;
  const xmlChar* const typeName;

 private:
  static const xmlChar* Find(xmlDict* dictionary, const char* text) {
    return xmlDictLookup(dictionary, AsXmlChars(text), -1);
  }
};

/// The attributes of a start tag, as a parser passes them to the handler of the event: five
/// pointers each (local name, prefix, namespace, begin and end of the value). Valid during the
/// event only.
class XmlAttributes {
 public:
  XmlAttributes() = default;
  XmlAttributes(const xmlChar** entries, int count) : entries_(entries), count_(count) {}

  /// Sets `value` to the value of the first attribute of that local name, to the empty string when
  /// there is none.
  void Get(const xmlChar* name, std::string& value) const;

  std::string Get(const xmlChar* name) const {
    std::string value;
    Get(name, value);
    return value;
  }

  int GetCount() const { return count_; }
  const xmlChar* GetName(int index) const { return Entry(index)[0]; }

  /// The number of bytes of the value of an attribute, as the parser passes it.
  std::size_t GetSize(int index) const {
    return static_cast<std::size_t>(Entry(index)[4] - Entry(index)[3]);
  }

  /// The value of an attribute. `buffer` holds it when it is not what the parser passes.
  std::string_view Get(int index, std::string& buffer) const;

  /// Whether the attribute `xml:id` is present. Only a parser that makes a tree checks its value.
  bool HasXmlId() const;

 private:
  const xmlChar** Entry(int index) const { return entries_ + 5 * index; }

  const xmlChar** entries_ = nullptr;
  int count_ = 0;
};

}  // namespace Kestrel::AutoCli
