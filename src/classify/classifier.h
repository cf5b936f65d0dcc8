// What a span counts as.
#pragma once

#include <array>
#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "base/string_pool.h"
#include "classify/rule_set.h"
#include "storage/ev.h"

namespace orvanta {

/// Classifies spans of one request with one set of rules and projects. The effective project is the
/// manual one, else that of the first matching rule that has one, else the first project (by id)
/// with a keyword in the span's title, URL, domain or app. The effective category is the manual
/// one, else that of the first matching rule that has one, else that of the effective project, else
/// "nonclasse". A rule matches where its lower-cased pattern occurs in the lower-cased field.
///
/// Each distinct string is lower-cased and searched once, whatever the number of spans that carry
/// it; after that a span costs four look-ups. Not thread-safe.
class Classifier {
 public:
  /// `rules` are in matching order. All three outlive the classifier; every span that it is given
  /// has its texts in `pool`.
  Classifier(StringPool& pool, const std::vector<Rule>& rules, const Projects& projects);

  /// Sets `cat`, `pid` and `manual` of `ev`.
  void classify(Ev& ev);

 private:
  enum Field : std::size_t { kApp, kDomain, kTitle, kUrl, kFields };
  using RuleIndex = uint32_t;
  static constexpr RuleIndex kNone = UINT32_MAX;

  // What all rules and keywords have to say about one string in one field.
  struct Match {
    bool rulesKnown = false;
    bool keywordsKnown = false;
    RuleIndex category = kNone;  // first rule that matches and has a category
    RuleIndex project = kNone;   // first rule that matches and has a project
    uint32_t keyword = kNone;    // first of keywordProjects_ with a keyword in the string
  };
  struct Pattern {
    std::string text;  // lower-cased, not empty
    RuleIndex rule;
  };
  struct KeywordProject {
    int64_t id;
    std::vector<std::string> keywords;
    std::vector<std::string> phrases;  // the keywords with a space: these may span two fields
  };

  Match& match(Field field, Text text);
  void matchRules(Field field, Text text, Match& match) const;
  uint32_t keywordProject(const Ev& ev);
  uint32_t phraseProject(const Ev& ev);
  Text projectCategory(int64_t project);

  StringPool& pool_;
  const std::vector<Rule>& rules_;
  const Projects& projects_;
  Text unclassified_;
  Text idle_;
  std::vector<Text> ruleCategories_;  // by rule
  std::array<std::vector<Pattern>, kFields> patterns_;
  std::vector<KeywordProject> keywordProjects_;  // not archived, with keywords, by ascending id
  bool anyPhrase_ = false;

  std::array<std::vector<Match>, kFields> matches_;  // by text id
  boost::unordered_flat_map<std::string, uint32_t> phraseMatches_;
};

}  // namespace orvanta
