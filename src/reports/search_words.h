// What is looked for, and whether an activity has it.
#pragma once

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "storage/ev.h"
#include "storage/project.h"

namespace orvanta {

/// The words of what was typed, folded(); what stands between quotation marks, " “ ” « », is one.
/// At most 16.
std::vector<std::string> searchWords(std::string_view typed);

/// Tells where the words are. Keeps what it knows of an application or a site: all of its spans
/// have these texts in one pool. Not thread-safe.
class SearchedWords {
 public:
  /// A bit for each word.
  using Mask = uint32_t;

  /// `projects` outlive it.
  SearchedWords(std::vector<std::string> words, const Projects& projects);

  const std::vector<std::string>& words() const { return words_; }
  /// That of all words.
  Mask all() const { return (Mask{1} << words_.size()) - 1; }

  /// Those that occur in a text of the pool.
  Mask in(Text text);
  /// In the name of a project.
  Mask in(const std::optional<int64_t>& project);
  /// In any of them, or in title and address; of a span whose project is known.
  Mask in(const Ev& ev);

 private:
  Mask look(std::string_view text);

  const std::vector<std::string> words_;
  const Projects& projects_;
  boost::unordered_flat_map<uint32_t, Mask> known_;      // by id of the text
  boost::unordered_flat_map<int64_t, Mask> projectsIn_;  // by id
  boost::unordered_flat_map<uint64_t, Mask> titles_;     // and addresses, by hash
  std::string folded_;
};

}  // namespace orvanta
