#pragma once

namespace orvanta::test {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kInstrumented = true;
#else
inline constexpr bool kInstrumented = false;
#endif

/// How often something random is tried: a sanitizer takes ten times as long for each, and looks for
/// faults that a tenth of them meets.
template <class Count>
constexpr Count times(Count asReleased) {
  return kInstrumented ? asReleased / 10 : asReleased;
}

}  // namespace orvanta::test
