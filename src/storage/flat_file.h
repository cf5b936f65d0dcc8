// Plain values as a file of this machine holds them: it is never taken elsewhere.
#pragma once

#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>

namespace orvanta::flat {

/// Tells what an accident has changed. Four sums side by side, for the processor's pipeline.
class Sum {
 public:
  template <class List>
  Sum& add(const List& list) {
    const auto* bytes = reinterpret_cast<const char*>(list.data());
    std::size_t left = list.size() * sizeof(*list.data());
    lanes_[0] ^= left;
    std::array<uint64_t, kLanes> words{};
    for (; left >= sizeof(words); left -= sizeof(words), bytes += sizeof(words)) {
      std::memcpy(words.data(), bytes, sizeof(words));
      mix(words);
    }
    words = {};
    if (left > 0) std::memcpy(words.data(), bytes, left);
    mix(words);
    return *this;
  }
  uint64_t value() const {
    uint64_t sum = 0;
    for (const auto lane : lanes_) sum = (sum ^ lane) * kOdd;
    return sum;
  }

 private:
  static constexpr std::size_t kLanes = 4;
  static constexpr uint64_t kOdd = 0x9E3779B97F4A7C15;
  void mix(const std::array<uint64_t, kLanes>& words) {
    for (std::size_t i = 0; i < kLanes; ++i) {
      const auto mixed = (lanes_[i] ^ words[i]) * kOdd;
      lanes_[i] = mixed ^ (mixed >> 32);
    }
  }
  std::array<uint64_t, kLanes> lanes_{1, 2, 3, 4};
};

/// The next `count` values of an open file; false when there are not so many.
template <class List>
bool readInto(int file, uint64_t count, List& list) {
  list.resize(count);
  auto* bytes = reinterpret_cast<char*>(list.data());
  for (std::size_t left = count * sizeof(*list.data()); left > 0;) {
    const auto got = read(file, bytes, left);
    if (got <= 0) return false;
    bytes += got;
    left -= static_cast<std::size_t>(got);
  }
  return true;
}

template <class List>
void append(std::string& bytes, const List& list) {
  bytes.append(reinterpret_cast<const char*>(list.data()), list.size() * sizeof(*list.data()));
}

}  // namespace orvanta::flat
