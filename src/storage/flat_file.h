// Plain values as a file of this machine holds them: it is never taken elsewhere.
#pragma once

#define XXH_INLINE_ALL
#include <unistd.h>
#include <xxhash.h>

#include <cstdint>
#include <string>

namespace orvanta::flat {

/// Tells what an accident has changed. XXH3 of one list after the other.
class Sum {
 public:
  template <class List>
  Sum& add(const List& list) {
    value_ = XXH3_64bits_withSeed(list.data(), list.size() * sizeof(*list.data()), value_);
    return *this;
  }
  uint64_t value() const { return value_; }

 private:
  uint64_t value_ = 0;
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
