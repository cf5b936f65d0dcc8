// What a span counts as.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
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
/// that of the application's own rule (Rule::ofApplication), else "nonclasse". A rule matches where
/// its lower-cased pattern occurs in the lower-cased field; an application's own, where it is that.
///
/// A field is searched for all patterns in one pass; each distinct application and domain once,
/// whatever the number of spans that carry it, and a title not again soon. Not thread-safe.
class Classifier {
 public:
  /// `rules` are in matching order. All three outlive the classifier; every span that it is given
  /// has its texts in `pool`, but for title and address.
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

  // What all rules and keywords have to say about texts.
  struct Match {
    PatternSearch::Found found;  // ranks are indexes into rules_ and keywordProjects_
    bool known = false;
    bool opensPhrase = false;  // one ends with the beginning of a keyword of several words
    Rank own = kNone;          // the application's own rule

    void merge(const Match& other) {
      found.merge(other.found);
      own = std::min(own, other.own);
      opensPhrase = opensPhrase || other.opensPhrase;
    }
  };
  using Matches = std::vector<Match>;  // by text id
  // A keyword with a space, which may begin in one field and end in the next.
  struct Phrase {
    std::string text;
    Rank project;
  };

  void addKeywords(const Project& project, Rank rank);
  void look(RuleField field, Text text, Match& match) const;
  void lookAtTitle(Text title, Match& match);
  void lookOnce(RuleField field, Text text, Matches& known, Match& match) const;
  bool opensPhrase(Text text) const;
  Rank phraseAcrossFields(const Ev& ev) const;
  Rank ownRule(Text app) const;
  void fillIn(Decision& decision, Rank own) const;

  StringPool& pool_;
  const std::vector<Rule>& rules_;
  Text unclassified_;
  Text idle_;
  std::vector<Text> ruleCategories_;  // by rule
  std::map<int64_t, Text> projectCategories_;
  std::array<PatternSearch, kFields> search_;
  std::map<std::string, Rank> ownRules_;  // by the application's name in small letters
  std::vector<int64_t> keywordProjects_;  // not archived, with keywords, by ascending id
  std::vector<Phrase> phrases_;
  std::vector<std::string> phraseOpenings_;  // the phrases up to each of their spaces
  std::array<bool, 256> endsOpening_{};      // the last byte of one of these, in either case

  Matches apps_;
  Matches domains_;
  static constexpr std::size_t kTitles = 2048;
  struct SeenTitle {
    uint64_t hash = 0;
    Match match;
  };
  std::vector<SeenTitle> titles_;  // each in the place that its hash names, until another comes
};

}  // namespace orvanta
