// Whether this build is watched by the address sanitizer, under which sizes and times say little.
#pragma once

#if defined(__SANITIZE_ADDRESS__)
#define TQC_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TQC_TEST_SANITIZED 1
#endif
#endif

namespace NSTQ::Tests {

#if defined(TQC_TEST_SANITIZED)
inline constexpr bool isSanitized = true;
#else
inline constexpr bool isSanitized = false;
#endif

} // namespace NSTQ::Tests
