#include "kybase/url/url_stream.h"

#include "kybase/url/url_buf_internal.h"

KyIUrlStream::KyIUrlStream(const char* name, bool binary) : std::istream(nullptr), buffer(new KyUrlBuf(name, binary)) {
  rdbuf(buffer);
  if (!buffer->isOpen()) setstate(std::ios_base::failbit);
}

KyIUrlStream::KyIUrlStream(std::istream& stream) : std::istream(nullptr), buffer(new KyUrlBuf(&stream, false)) {
  rdbuf(buffer);
}

KyIUrlStream::KyIUrlStream(std::istream* stream) : std::istream(nullptr), buffer(new KyUrlBuf(stream, true)) {
  rdbuf(buffer);
}

KyIUrlStream::~KyIUrlStream() { delete buffer; }

bool KyIUrlStream::IsAnURL(const char* name) { return KyUrlBuf::IsAnURL(name); }

const char* KyIUrlStream::getHeader() const { return buffer->getHeader(); }

unsigned long KyIUrlStream::getBufferLimit() const { return buffer->getBufferLimit(); }

void KyIUrlStream::setBufferLimit(unsigned long limit) { buffer->setBufferLimit(limit); }

KyIUrlStream::StreamHint KyIUrlStream::getHints() { return buffer->getHints(); }

void KyIUrlStream::setHints(KyIUrlStream::StreamHint hints) { buffer->setHints(hints); }
