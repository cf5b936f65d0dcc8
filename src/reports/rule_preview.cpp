#include "reports/rule_preview.h"

#include <array>
#include <unordered_map>

#include "base/text.h"
#include "classify/classifier.h"
#include "classify/pattern_search.h"
#include "classify/rule_set.h"
#include "reports/spans.h"

namespace orvanta {
namespace {

constexpr std::size_t kChanges = 8;
constexpr std::size_t kExamples = 5;
constexpr std::size_t kShares = 10;

// How a span's classification changes.
struct Move {
  Text fromCategory;
  Text toCategory;
  std::optional<int64_t> fromProject;
  std::optional<int64_t> toProject;

  friend bool operator==(const Move&, const Move&) = default;
};
struct MoveHash {
  std::size_t operator()(const Move& move) const {
    constexpr std::size_t kOdd = 1000003;
    std::size_t hash = 0;
    for (const auto text : {move.fromCategory, move.toCategory}) {
      hash = hash * kOdd + TextHash()(text);
    }
    for (const auto& project : {move.fromProject, move.toProject}) {
      hash = hash * kOdd + static_cast<std::size_t>(project.value_or(-1));
    }
    return hash;
  }
};
struct MoveTotal {
  Move key;
  double seconds = 0;
  int64_t spans = 0;
};

// The spans of one text of the field, and of one title or address under it. Texts are known by
// their hashes; a span that carries one of them, by its id, tells it in the end.
struct ValueTotal {
  uint64_t key = 0;
  double seconds = 0;
  int64_t spans = 0;
  int64_t span = 0;
};
struct PartTotal {
  uint64_t key = 0;
  double seconds = 0;
  uint64_t value = 0;
  int64_t span = 0;
};

Text Ev::*memberOf(std::string_view field) {
  if (field == "title") return &Ev::title;
  if (field == "url") return &Ev::url;
  return field == "domain" ? &Ev::domain : &Ev::app;
}

class Preview {
 public:
  Preview(SpanReader& reader, const Rule& rule)
      : reader_(reader),
        rule_(rule),
        field_(memberOf(rule.field)),
        after_(withRuleSaved(reader.rules(), rule)) {
    pattern_.add(lowerCase(rule.pattern), {.category = 0});
    pattern_.build();
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
  // What grows with the number of distinct texts.
  struct Texts {
    Texts(const std::vector<Rule>& before, const std::vector<Rule>& after, const Projects& projects)
        : reader(pool), before(pool, before, projects), after(pool, after, projects) {}
    StringPool pool;
    EvReader reader;
    Classifier before;
    Classifier after;
    enum class Caught : uint8_t { Unknown, No, Yes };
    std::vector<Caught> caught;  // by id of the field's text
  };

  bool catches(Text text) {
    auto& caught = texts_->caught;
    if (caught.size() <= text.id()) caught.resize(texts_->pool.size());
    auto& known = caught[text.id()];
    if (known == Texts::Caught::Unknown) {
      known = pattern_.search(text.view()).any() ? Texts::Caught::Yes : Texts::Caught::No;
    }
    return known == Texts::Caught::Yes;
  }

  // Most rows are done with once their one text has been looked at.
  void look(const Cursor& row, const TimeRange& range) {
    if (column_ < 0) column_ = row.column(rule_.field);
    auto text = row.str(column_);
    if (!text && field_ == &Ev::app) text = kUnknownApp;
    if (!text) return;
    if (!texts_ || texts_->pool.size() > kMostTexts) {
      texts_.emplace(reader_.rules(), after_, reader_.projects());
    }
    if (!catches(texts_->pool.intern(*text))) return;
    const auto ev = clipped(texts_->reader.read(row), range);
    if (!ev.idle) add(ev);
  }

  void add(const Ev& ev) {
    preview_.caught.add(ev);
    const auto before = texts_->before.decide(ev);
    const auto after = texts_->after.decide(ev);
    if (!before.agrees(after)) {
      preview_.changed.add(ev);
      auto& total =
          moves_[{categories_.intern(before.category.view()),
                  categories_.intern(after.category.view()), before.project, after.project}];
      ++total.spans;
      total.seconds += ev.duration();
    } else if (before.manual()) {
      preview_.kept.add(ev);
    }
    auto& value = values_[(ev.*field_).hash()];
    if (value.spans++ == 0) value.span = ev.id;
    value.seconds += ev.duration();
    addPart(titles_, value.key, ev.title, ev);
    addPart(urls_, value.key, ev.url, ev);
  }

  static void addPart(Tally<PartTotal>& parts, uint64_t value, Text text, const Ev& ev) {
    if (!text) return;
    constexpr uint64_t kOdd = 0x9E3779B97F4A7C15;
    const auto known = parts.entries().size();
    auto& part = parts[value * kOdd ^ text.hash()];
    if (parts.entries().size() > known) {
      part.value = value;
      part.span = ev.id;
    }
    part.seconds += ev.duration();
  }

  void exemplify() {
    struct Largest {
      const ValueTotal* value;
      std::vector<const PartTotal*> titles;
      std::vector<const PartTotal*> urls;
    };
    std::vector<Largest> largest;
    std::vector<int64_t> spans;
    for (const auto* value : values_.bySeconds(kExamples)) {
      const auto ofIt = [&](const PartTotal& part) { return part.value == value->key; };
      largest.push_back({value, titles_.bySeconds(kShares, ofIt), urls_.bySeconds(kShares, ofIt)});
      spans.push_back(value->span);
      for (const auto* parts : {&largest.back().titles, &largest.back().urls}) {
        for (const auto* part : *parts) spans.push_back(part->span);
      }
    }
    std::unordered_map<int64_t, Ev> found;
    reader_.eachOf(spans, [&](const Ev& ev) { found.emplace(ev.id, ev); });
    for (const auto& [value, titles, urls] : largest) {
      const auto shares = [&](const std::vector<const PartTotal*>& parts, Text Ev::*text) {
        std::vector<TextShare> list;
        for (const auto* part : parts) {
          const auto shown = found[part->span].*text;
          if (shown) list.push_back({shown.str(), part->seconds});
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
  const Rule& rule_;
  Text Ev::*const field_;
  const std::vector<Rule> after_;
  PatternSearch pattern_;
  int column_ = -1;
  std::optional<Texts> texts_;

  RulePreview preview_;
  StringPool categories_;
  Tally<MoveTotal, MoveHash> moves_;
  Tally<ValueTotal> values_;
  Tally<PartTotal> titles_;
  Tally<PartTotal> urls_;
};

}  // namespace

RulePreview previewRule(Database& db, const Rule& rule, const TimeRange& range) {
  SpanReader reader(db);
  return Preview(reader, rule).over(range);
}

}  // namespace orvanta
