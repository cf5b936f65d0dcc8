#include "classify/classifier.h"

#include <algorithm>

#include "base/text.h"

namespace orvanta {
namespace {

bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

}  // namespace

Classifier::Classifier(StringPool& pool, const std::vector<Rule>& rules, const Projects& projects)
    : pool_(pool),
      rules_(rules),
      projects_(projects),
      unclassified_(pool.intern(kUnclassified)),
      idle_(pool.intern(kIdleCategory)) {
  ruleCategories_.reserve(rules.size());
  for (RuleIndex i = 0; i < rules.size(); ++i) {
    const auto& rule = rules[i];
    ruleCategories_.push_back(rule.category ? pool.intern(*rule.category) : Text());
    auto pattern = lowerCase(rule.pattern);
    if (pattern.empty()) continue;
    constexpr std::array<std::string_view, kFields> kNames{"app", "domain", "title", "url"};
    const auto* const field = std::find(kNames.begin(), kNames.end(), rule.field);
    if (field == kNames.end()) continue;
    patterns_.at(static_cast<std::size_t>(field - kNames.begin()))
        .push_back({std::move(pattern), i});
  }
  for (const auto& [id, project] : projects) {
    if (project.archived || project.keywords.empty()) continue;
    auto& entry = keywordProjects_.emplace_back(KeywordProject{id, project.keywords, {}});
    std::copy_if(project.keywords.begin(), project.keywords.end(),
                 std::back_inserter(entry.phrases),
                 [](const std::string& keyword) { return contains(keyword, " "); });
    anyPhrase_ = anyPhrase_ || !entry.phrases.empty();
  }
}

void Classifier::classify(Ev& ev) {
  if (ev.idle) {
    ev.cat = idle_;
    return;
  }
  ev.manual = ev.category || ev.projectId;
  ev.cat = ev.category;
  ev.pid = ev.projectId;
  if (ev.cat && ev.pid) return;

  RuleIndex category = kNone;
  RuleIndex project = kNone;
  const auto look = [&](Field field, Text text) {
    if (!text) return;
    const auto& found = match(field, text);
    category = std::min(category, found.category);
    project = std::min(project, found.project);
  };
  look(kApp, ev.app);
  look(kDomain, ev.domain);
  look(kTitle, ev.title);
  look(kUrl, ev.url);

  if (!ev.cat && category != kNone) ev.cat = ruleCategories_[category];
  if (!ev.pid && project != kNone) ev.pid = rules_[project].projectId;
  if (!ev.pid) {
    const auto keyword = keywordProject(ev);
    if (keyword != kNone) ev.pid = keywordProjects_[keyword].id;
  }
  if (!ev.cat) ev.cat = ev.pid ? projectCategory(*ev.pid) : unclassified_;
}

Text Classifier::projectCategory(int64_t project) {
  const auto found = projects_.find(project);
  return found != projects_.end() ? pool_.intern(found->second.category) : unclassified_;
}

Classifier::Match& Classifier::match(Field field, Text text) {
  auto& known = matches_.at(field);
  if (known.size() <= text.id()) known.resize(std::max<std::size_t>(pool_.size(), text.id() + 1));
  auto& match = known[text.id()];
  if (!match.rulesKnown) matchRules(field, text, match);
  return match;
}

void Classifier::matchRules(Field field, Text text, Match& match) const {
  match.rulesKnown = true;
  const auto& patterns = patterns_.at(field);
  if (patterns.empty()) return;
  const auto lowered = lowerCase(text.view());
  for (const auto& pattern : patterns) {
    const auto& rule = rules_[pattern.rule];
    const bool wanted =
        (rule.category && match.category == kNone) || (rule.projectId && match.project == kNone);
    if (!wanted || !contains(lowered, pattern.text)) continue;
    if (rule.category && match.category == kNone) match.category = pattern.rule;
    if (rule.projectId && match.project == kNone) match.project = pattern.rule;
  }
}

uint32_t Classifier::keywordProject(const Ev& ev) {
  if (keywordProjects_.empty()) return kNone;
  uint32_t first = kNone;
  const auto look = [&](Field field, Text text) {
    if (!text) return;
    auto& found = match(field, text);
    if (!found.keywordsKnown) {
      found.keywordsKnown = true;
      const auto lowered = lowerCase(text.view());
      for (uint32_t i = 0; i < keywordProjects_.size() && found.keyword == kNone; ++i) {
        const auto& keywords = keywordProjects_[i].keywords;
        if (std::any_of(keywords.begin(), keywords.end(),
                        [&](const std::string& keyword) { return contains(lowered, keyword); })) {
          found.keyword = i;
        }
      }
    }
    first = std::min(first, found.keyword);
  };
  look(kTitle, ev.title);
  look(kUrl, ev.url);
  look(kDomain, ev.domain);
  look(kApp, ev.app);
  return anyPhrase_ && first != 0 ? std::min(first, phraseProject(ev)) : first;
}

// A keyword is looked for in title, URL, domain and app joined by spaces, so one that holds a space
// may begin in one field and end in the next.
uint32_t Classifier::phraseProject(const Ev& ev) {
  std::string haystack;
  for (const auto text : {ev.title, ev.url, ev.domain}) {
    if (text) haystack.append(text.view()).push_back(' ');
  }
  haystack.append(ev.app.view());
  const auto [known, isNew] = phraseMatches_.try_emplace(std::move(haystack), kNone);
  if (!isNew) return known->second;
  const auto lowered = lowerCase(known->first);
  for (uint32_t i = 0; i < keywordProjects_.size(); ++i) {
    const auto& phrases = keywordProjects_[i].phrases;
    if (std::any_of(phrases.begin(), phrases.end(),
                    [&](const std::string& phrase) { return contains(lowered, phrase); })) {
      return known->second = i;
    }
  }
  return kNone;
}

}  // namespace orvanta
