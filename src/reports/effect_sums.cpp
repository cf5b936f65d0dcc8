#include "reports/effect_sums.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

#include "storage/rule.h"

namespace orvanta {
namespace {

constexpr std::size_t kMoves = 8;
constexpr std::size_t kExamples = 5;
constexpr double kNothing = 0.001;  // seconds: what rounding may leave

// The largest first, whatever their sign; of the same the order stays.
template <class Net>
void sortNets(std::vector<Net>& nets) {
  std::erase_if(nets, [](const Net& net) { return std::abs(net.seconds) < kNothing; });
  std::stable_sort(nets.begin(), nets.end(), [](const Net& a, const Net& b) {
    return std::abs(a.seconds) > std::abs(b.seconds);
  });
}

}  // namespace

std::optional<EffectSums::Place> EffectSums::placeOf(const Counted& from, const Counted& to,
                                                     const Ev& ev) {
  if (from == to) return {};
  const bool domain = !ev.domain.view().empty();
  const auto label = domain ? ev.domain : ev.app;
  auto& [totals, titles, places] = labels_.at(domain ? 1 : 0);
  Place place{.move = moves_.placeOf({from.category, to.category, from.project, to.project}),
              .label = totals.placeOf(label),
              .title = kNone,
              .domain = domain};
  if (ev.title) {
    constexpr uint64_t kOdd = 0x9E3779B97F4A7C15;
    const auto hash = label.id() * kOdd ^ StringPool::hashOf(ev.title.view());
    const auto next = static_cast<uint32_t>(titles.size());
    const auto [at, isNew] = places.try_emplace(hash, next);
    if (isNew) titles.push_back({.label = label});
    place.title = at->second;
  }
  return place;
}

void EffectSums::add(const Place& place, const ActivityTime& time, What what) {
  const int sign = what == What::Taken ? -1 : 1;
  // Of a span that never ends no sum could tell.
  const double seconds = sign * (std::isfinite(time.seconds) ? time.seconds : 0);
  const auto addTo = [&](auto& total) {
    total.seconds += seconds;
    total.spans += sign * time.spans;
  };
  addTo(moves_.at(place.move));

  if (!latest_.second || latest_.first != time.month) {
    latest_ = {time.month, &months_[time.month]};
  }
  auto& month = *latest_.second;
  addTo(month);
  month.taken = month.taken || what == What::Taken;
  if (what == What::Activity) month.first = std::min(month.first, time.first);
  if (what == What::Apart) month.apart = std::min(month.apart, time.first);

  auto& labels = labels_.at(place.domain ? 1 : 0);
  addTo(labels.totals.at(place.label));
  if (place.title == kNone) return;
  auto& title = labels.titles[place.title];
  title.example = time.example;
  addTo(title);
}

std::optional<int> EffectSums::unsureMonth() const {
  const auto first = std::find_if(months_.begin(), months_.end(),
                                  [](const auto& month) { return month.second.spans > 0; });
  return first != months_.end() && first->second.taken ? std::optional(first->first) : std::nullopt;
}

Effect EffectSums::effect(const Projects& before, const Projects& after,
                          const TitleOf& titleOf) const {
  Effect effect;
  addMoves(effect);
  addNets(effect, before, after);
  for (const auto& [number, month] : months_) {
    if (month.spans <= 0) continue;
    if (!effect.since) effect.since = std::min(month.first, month.apart);
    effect.months.push_back({number, std::max(month.seconds, 0.0)});
  }
  addExamples(effect, titleOf);
  return effect;
}

void EffectSums::addMoves(Effect& effect) const {
  for (const auto& [move, seconds, spans] : moves_.entries()) {
    if (spans <= 0) continue;
    const SpanCount count{spans, std::max(seconds, 0.0)};
    effect.changed.spans += count.spans;
    effect.changed.seconds += count.seconds;
    effect.moves.push_back({move.fromCategory.optional(), move.toCategory.optional(),
                            move.fromProject, move.toProject, count});
  }
  std::sort(effect.moves.begin(), effect.moves.end(), [](const auto& a, const auto& b) {
    const auto rest = [](const Effect::Move& move) {
      return std::tie(move.fromCategory, move.toCategory, move.fromProject, move.toProject);
    };
    return a.count.seconds != b.count.seconds ? a.count.seconds > b.count.seconds
                                              : rest(a) < rest(b);
  });
  if (effect.moves.size() > kMoves) effect.moves.resize(kMoves);
}

void EffectSums::addNets(Effect& effect, const Projects& before, const Projects& after) const {
  std::map<std::string, double> categories;
  std::map<int64_t, double> projects;
  for (const auto& [move, seconds, spans] : moves_.entries()) {
    if (spans <= 0) continue;
    if (move.fromCategory) categories[move.fromCategory.str()] -= seconds;
    if (move.toCategory) categories[move.toCategory.str()] += seconds;
    if (move.fromProject) projects[*move.fromProject] -= seconds;
    if (move.toProject) projects[*move.toProject] += seconds;
  }
  for (const auto& [category, seconds] : categories) {
    effect.categories.push_back({category, seconds});
  }
  for (const auto& [id, seconds] : projects) {
    const auto known = after.contains(id) ? after.find(id) : before.find(id);
    if (known == before.end()) continue;
    effect.projects.push_back({id, known->second.name, known->second.color, seconds});
  }
  sortNets(effect.categories);
  sortNets(effect.projects);
}

void EffectSums::addExamples(Effect& effect, const TitleOf& titleOf) const {
  struct Candidate {
    const LabelTotal* total;
    std::size_t field;
  };
  std::vector<Candidate> candidates;
  for (const std::size_t field : {0, 1}) {
    for (const auto& total : labels_.at(field).totals.entries()) {
      if (total.spans > 0) candidates.push_back({&total, field});
    }
  }
  const auto most = std::min(kExamples, candidates.size());
  std::partial_sort(candidates.begin(), candidates.begin() + static_cast<std::ptrdiff_t>(most),
                    candidates.end(), [](const Candidate& a, const Candidate& b) {
                      return a.total->seconds != b.total->seconds
                                 ? a.total->seconds > b.total->seconds
                                 : std::pair(a.total->key.view(), a.field) <
                                       std::pair(b.total->key.view(), b.field);
                    });
  candidates.resize(most);
  for (const auto& [total, field] : candidates) {
    const TitleTotal* largest = nullptr;
    for (const auto& title : labels_.at(field).titles) {
      const bool larger = !largest || title.seconds > largest->seconds;
      if (title.label == total->key && title.spans > 0 && larger) largest = &title;
    }
    effect.examples.push_back({total->key.str(),
                               std::string(textOf(field == 0 ? RuleField::App : RuleField::Domain)),
                               largest ? titleOf(largest->example) : std::nullopt,
                               {total->spans, std::max(total->seconds, 0.0)}});
  }
}

}  // namespace orvanta
