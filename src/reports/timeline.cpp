#include "reports/timeline.h"

#include <optional>

#include "reports/tally.h"

namespace orvanta {
namespace {

constexpr double kShortestInSegment = 1;
constexpr double kSegmentGap = 3;
constexpr double kBlockGap = 5;

struct OpenSegment {
  double start = 0;
  double end = 0;
  Text cat;
  std::optional<int64_t> pid;
  TextTally labels;

  bool continuedBy(const Ev& ev) const {
    return ev.cat == cat && ev.pid == pid && ev.start - end < kSegmentGap;
  }

  Segment closed() const {
    constexpr std::size_t kLabels = 3;
    Segment segment{start, end, cat.str(), pid, {}};
    for (const auto* label : labels.bySeconds(kLabels)) segment.top.push_back(label->key.str());
    return segment;
  }
};

struct OpenBlock {
  const Ev* first = nullptr;  // the span that opened it
  double end = 0;
  double seconds = 0;
  std::vector<int64_t> ids;
  TextTally titles;

  bool continuedBy(const Ev& ev) const {
    return ev.app == first->app && ev.domain.view() == first->domain.view() &&
           ev.cat == first->cat && ev.pid.value_or(-1) == first->pid.value_or(-1) &&
           ev.idle == first->idle && ev.start - end < kBlockGap;
  }

  void add(const Ev& ev) {
    end = ev.end;
    seconds += ev.duration();
    ids.push_back(ev.id);
    if (ev.title) titles[ev.title].seconds += ev.duration();
  }

  Block closed() {
    const auto longest = titles.bySeconds(1);
    return {.start = first->start,
            .end = end,
            .app = first->app.str(),
            .domain = first->domain.optional(),
            .cat = first->cat.str(),
            .pid = first->pid,
            .idle = first->idle,
            .ids = std::move(ids),
            .manual = first->manual,
            .title = longest.empty() ? std::nullopt : longest.front()->key.optional()};
  }
};

}  // namespace

std::vector<Segment> segments(const std::vector<Ev>& events) {
  std::vector<Segment> list;
  std::optional<OpenSegment> open;
  for (const auto& ev : events) {
    if (ev.idle || !(ev.end - ev.start >= kShortestInSegment)) continue;
    if (!open || !open->continuedBy(ev)) {
      if (open) list.push_back(open->closed());
      open = OpenSegment{ev.start, ev.end, ev.cat, ev.pid, {}};
    }
    open->end = ev.end;
    open->labels[ev.domain ? ev.domain : ev.app].seconds += ev.duration();
  }
  if (open) list.push_back(open->closed());
  return list;
}

std::vector<Block> blocks(const std::vector<Ev>& events, double minSeconds, Brief& brief) {
  std::vector<OpenBlock> found;
  for (const auto& ev : events) {
    if (found.empty() || !found.back().continuedBy(ev)) found.emplace_back().first = &ev;
    found.back().add(ev);
  }
  std::vector<Block> list;
  for (auto& block : found) {
    if (block.first->idle || block.end - block.first->start >= minSeconds) {
      list.push_back(block.closed());
    } else {
      ++brief.count;
      brief.seconds += block.seconds;
    }
  }
  return list;
}

}  // namespace orvanta
