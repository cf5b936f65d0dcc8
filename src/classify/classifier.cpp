#include "classify/classifier.h"

#include <glib.h>

#include "base/text.h"
#include "storage/category.h"

namespace orvanta {

Classifier::Classifier(StringPool& pool, const std::vector<Rule>& rules, const Projects& projects)
    : pool_(pool),
      rules_(rules),
      unclassified_(pool.intern(textOf(Category::Nonclasse))),
      idle_(pool.intern(textOf(Category::Inactif))) {
  ruleCategories_.reserve(rules.size());
  for (Rank rank = 0; rank < rules.size(); ++rank) {
    const auto& rule = rules[rank];
    ruleCategories_.push_back(rule.category ? pool.intern(*rule.category) : Text());
    if (rule.ofApplication()) {
      ownRules_.try_emplace(lowerCase(rule.pattern), rank);
      continue;
    }
    const auto field = parsed<RuleField>(rule.field);
    if (!field) continue;
    search_.at(static_cast<std::size_t>(*field))
        .add(lowerCase(rule.pattern),
             {.category = rule.category ? rank : kNone, .project = rule.projectId ? rank : kNone});
  }
  for (const auto& [id, project] : projects) {
    projectCategories_.emplace(id, pool.intern(project.category));
    if (project.archived || project.keywords.empty()) continue;
    addKeywords(project, static_cast<Rank>(keywordProjects_.size()));
    keywordProjects_.push_back(id);
  }
  titles_.resize(kTitles);
  for (auto& search : search_) search.build();
}

void Classifier::addKeywords(const Project& project, Rank rank) {
  for (const auto& keyword : project.keywords) {
    for (auto& search : search_) search.add(keyword, {.keyword = rank});
    auto space = keyword.find(' ');
    if (space != std::string::npos) phrases_.push_back({keyword, rank});
    for (; space != std::string::npos; space = keyword.find(' ', space + 1)) {
      phraseOpenings_.push_back(keyword.substr(0, space));
      // Of a letter beyond ASCII the last byte may depend on the case.
      const auto end = static_cast<unsigned char>(keyword[space - 1]);
      if (end >= 0x80) std::fill(endsOpening_.begin() + 0x80, endsOpening_.end(), true);
      endsOpening_[end] = endsOpening_[static_cast<uint8_t>(g_ascii_toupper(keyword[space - 1]))] =
          true;
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

  Match match;
  lookAtTitle(ev.title, match);
  look(RuleField::Url, ev.url, match);
  lookOnce(RuleField::Domain, ev.domain, domains_, match);
  lookOnce(RuleField::App, ev.app, apps_, match);
  const auto& found = match.found;

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
        match.opensPhrase ? std::min(found.keyword, phraseAcrossFields(ev)) : found.keyword;
    if (keyword != kNone) {
      decision.project = keywordProjects_[keyword];
      decision.projectBy = By::Keyword;
    }
  }
  if (!decision.category) fillIn(decision, match.own);
  return decision;
}

// The category of the effective project, or else of the application's own rule.
void Classifier::fillIn(Decision& decision, Rank own) const {
  const auto known =
      decision.project ? projectCategories_.find(*decision.project) : projectCategories_.end();
  if (known != projectCategories_.end()) {
    decision.category = known->second;
    decision.categoryBy = Decision::By::Project;
  } else if (own != kNone) {
    decision.category = ruleCategories_[own];
    decision.categoryBy = Decision::By::Rule;
    decision.categoryRule = &rules_[own];
  } else {
    decision.category = unclassified_;
  }
}

Classifier::Rank Classifier::ownRule(Text app) const {
  if (ownRules_.empty() || app.view().empty()) return kNone;
  const auto own = ownRules_.find(lowerCase(app.view()));
  return own != ownRules_.end() ? own->second : kNone;
}

void Classifier::look(RuleField field, Text text, Match& match) const {
  if (!text) return;
  match.found.merge(search_[static_cast<std::size_t>(field)].search(text.view()));
  match.opensPhrase = match.opensPhrase || opensPhrase(text);
}

// Titles come again, many within days, and are too many to be kept; most addresses come once.
void Classifier::lookAtTitle(Text title, Match& match) {
  if (!title) return;
  const auto hash = StringPool::hashOf(title.view());
  auto& seen = titles_[hash % kTitles];
  if (!seen.match.known || seen.hash != hash) {
    seen = {hash, {.known = true}};
    look(RuleField::Title, title, seen.match);
  }
  match.merge(seen.match);
}

void Classifier::lookOnce(RuleField field, Text text, Matches& known, Match& match) const {
  if (!text) return;
  if (known.size() <= text.id()) known.resize(pool_.size());
  auto& its = known[text.id()];
  if (!its.known) {
    look(field, text, its);
    if (field == RuleField::App) its.own = ownRule(text);
    its.known = true;
  }
  match.merge(its);
}

bool Classifier::opensPhrase(Text text) const {
  // Most texts are settled by their last byte.
  if (text.view().empty() || !endsOpening_[static_cast<uint8_t>(text.view().back())]) return false;
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
