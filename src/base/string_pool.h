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

/// A string of a StringPool, or nothing. As cheap to copy as a pointer; valid as long as the pool.
class Text {
 public:
  Text() = default;

  explicit operator bool() const { return entry_ != nullptr; }

  /// The text, empty when there is none.
  std::string_view view() const { return entry_ ? entry_->view() : std::string_view(); }
  std::string str() const { return std::string(view()); }
  std::optional<std::string> optional() const {
    return entry_ ? std::optional(str()) : std::nullopt;
  }

  /// Dense number of the string in its pool, from 0. Only for a Text that holds something.
  uint32_t id() const { return entry_->id; }

  /// Same text, or both nothing. Equal texts of one pool are seen to be so at once.
  friend bool operator==(Text a, Text b) {
    return a.entry_ == b.entry_ || (a.entry_ && b.entry_ && a.view() == b.view());
  }

 private:
  friend class StringPool;
  friend class TextSlot;
  // Stands right before its characters, so that both come into the processor's cache together.
  struct Entry {
    uint64_t hash;
    uint32_t id;
    uint32_t size;
    std::string_view view() const { return {reinterpret_cast<const char*>(this + 1), size}; }
  };
  explicit Text(const Entry* entry) : entry_(entry) {}

  const Entry* entry_ = nullptr;
};

/// A place for one text at a time, which costs no more than to copy it: for those that are looked
/// at once. Such a Text has no id, and is another with the next hold().
class TextSlot {
 public:
  Text hold(std::string_view text);

 private:
  std::vector<Text::Entry> room_;
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
  using Entry = Text::Entry;
  struct Key {
    std::string_view text;
    uint64_t hash;
  };
  struct Hash {
    using is_transparent = void;
    using is_avalanching = void;
    std::size_t operator()(const Key& key) const { return key.hash; }
    std::size_t operator()(const Entry* entry) const { return entry->hash; }
  };
  struct Same {
    using is_transparent = void;
    bool operator()(const Entry* a, const Entry* b) const { return a == b; }
    bool operator()(const Key& key, const Entry* entry) const {
      return key.hash == entry->hash && key.text == entry->view();
    }
    bool operator()(const Entry* entry, const Key& key) const { return (*this)(key, entry); }
  };

  std::pmr::monotonic_buffer_resource memory_{16384};
  boost::unordered_flat_set<const Entry*, Hash, Same> index_;
};

}  // namespace orvanta
