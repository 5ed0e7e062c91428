// The three zlib entry points that the URL stream inflates with, exported by libkybase
// under Ky::Zlib1_2_8 so that a client can drive an inflate state the same way the
// stream does. The names forward one call each to the system's zlib, which the library
// links (it is never copied into the library): a client needs zlib's header, which this
// one includes, but does not link zlib itself. zlib's types come in by using-
// declarations, so a z_stream set up by the client is the one these functions take.
//
// The version text passed to inflateInit2_ is checked by zlib for its major number
// only; the stream passes "1.2.8". Results and failure are zlib's own; nothing is
// thrown. Thread use is zlib's: one state per thread.
#ifndef KYBASE_URL_KY_ZLIB_H
#define KYBASE_URL_KY_ZLIB_H

#include <zlib.h>

#include "kybase/core/export.h"

namespace Ky {
namespace Zlib1_2_8 {

using ::Bytef;
using ::uInt;
using ::uLong;
using ::z_stream;
using ::z_streamp;

/// zlib's inflateInit2_: prepares `stream` for inflating with a window of `windowBits`.
KY_EXPORT int inflateInit2_(z_streamp stream, int windowBits, const char* version, int streamSize);
/// zlib's inflate: inflates what `stream` points at.
KY_EXPORT int inflate(z_streamp stream, int flush);
/// zlib's inflateEnd: frees the state of `stream`.
KY_EXPORT int inflateEnd(z_streamp stream);

}  // namespace Zlib1_2_8
}  // namespace Ky

#endif  // KYBASE_URL_KY_ZLIB_H
