// Export macro of libkybase. The library is built with hidden visibility; every
// public class and free function carries KY_EXPORT so that it alone is visible to
// clients of the shared library. The static build needs no marking.
#ifndef KYBASE_CORE_EXPORT_H
#define KYBASE_CORE_EXPORT_H

#if defined(KYBASE_STATIC)
#define KY_EXPORT
#else
#define KY_EXPORT __attribute__((visibility("default")))
#endif

#endif  // KYBASE_CORE_EXPORT_H
