// The rules and keywords of one moment, ready to be looked for.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "base/string_pool.h"
#include "classify/pattern_search.h"
#include "storage/project.h"
#include "storage/rule.h"

namespace orvanta {

/// What a set of rules and projects has to say about texts. Making one costs as much as classifying
/// hundreds of spans; it is immutable, and any thread may use it.
class RuleBook {
 public:
  using Rank = PatternSearch::Rank;
  static constexpr Rank kNone = PatternSearch::kNone;

  struct Match {
    /// The ranks of category and project are indexes into rules(); that of the keyword is one of
    /// keywordProject().
    PatternSearch::Found found;
    Rank own = kNone;          ///< the application's own rule, an index into rules(), too
    bool opensPhrase = false;  ///< a text ends with the beginning of a keyword of several words

    void merge(const Match& other) {
      own = std::min(own, other.own);
      found.merge(other.found);
      opensPhrase = opensPhrase || other.opensPhrase;
    }
  };

  /// `rules` are in matching order. One with an empty pattern is found nowhere.
  RuleBook(std::vector<Rule> rules, Projects projects);

  const std::vector<Rule>& rules() const { return rules_; }
  const Projects& projects() const { return projects_; }

  /// What of all rules of this field, and of all keywords, occurs in `text`.
  Match look(RuleField field, std::string_view text) const;
  /// The first project with a keyword of several words in this text, which is lower-cased.
  Rank phraseIn(std::string_view lowered) const;
  /// Ranks are by ascending id; archived projects have none.
  int64_t keywordProject(Rank rank) const { return keywordProjects_[rank]; }

 private:
  static constexpr auto kFields = kTexts<RuleField>.size();
  // A keyword with a space, which may begin in one field and end in the next.
  struct Phrase {
    std::string text;
    Rank project;
  };

  void addKeywords(const Project& project, Rank rank);
  Rank ownRule(std::string_view app) const;
  bool opensPhrase(std::string_view text) const;

  const std::vector<Rule> rules_;
  const Projects projects_;
  std::array<PatternSearch, kFields> search_;
  std::map<std::string, Rank> ownRules_;  // by the application's name in small letters
  std::vector<int64_t> keywordProjects_;
  std::vector<Phrase> phrases_;
  std::vector<std::string> phraseOpenings_;  // the phrases up to each of their spaces
  std::array<bool, 256> endsOpening_{};      // the last byte of one of these, in either case
};

}  // namespace orvanta
