// Interned text: each distinct string of a request is stored once and known by a small number, so
// that what is asked of a string (does a rule match it?) is worked out once, not once per span.
#pragma once

#include <boost/unordered/unordered_flat_set.hpp>
#include <cstdint>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

/// A text that somebody else holds, or nothing. As cheap to copy as a view; valid as long as its
/// pool, or as what it was borrowed from.
class Text {
 public:
  Text() = default;
  /// Of no pool, for what is looked at once.
  static Text borrowed(std::string_view text) { return {text, kNoId}; }

  explicit operator bool() const { return data_ != nullptr; }

  /// The text, empty when there is none.
  std::string_view view() const { return {data_, size_}; }
  std::string str() const { return std::string(view()); }
  std::optional<std::string> optional() const {
    return data_ ? std::optional(str()) : std::nullopt;
  }

  /// Dense number of the string in its pool, from 0; the same for all that are in none.
  uint32_t id() const { return id_; }

  /// Same text, or both nothing. Equal texts of one pool are seen to be so at once.
  friend bool operator==(Text a, Text b) {
    return a.data_ == b.data_ ? a.size_ == b.size_ : a.data_ && b.data_ && a.view() == b.view();
  }

 private:
  friend class StringPool;
  static constexpr uint32_t kNoId = UINT32_MAX;
  // An empty view may point nowhere, and is a text all the same.
  Text(std::string_view text, uint32_t id)
      : data_(text.empty() ? "" : text.data()),
        size_(static_cast<uint32_t>(text.size())),
        id_(id) {}

  const char* data_ = nullptr;
  uint32_t size_ = 0;
  uint32_t id_ = kNoId;
};

/// Owns the strings. Not thread-safe: one request, one pool.
class StringPool {
 public:
  StringPool();
  StringPool(const StringPool&) = delete;
  StringPool& operator=(const StringPool&) = delete;

  /// The pool's copy of `text`; the empty string is a string like any other.
  Text intern(std::string_view text);

  /// By which texts can be told apart without being kept: another one each time the program runs,
  /// so that nobody can make two texts that have the same.
  static uint64_t hashOf(std::string_view text);

  /// How many distinct strings there are; every id is below it.
  uint32_t size() const { return static_cast<uint32_t>(index_.size()); }

 private:
  struct Hash {
    using is_transparent = void;
    using is_avalanching = void;
    std::size_t operator()(std::string_view text) const { return hashOf(text); }
    std::size_t operator()(Text text) const { return hashOf(text.view()); }
  };
  struct Same {
    using is_transparent = void;
    bool operator()(Text a, Text b) const { return a == b; }
    bool operator()(std::string_view a, Text b) const { return a == b.view(); }
    bool operator()(Text a, std::string_view b) const { return a.view() == b; }
  };

  std::pmr::monotonic_buffer_resource memory_{16384};
  boost::unordered_flat_set<Text, Hash, Same> index_;
};

}  // namespace orvanta
