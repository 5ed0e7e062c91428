// Export macro of libkybase. The library is built with hidden visibility; every
// public class and free function carries KY_EXPORT so that it alone is visible to
// clients of the shared library. The static build needs no marking.
#ifndef KYBASE_CORE_EXPORT_H
#define KYBASE_CORE_EXPORT_H

#if defined(KYBASE_STATIC)
/// Empty in the static build.
#define KY_EXPORT
#else
/// Marks a class or function as part of the library's interface.
#define KY_EXPORT __attribute__((visibility("default")))
#endif

#endif  // KYBASE_CORE_EXPORT_H
