// Helpers of the XML tests: reading a text into a document with a clean error record,
// the error record as one value, and the release of instruction targets, which the
// nodes never free themselves.
#ifndef KYBASE_TESTS_XML_XML_TEST_SUPPORT_H
#define KYBASE_TESTS_XML_XML_TEST_SUPPORT_H

#include <sstream>
#include <string>

#include "kybase/xml/xml_document.h"
#include "kybase/xml/xml_error.h"
#include "kybase/xml/xml_node.h"

struct XmlFault {
  int severity;
  int code;
  int line;
  bool operator==(const XmlFault& other) const {
    return severity == other.severity && code == other.code && line == other.line;
  }
};

inline std::ostream& operator<<(std::ostream& stream, const XmlFault& fault) {
  return stream << "{severity " << fault.severity << ", code " << fault.code << ", line " << fault.line << "}";
}

inline XmlFault CurrentFault() {
  KyXmlError::Severity severity;
  int code;
  int line;
  KyXmlError::Get(severity, code, line);
  return {severity, code, line};
}

// True when the read left no error behind.
inline bool ReadText(KyXmlDocumentI& document, const std::string& bytes) {
  KyXmlError::Reset();
  std::istringstream stream(bytes);
  document.read(stream);
  return !KyXmlError::IsSet();
}

// Frees the targets of the instructions in `nodes` and below.
inline void FreeTargets(KyKyXmlNodeIList& nodes) {
  for (Ky_List::Cell* cell = nodes.getFirst(); cell != nullptr; cell = cell->getNext()) {
    auto* node = static_cast<KyXmlNodeI*>(cell->getValue());
    if (auto* instruction = dynamic_cast<KyXmlPI*>(node)) {
      delete[] instruction->getTarget();
      instruction->storeTarget(nullptr);
    } else if (auto* element = dynamic_cast<KyXmlElement*>(node)) {
      FreeTargets(element->getChildren());
    }
  }
}

inline std::string Written(const KyXmlDocumentI& document) {
  std::ostringstream out;
  document.write(out);
  return out.str();
}

#endif  // KYBASE_TESTS_XML_XML_TEST_SUPPORT_H
