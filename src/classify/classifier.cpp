#include "classify/classifier.h"

#include <glib.h>

#include <algorithm>

#include "base/text.h"
#include "storage/category.h"

namespace orvanta {

Classifier::Classifier(StringPool& pool, const std::vector<Rule>& rules, const Projects& projects)
    : pool_(pool),
      rules_(rules),
      projects_(projects),
      unclassified_(pool.intern(textOf(Category::Nonclasse))),
      idle_(pool.intern(textOf(Category::Inactif))) {
  ruleCategories_.reserve(rules.size());
  for (Rank rank = 0; rank < rules.size(); ++rank) {
    const auto& rule = rules[rank];
    ruleCategories_.push_back(rule.category ? pool.intern(*rule.category) : Text());
    const auto field = parsed<RuleField>(rule.field);
    if (!field) continue;
    search_.at(static_cast<std::size_t>(*field))
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
  const auto decision = decide(ev);
  ev.cat = decision.category;
  ev.pid = decision.project;
  ev.manual = decision.manual();
}

Decision Classifier::decide(const Ev& ev) {
  using By = Decision::By;
  if (ev.idle) return {.category = idle_, .categoryBy = By::Idle};
  Decision decision{.category = ev.category,
                    .project = ev.projectId,
                    .categoryBy = ev.category ? By::Manual : By::None,
                    .projectBy = ev.projectId ? By::Manual : By::None};
  if (ev.category && ev.projectId) return decision;

  PatternSearch::Found found;
  bool opensPhrase = false;
  const auto look = [&](RuleField field, Text text) {
    if (!text) return;
    const auto& known = match(field, text);
    found.merge(known.found);
    opensPhrase = opensPhrase || known.opensPhrase;
  };
  look(RuleField::Title, ev.title);
  look(RuleField::Url, ev.url);
  look(RuleField::Domain, ev.domain);
  look(RuleField::App, ev.app);

  if (!decision.category && found.category != kNone) {
    decision.category = ruleCategories_[found.category];
    decision.categoryBy = By::Rule;
    decision.categoryRule = &rules_[found.category];
  }
  if (!decision.project && found.project != kNone) {
    decision.projectRule = &rules_[found.project];
    decision.projectBy = By::Rule;
    decision.project = decision.projectRule->projectId;
  }
  if (!decision.project) {
    const auto keyword =
        opensPhrase ? std::min(found.keyword, phraseAcrossFields(ev)) : found.keyword;
    if (keyword != kNone) {
      decision.project = keywordProjects_[keyword];
      decision.projectBy = By::Keyword;
    }
  }
  if (!decision.category) fillIn(decision);
  return decision;
}

// The category of the effective project.
void Classifier::fillIn(Decision& decision) {
  const auto project = decision.project ? projects_.find(*decision.project) : projects_.end();
  const bool known = project != projects_.end();
  decision.category = known ? pool_.intern(project->second.category) : unclassified_;
  decision.categoryBy = known ? Decision::By::Project : Decision::By::None;
}

Classifier::Match& Classifier::match(RuleField field, Text text) {
  const auto at = static_cast<std::size_t>(field);
  auto& matches = matches_.at(at);
  if (matches.size() <= text.id()) matches.resize(pool_.size());
  auto& match = matches[text.id()];
  if (!match.known) match = {search_.at(at).search(text.view()), true, opensPhrase(text)};
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

std::string Classifier::keywordText(const Ev& ev) {
  std::string joined;
  for (const auto text : {ev.title, ev.url, ev.domain}) {
    if (text) joined.append(text.view()).push_back(' ');
  }
  joined.append(ev.app.view());
  return lowerCase(joined);
}

Classifier::Rank Classifier::phraseAcrossFields(const Ev& ev) const {
  const auto haystack = keywordText(ev);
  const auto first = std::find_if(phrases_.begin(), phrases_.end(), [&](const Phrase& phrase) {
    return haystack.find(phrase.text) != std::string::npos;
  });
  return first != phrases_.end() ? first->project : kNone;
}

}  // namespace orvanta
