// Adds up an effect, see Effect.
#pragma once

#include <array>
#include <boost/unordered/unordered_flat_map.hpp>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "classify/classifier.h"
#include "reports/effect.h"
#include "reports/moves.h"
#include "storage/activities.h"

namespace orvanta {

/// What some time counts as; of no category where there is none.
struct Counted {
  Text category;
  std::optional<int64_t> project;

  Counted() = default;
  explicit Counted(const Decision& decision)
      : category(decision.categoryBy == Decision::By::Idle ? Text() : decision.category),
        project(decision.project) {}
  friend bool operator==(const Counted&, const Counted&) = default;
};

/// Keeps a few numbers for each title, not the titles. What is added may be taken away again, to be
/// added as something else.
class EffectSums {
 public:
  /// Where the time of one activity is added.
  struct Place {
    uint32_t move, label, title;  // kNone: of no title
    bool domain;
  };

  enum class What {
    Activity,  ///< whole
    Taken,     ///< spans of what was added as activity, to be added apart
    Apart
  };

  /// Of what is like `ev`, counted as `from` and counts as `to`; absent where that is the same.
  std::optional<Place> placeOf(const Counted& from, const Counted& to, const Ev& ev);
  void add(const Place& place, const ActivityTime& time, What what);

  /// The first month in which something changed, where it is not known when: the first span of its
  /// activity may have been taken away.
  std::optional<int> unsureMonth() const;
  /// The start of the first span of that month that changed, of those that were not taken away.
  void setFirst(int month, double start) { months_[month].first = start; }

  /// Title of a span by its id.
  using TitleOf = std::function<std::optional<std::string>(int64_t span)>;
  Effect effect(const Projects& before, const Projects& after, const TitleOf& titleOf) const;

 private:
  struct Month {
    double seconds = 0;
    int64_t spans = 0;
    double first = kNever;  // of activity
    double apart = kNever;  // of what was added apart
    bool taken = false;
  };
  static constexpr double kNever = std::numeric_limits<double>::infinity();
  struct LabelTotal {
    Text key;
    double seconds = 0;
    int64_t spans = 0;
  };
  struct TitleTotal {
    double seconds = 0;
    int64_t spans = 0;
    Text label;  // that it is under
    int64_t example = 0;
  };
  // What carries a domain, or an application and no domain.
  struct Labels {
    Tally<LabelTotal, TextHash> totals;
    std::vector<TitleTotal> titles;
    boost::unordered_flat_map<uint64_t, uint32_t> places;  // of titles, by hash
  };
  static constexpr uint32_t kNone = UINT32_MAX;

  void addMoves(Effect& effect) const;
  void addNets(Effect& effect, const Projects& before, const Projects& after) const;
  void addExamples(Effect& effect, const TitleOf& titleOf) const;

  MoveTally moves_;
  std::map<int, Month> months_;
  std::pair<int, Month*> latest_;  // of these
  std::array<Labels, 2> labels_;   // of applications and of domains
};

}  // namespace orvanta
