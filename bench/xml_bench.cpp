// Reading generated documents of 1 MB and 20 MB into a KyXmlDocument, against
// libxml2 building its tree, pugixml building its tree (default options) and expat
// calling handlers that build nothing; then
// writing the tree back, against libxml2's serialiser. Each document comes in a flat
// shape (one root over many records) and a deep one (chains 200 elements deep); both
// carry attributes, text and references. Documents are made once, on first use;
// writing is measured on the 1 MB documents.
#include <benchmark/benchmark.h>
#include <expat.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <pugixml.hpp>

#include <istream>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>

#include "kybase/xml/xml_document.h"
#include "kybase/xml/xml_error.h"

namespace {

constexpr std::size_t kSmall = 1 << 20;
constexpr std::size_t kLarge = 20 << 20;
constexpr int kChainDepth = 200;

void Record(std::string& out, unsigned long n) {
  out += "<record id=\"";
  out += std::to_string(n);
  out += "\" kind=\"tool &amp; part\" price=\"";
  out += std::to_string(n % 997);
  out += ".50\">Item ";
  out += std::to_string(n);
  out += ": a &lt;small&gt; piece of kit &#65;nd its notes</record>\n";
}

std::string Flat(std::size_t size) {
  std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<catalogue>\n";
  for (unsigned long n = 0; out.size() < size; ++n) Record(out, n);
  out += "</catalogue>\n";
  return out;
}

std::string Deep(std::size_t size) {
  std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<forest>\n";
  for (unsigned long n = 0; out.size() < size; ++n) {
    for (int level = 0; level < kChainDepth; ++level) {
      out += "<branch depth=\"";
      out += std::to_string(level);
      out += "\" name=\"b&amp;r\">t&lt;";
    }
    Record(out, n);
    for (int level = 0; level < kChainDepth; ++level) out += "</branch>";
    out += '\n';
  }
  out += "</forest>\n";
  return out;
}

const std::string& Document(int which) {
  static std::string documents[4];
  std::string& document = documents[which];
  if (document.empty()) {
    std::size_t size = which < 2 ? kSmall : kLarge;
    document = which % 2 == 0 ? Flat(size) : Deep(size);
  }
  return document;
}

const char* const kNames[] = {"flat_1MB", "deep_1MB", "flat_20MB", "deep_20MB"};

// Reads a string in place, as libxml2 and expat read their memory.
class MemoryBuffer : public std::streambuf {
 public:
  explicit MemoryBuffer(const std::string& text) {
    char* start = const_cast<char*>(text.data());
    setg(start, start, start + text.size());
  }
};

// Every reader reads the document once before the timing: the measure is the steady
// state, not the page faults of a fresh heap (which double a first 20 MB read here).
template <typename Read>
void TimeReads(benchmark::State& state, const std::string& text, Read read) {
  if (!read()) state.SkipWithError("read failed");
  for (auto _ : state)
    if (!read()) state.SkipWithError("read failed");
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void Parse_Ky(benchmark::State& state, int which) {
  const std::string& text = Document(which);
  TimeReads(state, text, [&] {
    MemoryBuffer buffer(text);
    std::istream stream(&buffer);
    KyXmlError::Reset();
    KyXmlDocument document;
    document.read(stream);
    benchmark::DoNotOptimize(document.getRootElement());
    return !KyXmlError::IsSet();
  });
}

void Parse_Base_libxml2(benchmark::State& state, int which) {
  const std::string& text = Document(which);
  TimeReads(state, text, [&] {
    xmlDocPtr document = xmlReadMemory(text.data(), static_cast<int>(text.size()), "bench.xml", nullptr, XML_PARSE_HUGE);
    benchmark::DoNotOptimize(document);
    xmlFreeDoc(document);
    return document != nullptr;
  });
}

void Parse_Base_pugixml(benchmark::State& state, int which) {
  const std::string& text = Document(which);
  TimeReads(state, text, [&] {
    pugi::xml_document document;
    bool read = static_cast<bool>(document.load_buffer(text.data(), text.size()));
    benchmark::DoNotOptimize(document.first_child());
    return read;
  });
}

void XMLCALL StartNothing(void*, const XML_Char*, const XML_Char**) {}
void XMLCALL EndNothing(void*, const XML_Char*) {}
void XMLCALL TextNothing(void*, const XML_Char*, int) {}

void Parse_Base_expat(benchmark::State& state, int which) {
  const std::string& text = Document(which);
  TimeReads(state, text, [&] {
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetElementHandler(parser, StartNothing, EndNothing);
    XML_SetCharacterDataHandler(parser, TextNothing);
    bool read = XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1) == XML_STATUS_OK;
    XML_ParserFree(parser);
    return read;
  });
}

void Write_Ky(benchmark::State& state, int which) {
  const std::string& text = Document(which);
  MemoryBuffer buffer(text);
  std::istream stream(&buffer);
  KyXmlError::Reset();
  KyXmlDocument document;
  document.read(stream);
  std::size_t written = 0;
  for (auto _ : state) {
    std::ostringstream out;
    document.write(out);
    written = out.str().size();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * written));
}

void Write_Base_libxml2(benchmark::State& state, int which) {
  const std::string& text = Document(which);
  xmlDocPtr document = xmlReadMemory(text.data(), static_cast<int>(text.size()), "bench.xml", nullptr, XML_PARSE_HUGE);
  std::size_t written = 0;
  for (auto _ : state) {
    xmlChar* out = nullptr;
    int size = 0;
    xmlDocDumpMemory(document, &out, &size);
    written = static_cast<std::size_t>(size);
    xmlFree(out);
  }
  xmlFreeDoc(document);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * written));
}

using Function = void (*)(benchmark::State&, int);
using Entry = std::pair<const char*, Function>;

int Register() {
  for (int which = 0; which < 4; ++which) {
    const std::string tail = std::string("/") + kNames[which];
    for (auto [name, function] : {Entry{"Parse_Ky", Parse_Ky}, Entry{"Parse_Base_libxml2", Parse_Base_libxml2},
                                  Entry{"Parse_Base_pugixml", Parse_Base_pugixml}, Entry{"Parse_Base_expat", Parse_Base_expat}})
      benchmark::RegisterBenchmark((name + tail).c_str(), function, which)->Unit(benchmark::kMillisecond);
    // Writing scales with the output alone; the 1 MB documents show it, and keep the
    // one-iteration run short.
    if (which >= 2) continue;
    for (auto [name, function] : {Entry{"Write_Ky", Write_Ky}, Entry{"Write_Base_libxml2", Write_Base_libxml2}})
      benchmark::RegisterBenchmark((name + tail).c_str(), function, which)->Unit(benchmark::kMillisecond);
  }
  return 0;
}

[[maybe_unused]] const int kRegistered = Register();

}  // namespace
