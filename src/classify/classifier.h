// What a span counts as.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/string_pool.h"
#include "classify/rule_book.h"
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
  /// `pool` outlives the classifier; every span that it is given has its texts there, but for title
  /// and address.
  Classifier(StringPool& pool, std::shared_ptr<const RuleBook> book);

  /// Sets `cat`, `pid` and `manual` of `ev`.
  void classify(Ev& ev);
  /// The same with the reasons, whatever `ev` was classified as. Points into the rules.
  Decision decide(const Ev& ev) { return decide(ev, matched(ev)); }

  /// What rules and keywords say of a span, for those who add to it before they decide.
  RuleBook::Match matched(const Ev& ev);
  Decision decide(const Ev& ev, const RuleBook::Match& match) const;

  /// Where keywords are looked for: title, URL, domain and app joined by spaces, lower-cased.
  static std::string keywordText(const Ev& ev);

 private:
  struct Seen {
    RuleBook::Match match;
    bool known = false;
  };
  using ById = std::vector<Seen>;  // by text id

  void lookAtTitle(Text title, RuleBook::Match& match);
  void lookOnce(RuleField field, Text text, ById& known, RuleBook::Match& match) const;
  void fillIn(Decision& decision, RuleBook::Rank own) const;

  StringPool& pool_;
  const std::shared_ptr<const RuleBook> book_;
  Text unclassified_;
  Text idle_;
  std::vector<Text> ruleCategories_;  // by rule
  std::map<int64_t, Text> projectCategories_;

  ById apps_;
  ById domains_;
  static constexpr std::size_t kTitles = 2048;
  struct SeenTitle {
    uint64_t hash = 0;
    Seen seen;
  };
  std::vector<SeenTitle> titles_;  // each in the place that its hash names, until another comes
};

}  // namespace orvanta
