// What a span counts as.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/string_pool.h"
#include "classify/pattern_search.h"
#include "classify/rule_set.h"
#include "storage/ev.h"

namespace orvanta {

/// What a span counts as, and who says so.
struct Decision {
  enum class By : uint8_t { None, Idle, Manual, Rule, Keyword, Project };

  Text category;
  std::optional<int64_t> project;
  By categoryBy = By::None;            ///< never Keyword
  By projectBy = By::None;             ///< None, Manual, Rule or Keyword
  const Rule* categoryRule = nullptr;  ///< only By::Rule
  const Rule* projectRule = nullptr;   ///< only By::Rule

  bool manual() const { return categoryBy == By::Manual || projectBy == By::Manual; }
  /// The same effect, whoever it comes from.
  bool agrees(const Decision& other) const {
    return category == other.category && project == other.project;
  }
};

/// Classifies spans of one request with one set of rules and projects. The effective project is the
/// manual one, else that of the first matching rule that has one, else the first project (by id)
/// with a keyword in the span's title, URL, domain or app. The effective category is the manual
/// one, else that of the first matching rule that has one, else that of the effective project, else
/// "nonclasse". A rule matches where its lower-cased pattern occurs in the lower-cased field.
///
/// Each distinct string is searched once, for all patterns in one pass, whatever the number of
/// spans that carry it; after that a span costs four look-ups. Not thread-safe.
class Classifier {
 public:
  /// `rules` are in matching order. All three outlive the classifier; every span that it is given
  /// has its texts in `pool`.
  Classifier(StringPool& pool, const std::vector<Rule>& rules, const Projects& projects);

  /// Sets `cat`, `pid` and `manual` of `ev`.
  void classify(Ev& ev);
  /// The same with the reasons, whatever `ev` was classified as. Points into the rules.
  Decision decide(const Ev& ev);

  /// Where keywords are looked for: title, URL, domain and app joined by spaces, lower-cased.
  static std::string keywordText(const Ev& ev);

 private:
  static constexpr auto kFields = kTexts<RuleField>.size();
  using Rank = PatternSearch::Rank;
  static constexpr Rank kNone = PatternSearch::kNone;

  // What all rules and keywords have to say about one string in one field.
  struct Match {
    PatternSearch::Found found;  // ranks are indexes into rules_ and keywordProjects_
    bool known = false;
    bool opensPhrase = false;  // it ends with the beginning of a keyword of several words
  };
  // A keyword with a space, which may begin in one field and end in the next.
  struct Phrase {
    std::string text;
    Rank project;
  };

  void addKeywords(const Project& project, Rank rank);
  Match& match(RuleField field, Text text);
  bool opensPhrase(Text text) const;
  Rank phraseAcrossFields(const Ev& ev) const;
  void fillIn(Decision& decision);

  StringPool& pool_;
  const std::vector<Rule>& rules_;
  const Projects& projects_;
  Text unclassified_;
  Text idle_;
  std::vector<Text> ruleCategories_;  // by rule
  std::array<PatternSearch, kFields> search_;
  std::vector<int64_t> keywordProjects_;  // not archived, with keywords, by ascending id
  std::vector<Phrase> phrases_;
  std::vector<std::string> phraseOpenings_;  // the phrases up to each of their spaces
  std::string openingEnds_;                  // the last byte of each of these

  std::array<std::vector<Match>, kFields> matches_;  // by text id
};

}  // namespace orvanta
