#include "kybase/url/ky_zlib.h"

namespace Ky {
namespace Zlib1_2_8 {

int inflateInit2_(z_streamp stream, int windowBits, const char* version, int streamSize) {
  return ::inflateInit2_(stream, windowBits, version, streamSize);
}

int inflate(z_streamp stream, int flush) { return ::inflate(stream, flush); }

int inflateEnd(z_streamp stream) { return ::inflateEnd(stream); }

}  // namespace Zlib1_2_8
}  // namespace Ky
