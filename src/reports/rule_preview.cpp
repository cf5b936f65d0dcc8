#include "reports/rule_preview.h"

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <limits>
#include <map>
#include <memory>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "base/text.h"
#include "classify/classifier.h"
#include "classify/pattern_search.h"
#include "classify/rule_set.h"
#include "reports/moves.h"
#include "reports/spans.h"

namespace orvanta {
namespace {

constexpr std::size_t kChanges = 8;
constexpr std::size_t kExamples = 5;
constexpr std::size_t kShares = 10;

// The spans of one text of the field, and of one title or address under it. Texts are known by
// their hashes; a span that carries one of them, by its id, tells it in the end.
struct ValueTotal {
  uint64_t key = 0;
  double seconds = 0;
  int64_t spans = 0;
  int64_t span = 0;
};
struct PartTotal {
  double seconds = 0;
  uint64_t value = 0;
  int64_t span = 0;
  std::size_t place = 0;  // in the order in which they came
};
// A look-up for each span that is caught, in no order: one flat table, for the processor's cache.
using Parts = boost::unordered_flat_map<uint64_t, PartTotal>;

std::vector<const PartTotal*> largest(const Parts& parts, uint64_t value) {
  std::vector<const PartTotal*> list;
  for (const auto& [key, part] : parts) {
    if (part.value == value) list.push_back(&part);
  }
  const auto most = std::min(kShares, list.size());
  std::partial_sort(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(most), list.end(),
                    [](const PartTotal* a, const PartTotal* b) {
                      return std::tie(b->seconds, a->place) < std::tie(a->seconds, b->place);
                    });
  list.resize(most);
  return list;
}

Text Ev::* memberOf(std::string_view field) {
  if (field == "title") return &Ev::title;
  if (field == "url") return &Ev::url;
  return field == "domain" ? &Ev::domain : &Ev::app;
}

// Which rows a rule catches.
class Catch {
 public:
  explicit Catch(const Rule& rule)
      : field_(parsed<RuleField>(rule.field) ? rule.field : ""),
        pattern_(lowerCase(rule.pattern)),
        whole_(rule.ofApplication()) {
    search_.add(pattern_, {.category = 0});
    search_.build();
  }

  bool in(const Cursor& row) {
    if (field_.empty()) return false;
    if (column_ < 0) column_ = row.column(field_);
    auto text = row.str(column_);
    if (!text && field_ == textOf(RuleField::App)) text = kUnknownApp;
    if (!text) return false;
    return whole_ ? lowerCase(*text) == pattern_ : search_.search(*text).any();
  }

 private:
  const std::string field_, pattern_;  // the field is empty where nothing is looked for
  const bool whole_;
  PatternSearch search_;
  int column_ = -1;
};

// All rules, those that come or go with a saved one in their places among the others. They match
// wherever their pattern was found, so they are not looked for again; but for an application's own,
// which means the whole name.
struct RankedRules {
  using Found = PatternSearch::Found;
  using Rank = PatternSearch::Rank;
  std::vector<Rule> rules;
  Found before, after;              // where the saved rule's pattern is
  std::optional<Rule> edited;       // that goes, being of another pattern
  Found withEdited;                 // where that one's is
  std::vector<bool> gone;           // by rank
  std::map<std::string, Rank> own;  // what is left of an application that loses its rule

  RankedRules(std::vector<Rule> others, Rule saved, std::size_t place,
              std::optional<int64_t> editedId)
      : rules(std::move(others)) {
    constexpr auto kNewest = std::numeric_limits<int64_t>::max();
    saved.id = kNewest;
    saved.priority = 0;
    rules.insert(rules.begin() + static_cast<std::ptrdiff_t>(std::min(place, rules.size())), saved);
    gone.resize(rules.size());
    for (Rank rank = 0; rank < rules.size(); ++rank) {
      auto& rule = rules[rank];
      const bool same = replaces(saved, rule);
      if (!same && rule.id != editedId) continue;
      if (!same) edited = rule;
      gone[rank] = rule.id != kNewest;
      if (rule.ofApplication()) {
        own.emplace(lowerCase(rule.pattern), PatternSearch::kNone);
        continue;
      }
      auto& found = !same ? withEdited : gone[rank] ? before : after;
      if (rule.category) found.category = std::min(found.category, rank);
      if (rule.projectId) found.project = std::min(found.project, rank);
      rule.pattern.clear();
    }
    for (auto& [name, left] : own) {
      for (Rank rank = 0; rank < rules.size() && left == PatternSearch::kNone; ++rank) {
        const auto& rule = rules[rank];
        if (!gone[rank] && rule.ofApplication() && lowerCase(rule.pattern) == name) left = rank;
      }
    }
  }

  Rank ownAfter(Rank rank) const {
    return rank != PatternSearch::kNone && gone[rank] ? own.at(lowerCase(rules[rank].pattern))
                                                      : rank;
  }
};

class Preview {
 public:
  Preview(SpanReader& reader, const Rule& rule, std::size_t place, std::optional<int64_t> edited)
      : reader_(reader),
        field_(memberOf(rule.field)),
        rules_(reader.rules(), rule, place, edited),
        saved_(rule),
        spans_(texts_),
        classifier_(texts_, std::make_shared<const RuleBook>(rules_.rules, reader.projects())) {
    if (rules_.edited) edited_.emplace(*rules_.edited);
  }

  RulePreview over(const TimeRange& range) {
    if (range.start < range.end) {
      reader_.walk(range, [&](const Cursor& row) { look(row, range); });
    }
    for (const auto* total : moves_.bySeconds(kChanges)) {
      const auto& [from, to, fromProject, toProject] = total->key;
      preview_.changes.push_back(
          {from.str(), to.str(), fromProject, toProject, {total->spans, total->seconds}});
    }
    exemplify();
    preview_.whole = reader_.whole();
    return std::move(preview_);
  }

 private:
  // Most rows are done with once their one text has been looked at, or two.
  void look(const Cursor& row, const TimeRange& range) {
    const bool caught = saved_.in(row);
    const bool wasCaught = edited_ && edited_->in(row);
    if (!caught && !wasCaught) return;
    auto ev = spans_.read(row);
    clip(ev, range);
    if (ev.idle) return;
    compare(ev, caught, wasCaught);
    if (caught) add(ev);
  }

  void compare(const Ev& ev, bool caught, bool wasCaught) {
    auto match = classifier_.matched(ev);
    auto after = match;
    after.own = rules_.ownAfter(match.own);
    if (caught) match.found.merge(rules_.before);
    if (wasCaught) match.found.merge(rules_.withEdited);
    if (caught) after.found.merge(rules_.after);
    const auto from = classifier_.decide(ev, match);
    const auto to = classifier_.decide(ev, after);
    if (!from.agrees(to)) {
      preview_.changed.add(ev);
      auto& total = moves_[{from.category, to.category, from.project, to.project}];
      ++total.spans;
      total.seconds += ev.duration();
    } else if (caught && from.manual()) {
      preview_.kept.add(ev);
    }
  }

  void add(const Ev& ev) {
    preview_.caught.add(ev);
    auto& value = values_[StringPool::hashOf((ev.*field_).view())];
    if (value.spans++ == 0) value.span = ev.id;
    value.seconds += ev.duration();
    addPart(titles_, value.key, ev.title, ev);
    addPart(urls_, value.key, ev.url, ev);
  }

  static void addPart(Parts& parts, uint64_t value, Text text, const Ev& ev) {
    if (!text) return;
    constexpr uint64_t kOdd = 0x9E3779B97F4A7C15;
    const auto key = value * kOdd ^ StringPool::hashOf(text.view());
    const auto [at, isNew] = parts.try_emplace(key);
    if (isNew) at->second = {0, value, ev.id, parts.size()};
    at->second.seconds += ev.duration();
  }

  void exemplify() {
    struct Shown {
      const ValueTotal* value;
      std::vector<const PartTotal*> titles;
      std::vector<const PartTotal*> urls;
    };
    std::vector<Shown> shown;
    std::vector<int64_t> spans;
    for (const auto* value : values_.bySeconds(kExamples)) {
      shown.push_back({value, largest(titles_, value->key), largest(urls_, value->key)});
      spans.push_back(value->span);
      for (const auto* parts : {&shown.back().titles, &shown.back().urls}) {
        for (const auto* part : *parts) spans.push_back(part->span);
      }
    }
    std::unordered_map<int64_t, Ev> found;
    reader_.eachOf(spans, [&](const Ev& ev) { found.emplace(ev.id, ev); });
    for (const auto& [value, titles, urls] : shown) {
      const auto shares = [&](const std::vector<const PartTotal*>& parts, Text Ev::* text) {
        std::vector<TextShare> list;
        for (const auto* part : parts) {
          const auto seen = found[part->span].*text;
          if (seen) list.push_back({seen.str(), part->seconds});
        }
        return list;
      };
      preview_.examples.push_back({(found[value->span].*field_).str(),
                                   {value->spans, value->seconds},
                                   shares(titles, &Ev::title),
                                   shares(urls, &Ev::url)});
    }
  }

  SpanReader& reader_;
  Text Ev::* const field_;
  const RankedRules rules_;
  Catch saved_;
  std::optional<Catch> edited_;
  StringPool texts_;
  EvReader spans_;
  Classifier classifier_;

  RulePreview preview_;
  MoveTally moves_;
  Tally<ValueTotal> values_;
  Parts titles_;
  Parts urls_;
};

}  // namespace

RulePreview previewRule(Database& db, const Rule& rule, std::optional<int64_t> edited,
                        const TimeRange& range) {
  SpanReader reader(db);
  return Preview(reader, rule, placeOf(db, rule), edited).over(range);
}

}  // namespace orvanta
