// Interned text: each distinct string of a request is stored once and known by a small number, so
// that what is asked of a string (does a rule match it?) is worked out once, not once per span.
#pragma once

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory_resource>
#include <string>
#include <string_view>

namespace orvanta {

/// A string of a StringPool, or nothing. As cheap to copy as a pointer; valid as long as the pool.
class Text {
 public:
  Text() = default;

  explicit operator bool() const { return entry_ != nullptr; }

  /// The text, empty when there is none.
  std::string_view view() const { return entry_ ? entry_->text : std::string_view(); }
  std::string str() const { return std::string(view()); }

  /// Dense number of the string in its pool, from 0. Only for a Text that holds something.
  uint32_t id() const { return entry_->id; }

  /// Same text, or both nothing. Text of one pool compares without looking at the characters.
  friend bool operator==(Text a, Text b) {
    return a.entry_ == b.entry_ || (a.entry_ && b.entry_ && a.entry_->text == b.entry_->text);
  }

 private:
  friend class StringPool;
  struct Entry {
    std::string_view text;
    uint32_t id;
  };
  explicit Text(const Entry* entry) : entry_(entry) {}

  const Entry* entry_ = nullptr;
};

/// Owns the strings. Not thread-safe: one request, one pool.
class StringPool {
 public:
  StringPool() = default;
  StringPool(const StringPool&) = delete;
  StringPool& operator=(const StringPool&) = delete;

  /// The pool's copy of `text`; the empty string is a string like any other.
  Text intern(std::string_view text);

  /// How many distinct strings there are; every id is below it.
  uint32_t size() const { return static_cast<uint32_t>(entries_.size()); }

 private:
  std::pmr::monotonic_buffer_resource bytes_;
  std::deque<Text::Entry> entries_;
  boost::unordered_flat_map<std::string_view, const Text::Entry*, std::hash<std::string_view>>
      index_;
};

}  // namespace orvanta
