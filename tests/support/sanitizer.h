// KY_TEST_ASAN is defined when the tests are built with AddressSanitizer, which cannot
// run under a limited address space.
#ifndef KYBASE_TESTS_SUPPORT_SANITIZER_H
#define KYBASE_TESTS_SUPPORT_SANITIZER_H

#if defined(__SANITIZE_ADDRESS__)
#define KY_TEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KY_TEST_ASAN 1
#endif
#endif

#endif  // KYBASE_TESTS_SUPPORT_SANITIZER_H
