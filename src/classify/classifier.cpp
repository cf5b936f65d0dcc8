#include "classify/classifier.h"

#include <glib.h>

#include <algorithm>

#include "base/text.h"

namespace orvanta {

Classifier::Classifier(StringPool& pool, const std::vector<Rule>& rules, const Projects& projects)
    : pool_(pool),
      rules_(rules),
      projects_(projects),
      unclassified_(pool.intern(kUnclassified)),
      idle_(pool.intern(kIdleCategory)) {
  constexpr std::array<std::string_view, kFields> kNames{"app", "domain", "title", "url"};
  ruleCategories_.reserve(rules.size());
  for (Rank rank = 0; rank < rules.size(); ++rank) {
    const auto& rule = rules[rank];
    ruleCategories_.push_back(rule.category ? pool.intern(*rule.category) : Text());
    const auto* const field = std::find(kNames.begin(), kNames.end(), rule.field);
    if (field == kNames.end()) continue;
    search_.at(static_cast<std::size_t>(field - kNames.begin()))
        .add(lowerCase(rule.pattern),
             {.category = rule.category ? rank : kNone, .project = rule.projectId ? rank : kNone});
  }
  for (const auto& [id, project] : projects) {
    if (project.archived || project.keywords.empty()) continue;
    addKeywords(project, static_cast<Rank>(keywordProjects_.size()));
    keywordProjects_.push_back(id);
  }
  for (auto& search : search_) search.build();
}

void Classifier::addKeywords(const Project& project, Rank rank) {
  for (const auto& keyword : project.keywords) {
    for (auto& search : search_) search.add(keyword, {.keyword = rank});
    auto space = keyword.find(' ');
    if (space != std::string::npos) phrases_.push_back({keyword, rank});
    for (; space != std::string::npos; space = keyword.find(' ', space + 1)) {
      phraseOpenings_.push_back(keyword.substr(0, space));
      openingEnds_.push_back(keyword[space - 1]);
    }
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

  PatternSearch::Found found;
  bool opensPhrase = false;
  const auto look = [&](Field field, Text text) {
    if (!text) return;
    const auto& known = match(field, text);
    found.merge(known.found);
    opensPhrase = opensPhrase || known.opensPhrase;
  };
  look(kTitle, ev.title);
  look(kUrl, ev.url);
  look(kDomain, ev.domain);
  look(kApp, ev.app);

  if (!ev.cat && found.category != kNone) ev.cat = ruleCategories_[found.category];
  if (!ev.pid && found.project != kNone) ev.pid = rules_[found.project].projectId;
  if (!ev.pid) {
    const auto keyword =
        opensPhrase ? std::min(found.keyword, phraseAcrossFields(ev)) : found.keyword;
    if (keyword != kNone) ev.pid = keywordProjects_[keyword];
  }
  if (!ev.cat) ev.cat = ev.pid ? projectCategory(*ev.pid) : unclassified_;
}

Text Classifier::projectCategory(int64_t project) {
  const auto found = projects_.find(project);
  return found != projects_.end() ? pool_.intern(found->second.category) : unclassified_;
}

Classifier::Match& Classifier::match(Field field, Text text) {
  auto& matches = matches_.at(field);
  if (matches.size() <= text.id()) matches.resize(pool_.size());
  auto& match = matches[text.id()];
  if (!match.known) match = {search_.at(field).search(text.view()), true, opensPhrase(text)};
  return match;
}

bool Classifier::opensPhrase(Text text) const {
  // Most texts are settled by their last byte; of a letter beyond ASCII it depends on the case.
  const auto last = text.view().empty() ? '\0' : text.view().back();
  const auto isAscii = static_cast<unsigned char>(last) < 0x80;
  if (isAscii && openingEnds_.find(g_ascii_tolower(last)) == std::string::npos) return false;
  const auto lowered = lowerCase(text.view());
  return std::any_of(phraseOpenings_.begin(), phraseOpenings_.end(),
                     [&](const std::string& opening) { return lowered.ends_with(opening); });
}

// Keywords are looked for in title, URL, domain and app joined by spaces.
Classifier::Rank Classifier::phraseAcrossFields(const Ev& ev) const {
  std::string joined;
  for (const auto text : {ev.title, ev.url, ev.domain}) {
    if (text) joined.append(text.view()).push_back(' ');
  }
  joined.append(ev.app.view());
  const auto haystack = lowerCase(joined);
  const auto first = std::find_if(phrases_.begin(), phrases_.end(), [&](const Phrase& phrase) {
    return haystack.find(phrase.text) != std::string::npos;
  });
  return first != phrases_.end() ? first->project : kNone;
}

}  // namespace orvanta
