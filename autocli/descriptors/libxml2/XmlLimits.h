// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <libxml/parser.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "autocli/descriptors/XmlDocument.h"

// What a document may contain, so that reading it takes time and memory linear in its size.

namespace Kestrel::AutoCli {

/// The maximum number of attributes of one element. The number is limited because the parser
/// compares each attribute with all others. Namespaces in scope are counted too, because the
/// parser compares each prefix with all of them.
constexpr int kMaxXmlAttributes = 10000;
constexpr const char* kTooManyXmlAttributes = "An element has more than 10000 attributes";

/// The limit, in bytes, of the text to which all references to entities in a document expand; also
/// of the default values of attributes that the parser inserts.
constexpr std::size_t kMaxXmlExpansion = 10000000;
constexpr const char* kTooMuchXmlExpansion = "The entities stand for more than 10 MB of text";

/// Whether the start tag that `parser` has just read, with `count` attributes, exceeds the limit.
inline bool HasTooManyAttributes(const xmlParserCtxt& parser, int count) {
  return parser.nsNr / 2 + count > kMaxXmlAttributes;  // there are two entries for a namespace
}

/// Stops `parser` when the start tag that it is reading clearly exceeds the limit. Call it before
/// each read: the parser compares the attributes once it has read the whole tag. Returns whether
/// the parser was stopped.
bool StopAtTooManyAttributes(xmlParserCtxt& parser);

/// Makes `parser` stop reading, even in the middle of an element.
void Stop(xmlParserCtxt& parser);

/// Returns the largest number of attributes of any start tag in `markup`. The result may be too
/// large if `markup` is not well-formed.
std::size_t CountMostAttributes(std::string_view markup);

/// Whether no start tag in `document` can exceed the limit of attributes, as far as can be seen
/// without parsing it.
bool HasFewAttributes(std::string_view document);

/// Throws std::runtime_error if the references to entities in `root` and below it expand to more
/// text than the limit. `root` must belong to a document.
void RefuseLargeExpansion(const xmlNode& root);

/// Returns the value of `attribute`, which contains references to entities. Throws
/// std::runtime_error when it is longer than the limit.
std::string ExpandAttribute(const xmlAttr& attribute);

}  // namespace Kestrel::AutoCli
