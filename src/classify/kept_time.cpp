#include "classify/kept_time.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <memory>
#include <span>
#include <vector>

#include "classify/classifier.h"
#include "classify/rule_set.h"
#include "storage/ev.h"

namespace orvanta {
namespace {

constexpr std::size_t kAtOnce = 10000;  // ids of one statement

}  // namespace

AssignedTime keepTime(Transaction& change, int64_t project) {
  StringPool texts;
  EvReader reader(texts);
  Classifier classifier(texts,
                        std::make_shared<const RuleBook>(loadRules(change), loadProjects(change)));
  AssignedTime kept;
  std::vector<int64_t> ids;
  change.each(
      "SELECT id, start, end, app, title, url, domain, idle, category, project_id FROM events", {},
      [&](const Cursor& row) {
        const auto ev = reader.read(row);
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
