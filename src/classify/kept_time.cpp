#include "classify/kept_time.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "classify/book_difference.h"
#include "classify/classifier.h"
#include "classify/rule_set.h"
#include "storage/ev.h"

namespace orvanta {
namespace {

constexpr std::size_t kAtOnce = 10000;  // ids of one statement

// Knows the project's keywords alone, which few spans have.
BookDifference keywordsOf(int64_t project, const RuleBook& book) {
  auto others = book.projects();
  const auto known = others.find(project);
  if (known != others.end()) known->second.keywords.clear();
  return {book, RuleBook(book.rules(), std::move(others))};
}

}  // namespace

AssignedTime keepTime(Transaction& change, int64_t project) {
  StringPool texts;
  EvReader reader(texts);
  const auto book = std::make_shared<const RuleBook>(loadRules(change), loadProjects(change));
  const auto keywords = keywordsOf(project, *book);
  Classifier classifier(texts, book);
  AssignedTime kept;
  if (keywords.none()) return kept;
  std::vector<int64_t> ids;
  change.each(
      "SELECT id, start, end, app, title, url, domain, idle, category, project_id FROM events", {},
      [&](const Cursor& row) {
        const auto ev = reader.read(row);
        if (!keywords.concerns(ev)) return;
        const auto decision = classifier.decide(ev);
        if (decision.projectBy != Decision::By::Keyword || decision.project != project) return;
        ids.push_back(ev.id);
        kept.seconds += ev.duration();
      });
  kept.spans = static_cast<int64_t>(ids.size());
  for (std::span<const int64_t> left(ids); !left.empty();) {
    const auto some = left.first(std::min(left.size(), kAtOnce));
    change.run("UPDATE events SET project_id=? WHERE id IN (SELECT value FROM json_each(?))",
               {project, fmt::format("[{}]", fmt::join(some, ","))});
    left = left.subspan(some.size());
  }
  return kept;
}

}  // namespace orvanta
