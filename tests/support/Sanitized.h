// Whether the tests are built with a sanitizer, whose memory, time and threads are its own.
#pragma once

namespace tarnel::test {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool builtWithSanitizer = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
inline constexpr bool builtWithSanitizer = true;
#else
inline constexpr bool builtWithSanitizer = false;
#endif
#else
inline constexpr bool builtWithSanitizer = false;
#endif

}  // namespace tarnel::test
