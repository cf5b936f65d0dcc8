#include "reports/known_activities.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "base/folded.h"
#include "classify/classifier.h"

namespace orvanta {

KnownActivities::KnownActivities(Database& db, std::shared_ptr<const RuleBook> book,
                                 const StampedDays& stamps)
    : book_(std::move(book)) {
  Classifier classifier(pool_, book_);
  const auto told = Activities(db, pool_).eachIndexed(
      stamps, [&](const Ev& ev) { return add(ev, classifier); },
      [&](uint32_t number, const ActivityTime& time) {
        records_.push_back({number, static_cast<uint32_t>(time.first),
                            static_cast<float>(std::isfinite(time.seconds) ? time.seconds : 0)});
      });
  std::size_t end = 0;
  for (const auto day : told) {
    days_.push_back(*std::lower_bound(
        stamps.begin(), stamps.end(), day,
        [](const StampedDay& stamped, int64_t number) { return stamped.day < number; }));
    while (end < records_.size() && dayOf(records_[end].first) <= day) ++end;
    ends_.push_back(end);
  }
  texts_.shrink_to_fit();
  records_.shrink_to_fit();
}

uint32_t KnownActivities::keep(Text text) {
  if (!text) return kNone;
  if (named_.size() <= text.id()) named_.resize(std::size_t{text.id()} + 1);
  return named_[text.id()] = text, text.id();
}

uint32_t KnownActivities::add(Ev ev, Classifier& classifier) {
  classifier.classify(ev);
  Activity activity{.app = keep(ev.app), .domain = keep(ev.domain), .texts = texts_.size()};
  if (ev.pid) {
    const auto at = std::find(projects_.begin(), projects_.end(), *ev.pid);
    activity.project = static_cast<int32_t>(at - projects_.begin());
    if (at == projects_.end()) projects_.push_back(*ev.pid);
  }
  for (const auto text : {ev.title, ev.url}) {
    appendFolded(texts_, text.view());
    texts_ += '\n';
  }
  activities_.push_back(activity);
  return static_cast<uint32_t>(activities_.size() - 1);
}

std::optional<int64_t> KnownActivities::project(const Activity& activity) const {
  if (activity.project < 0) return {};
  return projects_[static_cast<std::size_t>(activity.project)];
}

std::span<const KnownActivities::Record> KnownActivities::records(std::size_t day) const {
  const auto begin = day == 0 ? 0 : ends_[day - 1];
  return std::span(records_).subspan(begin, ends_[day] - begin);
}

std::vector<SearchedWords::Mask> KnownActivities::wordsIn(const std::vector<std::string>& words,
                                                          const Projects& projects) const {
  SearchedWords searched(words, projects);
  std::vector<SearchedWords::Mask> named(named_.size());
  for (std::size_t i = 0; i < named_.size(); ++i) named[i] = searched.in(named_[i]);
  std::vector<SearchedWords::Mask> masks;
  masks.reserve(activities_.size());
  for (const auto& one : activities_) {
    masks.push_back(named[one.app] | (one.domain == kNone ? 0 : named[one.domain]) |
                    searched.in(project(one)));
  }
  const auto* const begin = texts_.data();
  const auto* const end = begin + texts_.size();
  for (std::size_t i = 0; i < words.size(); ++i) {
    auto next = activities_.begin();
    for (const auto* at = begin; at < end;) {
      const auto* found = static_cast<const char*>(
          memmem(at, static_cast<std::size_t>(end - at), words[i].data(), words[i].size()));
      if (!found) break;
      const auto place = static_cast<uint64_t>(found - begin);
      next = std::upper_bound(
          next, activities_.end(), place,
          [](uint64_t value, const Activity& activity) { return value < activity.texts; });
      masks[static_cast<std::size_t>(next - activities_.begin()) - 1] |= SearchedWords::Mask{1}
                                                                         << i;
      if (next == activities_.end()) break;
      at = begin + next->texts;
    }
  }
  return masks;
}

}  // namespace orvanta
