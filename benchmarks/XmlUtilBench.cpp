// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// The cost of reading a value document, in time and in memory, compared with building a tree of it,
// a parser that fills plain members, another library, and only finding each tag.

#include "kestrel/autocli/XmlUtil.h"

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <malloc.h>
#include <sys/resource.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/FreshProcess.h"
#include "benchmarks/Records.h"
#include "benchmarks/ValueDocument.h"

#ifdef KESTREL_HAS_PUGIXML
#include <pugixml.hpp>
#endif

namespace Kestrel::Benchmarks {
namespace {

// The contenders. Each reads a document and keeps the result.

class OurValue {
 public:
  explicit OurValue(const std::string& text) : value_(AutoCli::XmlUtil_ParseXmlOutput(text)) {}
  bool IsRead() const { return value_ != nullptr; }

 private:
  const std::shared_ptr<MetaObj::MetaObject> value_;
};

class TreeOfXmlReadMemory {
 public:
  explicit TreeOfXmlReadMemory(const std::string& text)
      : document_(xmlReadMemory(text.data(), static_cast<int>(text.size()), "STDOUT", nullptr, 0)) {
  }
  TreeOfXmlReadMemory(const TreeOfXmlReadMemory&) = delete;
  TreeOfXmlReadMemory& operator=(const TreeOfXmlReadMemory&) = delete;
  ~TreeOfXmlReadMemory() { xmlFreeDoc(document_); }
  bool IsRead() const { return document_ != nullptr; }

 private:
  xmlDoc* const document_;
};

/// Fills plain members from the events of the parser. It knows the five fields.
class PlainRecordsBySax2 {
 public:
  explicit PlainRecordsBySax2(const std::string& text) {
    xmlSAXHandler handler = {};
    handler.initialized = XML_SAX2_MAGIC;
    handler.startElementNs = Start;
    handler.endElementNs = End;
    handler.characters = Characters;
    isRead_ =
        xmlSAXUserParseMemory(&handler, this, text.data(), static_cast<int>(text.size())) == 0;
  }
  bool IsRead() const { return isRead_; }

 private:
  static std::string_view View(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

  static void Start(void* self, const xmlChar* name, const xmlChar*, const xmlChar*, int,
                    const xmlChar**, int, int, const xmlChar** attributes) {
    auto& reader = *static_cast<PlainRecordsBySax2*>(self);
    reader.content_.clear();
    if (View(name) == "structure") {
      reader.records_.emplace_back();
    } else if (View(name) == "field") {
      reader.field_ = static_cast<char>(attributes[3][0]);
    }
  }

  static void End(void* self, const xmlChar* name, const xmlChar*, const xmlChar*) {
    auto& reader = *static_cast<PlainRecordsBySax2*>(self);
    if (View(name) != "string" && View(name) != "int" && View(name) != "bool") {
      return;
    }
    Record& record = reader.records_.back();
    switch (reader.field_) {
      case 'N':
        record.name = reader.content_;
        break;
      case 'S':
        record.size = std::strtol(reader.content_.c_str(), nullptr, 10);
        break;
      case 'E':
        record.isEnabled = reader.content_ == "true";
        break;
      case 'P':
        record.path = reader.content_;
        break;
      default:
        record.count = static_cast<int>(std::strtol(reader.content_.c_str(), nullptr, 10));
    }
  }

  static void Characters(void* self, const xmlChar* text, int length) {
    static_cast<PlainRecordsBySax2*>(self)->content_.append(reinterpret_cast<const char*>(text),
                                                            static_cast<std::size_t>(length));
  }

  std::vector<Record> records_;
  std::string content_;
  char field_ = 0;
  bool isRead_ = false;
};

#ifdef KESTREL_HAS_PUGIXML
class TreeOfPugixml {
 public:
  explicit TreeOfPugixml(const std::string& text)
      : isRead_(document_.load_buffer(text.data(), text.size())) {}
  bool IsRead() const { return isRead_; }

 private:
  pugi::xml_document document_;
  bool isRead_;
};
#endif

/// The lower limit: finds each tag and does nothing else.
class TagsByMemchr {
 public:
  explicit TagsByMemchr(const std::string& text) {
    const char* position = text.data();
    const char* const end = position + text.size();
    while ((position = Find('<', position, end)) != nullptr &&
           (position = Find('>', position, end)) != nullptr) {
      ++count_;
    }
  }
  bool IsRead() const { return count_ > 0; }

 private:
  static const char* Find(char c, const char* begin, const char* end) {
    return static_cast<const char*>(std::memchr(begin, c, static_cast<std::size_t>(end - begin)));
  }

  std::size_t count_ = 0;
};

// The benchmarks.

template <typename Contender>
void BM_ValueDocumentRead(benchmark::State& state) {
  const std::string text = MakeValueDocument(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    const Contender contender(text);
    if (!contender.IsRead()) {
      state.SkipWithError("the document was not read");
      break;
    }
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

double ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  double pages = 0;
  statm >> pages >> pages;
  return pages * 4096;
}

double PeakResidentBytes() {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024;
}

template <typename Contender>
Cost MemoryToRead(const std::string& text) {
  malloc_trim(0);  // memory freed by earlier work would otherwise hide the memory used here
  const double before = ResidentBytes();
  const Contender contender(text);
  if (!contender.IsRead()) {
    throw std::runtime_error("the document was not read");
  }
  Cost cost;
  cost.peakBytes = PeakResidentBytes() - before;
  return cost;
}

/// Reports the peak memory of reading, in bytes per byte of the document. The document itself is
/// not included.
template <typename Contender>
void BM_ValueDocumentPeakMemory(benchmark::State& state) {
  const std::string text = MakeValueDocument(static_cast<std::size_t>(state.range(0)));
  Cost cost;
  for (auto _ : state) {
    cost = InFreshProcess([&text] { return MemoryToRead<Contender>(text); });
  }
  state.counters["per byte"] = cost.peakBytes / static_cast<double>(text.size());
}

#define KESTREL_ASK_OF(contender)                                                                  \
  BENCHMARK(BM_ValueDocumentRead<contender>)->Arg(100)->RangeMultiplier(10)->Range(1000, 1000000); \
  BENCHMARK(BM_ValueDocumentPeakMemory<contender>)->Arg(1000)->Arg(1000000)->Iterations(1)

KESTREL_ASK_OF(OurValue);
KESTREL_ASK_OF(TreeOfXmlReadMemory);
KESTREL_ASK_OF(PlainRecordsBySax2);
#ifdef KESTREL_HAS_PUGIXML
KESTREL_ASK_OF(TreeOfPugixml);
#endif
BENCHMARK(BM_ValueDocumentRead<TagsByMemchr>)->Arg(100)->RangeMultiplier(10)->Range(1000, 1000000);

}  // namespace
}  // namespace Kestrel::Benchmarks
