#include "reports/timeline.h"

#include <boost/json/object.hpp>
#include <optional>

#include "reports/tally.h"
#include "storage/json.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr double kShortestInSegment = 1;
constexpr double kSegmentGap = 3;
constexpr double kBlockGap = 5;

struct Segment {
  double start = 0;
  double end = 0;
  Text cat;
  std::optional<int64_t> pid;
  TextTally labels;

  bool continuedBy(const Ev& ev) const {
    return ev.cat == cat && ev.pid == pid && ev.start - end < kSegmentGap;
  }

  json::object toJson() const {
    constexpr std::size_t kLabels = 3;
    json::array top;
    for (const auto* label : labels.bySeconds(kLabels))
      top.push_back(json::value(label->key.view()));
    return {{"start", start},
            {"end", end},
            {"cat", cat.view()},
            {"pid", jsonOrNull(pid)},
            {"top", std::move(top)}};
  }
};

struct Block {
  const Ev* first = nullptr;  // the span that opened it
  double end = 0;
  json::array ids;
  TextTally titles;

  bool continuedBy(const Ev& ev) const {
    return ev.app == first->app && ev.domain.view() == first->domain.view() &&
           ev.cat == first->cat && ev.pid.value_or(-1) == first->pid.value_or(-1) &&
           ev.idle == first->idle && ev.start - end < kBlockGap;
  }

  void add(const Ev& ev) {
    end = ev.end;
    ids.push_back(json::value(ev.id));
    if (ev.title) titles[ev.title].seconds += ev.duration();
  }

  json::object toJson() {
    const auto longest = titles.bySeconds(1);
    return {{"start", first->start},
            {"end", end},
            {"duration", end - first->start},
            {"app", first->app.view()},
            {"domain", jsonOrNull(first->domain)},
            {"cat", first->cat.view()},
            {"pid", jsonOrNull(first->pid)},
            {"idle", first->idle},
            {"ids", std::move(ids)},
            {"manual", first->manual},
            {"title", longest.empty() ? json::value(nullptr) : jsonOrNull(longest.front()->key)}};
  }
};

}  // namespace

json::array segments(const std::vector<Ev>& events) {
  json::array list;
  std::optional<Segment> open;
  for (const auto& ev : events) {
    if (ev.idle || !(ev.end - ev.start >= kShortestInSegment)) continue;
    if (!open || !open->continuedBy(ev)) {
      if (open) list.push_back(open->toJson());
      open = Segment{ev.start, ev.end, ev.cat, ev.pid, {}};
    }
    open->end = ev.end;
    open->labels[ev.domain ? ev.domain : ev.app].seconds += ev.duration();
  }
  if (open) list.push_back(open->toJson());
  return list;
}

json::array blocks(const std::vector<Ev>& events, double minSeconds) {
  std::vector<Block> found;
  for (const auto& ev : events) {
    if (found.empty() || !found.back().continuedBy(ev)) found.emplace_back().first = &ev;
    found.back().add(ev);
  }
  json::array list;
  for (auto& block : found) {
    if (block.first->idle || block.end - block.first->start >= minSeconds) {
      list.push_back(block.toJson());
    }
  }
  return list;
}

}  // namespace orvanta
