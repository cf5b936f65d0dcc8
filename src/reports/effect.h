// What a change does to the recorded activity: what counts as something else since.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/calendar.h"
#include "classify/rule_book.h"
#include "reports/text_shares.h"
#include "storage/transaction.h"

namespace orvanta {

/// Idle spans are no part of it. Category and project are two things: a span of which either
/// changes has changed. Nets are what there is more of, or, below 0, less.
struct Effect {
  struct CategoryNet {
    std::string category;
    double seconds = 0;
  };
  struct ProjectNet {
    int64_t id = 0;
    std::string name;
    std::string color;
    double seconds = 0;
  };
  /// Spans that changed in one and the same way. Those that are gone count as no category.
  struct Move {
    std::optional<std::string> fromCategory;
    std::optional<std::string> toCategory;
    std::optional<int64_t> fromProject;
    std::optional<int64_t> toProject;
    SpanCount count;
  };
  struct MonthMoved {
    int month = 0;  ///< as in ActivityTime
    double seconds = 0;
  };
  struct Example {
    std::string text;                  ///< a domain, or an application where there is none
    std::string field;                 ///< "domain" or "app"
    std::optional<std::string> title;  ///< the one with the most time
    SpanCount count;
  };

  SpanCount changed;
  std::optional<double> since;          ///< start of the first that changed, Unix seconds
  std::vector<CategoryNet> categories;  ///< the largest differences first
  std::vector<ProjectNet> projects;     ///< the same; those that there are, or were before
  std::vector<Move> moves;              ///< the 8 with the most time
  std::vector<MonthMoved> months;       ///< what changed, by month of its start, ascending
  std::vector<Example> examples;        ///< the 5 with the most time
  bool whole = true;                    ///< false when not all spans could be read
};

/// One set of rules and projects, and the one in its place.
struct BookChange {
  std::shared_ptr<const RuleBook> before;
  std::shared_ptr<const RuleBook> after;
};

/// What else than the effect is found on the way.
struct BookEffect : Effect {
  /// To which projects what is touched by the difference of the books counts before.
  std::vector<int64_t> projectsBefore;
};

/// The effect of each of these on all that is recorded. Looks once at every activity, whatever
/// their number, and classifies only what has a pattern, keyword or project in which two books
/// differ. Any thread; throws nothing.
std::vector<BookEffect> effectsOf(Database& db, const Calendar& calendar,
                                  const std::vector<BookChange>& changes);

/// The effect of a change that is made in a transaction: of other rules and projects on all that is
/// recorded, and of what it does to spans themselves. Where it touches neither rule nor project,
/// only those spans are looked at.
class ChangeEffect {
 public:
  /// In the open transaction, after its last write, with its changeset. The thread holds a Snapshot
  /// of what was before.
  ChangeEffect(Transaction& change, const std::string& changeset, const Calendar& calendar);
  ~ChangeEffect();
  ChangeEffect(const ChangeEffect&) = delete;
  ChangeEffect& operator=(const ChangeEffect&) = delete;

  /// To be called once, in the same Snapshot; the transaction may be over, stored or not.
  Effect effect();

 private:
  class Measuring;
  std::unique_ptr<Measuring> measuring_;
};

}  // namespace orvanta
