// The activities that the index has met: their texts stand here, once for all the files of days.
#pragma once

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "storage/ev.h"

namespace orvanta {

/// A file that grows by parts. The number of an activity is how many stand before it, as long as
/// there is the part that it stands in; what uses numbers remembers the name of the newest part, a
/// random one, and is worth nothing where the list has no such part.
class ActivityList {
 public:
  explicit ActivityList(std::filesystem::path file) : file_(std::move(file)) {}

  const std::filesystem::path& file() const { return file_; }

  /// The names of its parts, whatever else is in them; the newest last.
  std::vector<uint64_t> parts() const;

  struct Shown {
    std::vector<uint64_t> parts;
    uint64_t bytes = 0;  ///< of the file, up to the end of these
  };
  /// Shows each activity by number, as a span without times and id; null for one whose texts were
  /// erased. Application, domain and category are in `texts`, the others valid during the call.
  /// What is no good, and what comes after it, is not shown.
  Shown each(StringPool& texts, const std::function<void(const Ev*)>& visit) const;

  /// Takes the texts of all others out of the file, which is removed where that leaves little.
  /// False when they are still there.
  bool keepOnly(const std::vector<bool>& numbers) const;

 private:
  const std::filesystem::path file_;
};

/// Gives activities their numbers. One at a time; not thread-safe.
class ActivityNumbers {
 public:
  explicit ActivityNumbers(const ActivityList& list);

  /// That of an activity, a new one where the list has none.
  uint32_t of(const Ev& ev);
  /// The newest part, new numbers included; 0 when there is none.
  uint64_t part() const { return part_; }
  /// Adds the new ones to the list. Where it fails their numbers are worth nothing.
  bool store();

 private:
  // In some MB, whatever the list: what is not known any more stands there twice.
  static constexpr std::size_t kMost = 400'000;
  std::pair<uint32_t, bool> numbered(uint64_t hash);

  const std::filesystem::path file_;
  boost::unordered_flat_map<uint64_t, uint32_t> numbers_;  // by hash
  uint32_t count_ = 0;
  uint64_t part_ = 0;
  uint64_t end_ = 0;        // of the file
  std::string activities_;  // that are new
  std::string texts_;
};

}  // namespace orvanta
