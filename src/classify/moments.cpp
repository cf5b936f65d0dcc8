#include "classify/moments.h"

#include <algorithm>
#include <utility>

#include "base/time_ranges.h"
#include "storage/ev.h"
#include "storage/overlap.h"

namespace orvanta {
namespace {

constexpr double kShortest = 1;  // seconds
// What a page or a script says of an instant may have lost its last digits on the way.
constexpr double kSameInstant = 0.001;
// Above 2^53 a script would round it.
constexpr auto kNewId = "(-1 - abs(random() % 4503599627370496))";

struct Row {
  int64_t id;
  TimeRange time;
};

class Filling {
 public:
  Filling(Transaction& change, const Moment& moment) : change_(change), moment_(moment) {}

  void fill(const TimeRange& range) {
    std::vector<TimeRange> taken;
    for (const auto& row : rows(range, "AND idle IS NOT 1"))
      taken.push_back(common(row.time, range));
    taken = joined(std::move(taken));
    for (const auto& time : taken) done_.taken += length(time);
    auto free = without(range, taken);
    for (const auto& row : rows(range, "AND idle=1")) split(row, free);
    for (const auto& gap : free) {
      if (length(gap) >= kShortest) add(gap);
    }
  }

  const FilledTime& done() const { return done_; }

 private:
  std::vector<Row> rows(const TimeRange& range, const char* kind) {
    const OverlapQuery query("id, start, end", kind);
    std::vector<Row> found;
    const auto take = [&](const Cursor& row) {
      const TimeRange time{row.dbl(1), row.dbl(2)};
      if (time.start < time.end) found.push_back({row.int_(0).value_or(0), time});
    };
    change_.each(query.longBefore, OverlapQuery::args(range), take);
    change_.each(query.fromShortlyBefore, OverlapQuery::args(range), take);
    return found;
  }

  // The parts of an idle row that are free become the moment's, and are not free any more.
  void split(const Row& row, std::vector<TimeRange>& free) {
    std::vector<TimeRange> parts;
    for (const auto& gap : free) {
      const auto part = common(gap, row.time);
      if (length(part) >= std::min(kShortest, length(row.time))) parts.push_back(part);
    }
    if (parts.empty()) return;
    for (const auto& rest : without(row.time, parts)) {
      if (length(rest) >= kSameInstant) copyIdle(row.id, rest);
    }
    become(row.id, parts.front());
    for (std::size_t i = 1; i < parts.size(); ++i) add(parts[i]);
    std::vector<TimeRange> left;
    for (const auto& gap : free) {
      for (const auto& rest : without(gap, parts)) left.push_back(rest);
    }
    free = std::move(left);
  }

  void copyIdle(int64_t id, const TimeRange& time) {
    change_.run(std::string("INSERT INTO events(id,start,end,app,bundle,title,url,domain,idle,"
                            "category,project_id) SELECT ") +
                    kNewId +
                    ",?,?,app,bundle,title,url,domain,1,category,project_id "
                    "FROM events WHERE id=?",
                {time.start, time.end, id});
  }

  void become(int64_t id, const TimeRange& time) {
    change_.run(
        "UPDATE events SET start=?, end=?, app=?, bundle=?, title=?, url=NULL, domain=NULL, "
        "idle=0, "
        "category=?, project_id=? WHERE id=?",
        {time.start, time.end, std::string(kManualApp), std::string(kManualBundle), moment_.title,
         moment_.category, moment_.project, id});
    count(time);
  }

  void add(const TimeRange& time) {
    change_.run(std::string("INSERT INTO events(id,start,end,app,bundle,title,idle,category,"
                            "project_id) VALUES (") +
                    kNewId + ",?,?,?,?,?,0,?,?)",
                {time.start, time.end, std::string(kManualApp), std::string(kManualBundle),
                 moment_.title, moment_.category, moment_.project});
    count(time);
  }

  void count(const TimeRange& time) {
    ++done_.spans;
    done_.seconds += length(time);
  }

  Transaction& change_;
  const Moment& moment_;
  FilledTime done_;
};

}  // namespace

FilledTime addMoment(Transaction& change, const std::vector<TimeRange>& ranges,
                     const Moment& moment) {
  Filling filling(change, moment);
  for (const auto& range : ranges) filling.fill(range);
  return filling.done();
}

}  // namespace orvanta
