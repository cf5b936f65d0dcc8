#include "classify/classifier.h"

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "storage/category.h"

namespace orvanta {

Classifier::Classifier(StringPool& pool, std::shared_ptr<const RuleBook> book)
    : pool_(pool),
      book_(std::move(book)),
      unclassified_(pool.intern(textOf(Category::Nonclasse))),
      idle_(pool.intern(textOf(Category::Inactif))),
      titles_(kTitles) {
  ruleCategories_.reserve(book_->rules().size());
  for (const auto& rule : book_->rules()) {
    ruleCategories_.push_back(rule.category ? pool.intern(*rule.category) : Text());
  }
  for (const auto& [id, project] : book_->projects()) {
    projectCategories_.emplace(id, pool.intern(project.category));
  }
}

void Classifier::classify(Ev& ev) {
  const auto decision = decide(ev);
  ev.cat = decision.category;
  ev.pid = decision.project;
  ev.manual = decision.manual();
}

RuleBook::Match Classifier::matched(const Ev& ev) {
  // Nobody else is asked about these.
  if (ev.idle || (ev.category && ev.projectId)) return {};
  RuleBook::Match match;
  lookAtTitle(ev.title, match);
  if (ev.url) match.merge(book_->look(RuleField::Url, ev.url.view()));
  lookOnce(RuleField::Domain, ev.domain, domains_, match);
  lookOnce(RuleField::App, ev.app, apps_, match);
  return match;
}

Decision Classifier::decide(const Ev& ev, const RuleBook::Match& match) const {
  using By = Decision::By;
  if (ev.idle) return {.category = idle_, .categoryBy = By::Idle};
  Decision decision{.category = ev.category,
                    .project = ev.projectId,
                    .categoryBy = ev.category ? By::Manual : By::None,
                    .projectBy = ev.projectId ? By::Manual : By::None};
  if (ev.category && ev.projectId) return decision;

  const auto& found = match.found;
  if (!decision.category && found.category != RuleBook::kNone) {
    decision.category = ruleCategories_[found.category];
    decision.categoryBy = By::Rule;
    decision.categoryRule = &book_->rules()[found.category];
  }
  if (!decision.project && found.project != RuleBook::kNone) {
    decision.projectRule = &book_->rules()[found.project];
    decision.projectBy = By::Rule;
    decision.project = decision.projectRule->projectId;
  }
  if (!decision.project) {
    const auto keyword = match.opensPhrase
                             ? std::min(found.keyword, book_->phraseIn(keywordText(ev)))
                             : found.keyword;
    if (keyword != RuleBook::kNone) {
      decision.project = book_->keywordProject(keyword);
      decision.projectBy = By::Keyword;
    }
  }
  if (!decision.category) fillIn(decision, match.own);
  return decision;
}

// The category of the effective project, or else of the application's own rule.
void Classifier::fillIn(Decision& decision, RuleBook::Rank own) const {
  const auto known =
      decision.project ? projectCategories_.find(*decision.project) : projectCategories_.end();
  if (known != projectCategories_.end()) {
    decision.category = known->second;
    decision.categoryBy = Decision::By::Project;
  } else if (own != RuleBook::kNone) {
    decision.category = ruleCategories_[own];
    decision.categoryBy = Decision::By::Rule;
    decision.categoryRule = &book_->rules()[own];
  } else {
    decision.category = unclassified_;
  }
}

// Titles come again, many within days, and are too many to be kept; most addresses come once.
void Classifier::lookAtTitle(Text title, RuleBook::Match& match) {
  if (!title) return;
  const auto hash = StringPool::hashOf(title.view());
  auto& [itsHash, seen] = titles_[hash % kTitles];
  if (!seen.known || itsHash != hash) {
    itsHash = hash;
    seen = {book_->look(RuleField::Title, title.view()), true};
  }
  match.merge(seen.match);
}

void Classifier::lookOnce(RuleField field, Text text, ById& known, RuleBook::Match& match) const {
  if (!text) return;
  if (known.size() <= text.id()) known.resize(pool_.size());
  auto& its = known[text.id()];
  if (!its.known) its = {book_->look(field, text.view()), true};
  match.merge(its.match);
}

std::string Classifier::keywordText(const Ev& ev) {
  std::string joined;
  for (const auto text : {ev.title, ev.url, ev.domain}) {
    if (text) joined.append(text.view()).push_back(' ');
  }
  joined.append(ev.app.view());
  return lowerCase(joined);
}

}  // namespace orvanta
