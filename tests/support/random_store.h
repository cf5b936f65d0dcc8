// Stores filled at random, with everything that a real one should not hold, yet may.
#pragma once

#include <algorithm>
#include <limits>
#include <random>
#include <vector>

#include "support/temp_store.h"

namespace orvanta::test {

/// Rolls the same after each start from the same seed.
class Dice {
 public:
  explicit Dice(unsigned seed) : random_(seed) {}

  int upTo(int most) { return static_cast<int>(random_() % (static_cast<unsigned>(most) + 1)); }
  bool oneIn(int chances) { return upTo(chances - 1) == 0; }
  template <class List>
  const auto& oneOf(const List& list) {
    return *(std::begin(list) + upTo(static_cast<int>(std::size(list)) - 1));
  }
  template <class Item>
  void shuffle(std::vector<Item>& list) {
    for (int i = static_cast<int>(list.size()) - 1; i > 0; --i) std::swap(list[i], list[upTo(i)]);
  }

 private:
  std::mt19937 random_;  // its numbers are the same everywhere, those of distributions are not
};

inline const Value kNull{};

// Of the projects 1 to 6 some are missing: deleted.
inline void addRandomProjects(TestDatabase& db, Dice& dice) {
  const char* names[] = {"Été", "abc", "Zoé", "É", "client", "b"};
  const Value categories[] = {"travail", "travail", "loisir", "étrange", "", kNull};
  const Value keywords[] = {kNull, "", "zz,été plage", "Mail", "com, x", "jeu video.com"};
  const Value archived[] = {0, 0, 1, 2, kNull};
  for (int id = 1; id <= 6; ++id) {
    if (dice.oneIn(3)) continue;
    db.run("INSERT INTO projects(id,name,color,category,archived,keywords) VALUES (?,?,?,?,?,?)",
           {id, names[id - 1], dice.oneIn(4) ? kNull : Value("#12345" + std::to_string(id)),
            dice.oneOf(categories), dice.oneOf(archived), dice.oneOf(keywords)});
  }
}

inline void addRandomRules(TestDatabase& db, Dice& dice) {
  const char* fields[] = {"app", "domain", "title", "url", "bundle", ""};
  const char* patterns[] = {"a", "AB", "ÉTÉ", "video", "video.com", "mail", "", "ABC"};
  const Value categories[] = {kNull, kNull, "travail", "loisir", "autre", "étrange", ""};
  // Also what only other programs write.
  const Value priorities[] = {-20, -10, 0, 0, 0, 5, kNull, -0.5, 0.5, "bas", "haut"};
  for (int count = dice.upTo(6); count > 0; --count) {
    db.run("INSERT INTO rules(field,pattern,category,project_id,priority) VALUES (?,?,?,?,?)",
           {dice.oneOf(fields), dice.oneOf(patterns), dice.oneOf(categories),
            dice.oneIn(3) ? Value(1 + dice.upTo(6)) : kNull, dice.oneOf(priorities)});
  }
}

/// One span after the other from `start` on, with lapses of up to `spread` seconds, some spans
/// before the one before and some up to one of `edges`; stored in no order. All times are whole
/// eighths of seconds, so that sums are exact whatever their order.
inline void addRandomSpans(TestDatabase& db, Dice& dice, double start, int spread,
                           const std::vector<double>& edges) {
  const double gaps[] = {0, 0, 0, 0, 0.5, 2.875, 3, 3.125, 4.875, 5, 5.125, -2, -700};
  const double lengths[] = {0,    0.5, 0.875,  1,     2,  9,       20,    58,   59.875,
                            60.5, 900, 3600.5, 13999, -5, -1000.5, 20000, 90000};
  const Value apps[] = {"Abc", "Abc", "Mail|e", "Firefox", "", kNull};
  const Value domains[] = {kNull, kNull, kNull, "", "video.com", "été.fr"};
  const Value titles[] = {kNull, kNull, "", "Été plage", "mail", "<b>\"x'; y"};
  const Value urls[] = {kNull, "https://video.com/a", "abc"};
  const Value idle[] = {0, 0, 0, 0, 0, 0, 1, 1.5, 2, "1", "oui", kNull};
  const Value categories[] = {"travail", "loisir", "autre", "nonclasse", "étrange", "", "inactif"};
  struct Activity {
    Value app, domain, title, url, idle, category, project;
  };
  Activity activity{"Abc", kNull, kNull, kNull, 0, kNull, kNull};
  std::vector<Args> rows;
  for (int count = dice.upTo(50); count > 0; --count) {
    start += dice.oneOf(gaps);
    if (dice.oneIn(3)) start += dice.upTo(spread);
    if (dice.oneIn(15)) start = dice.oneOf(edges);
    double end = start + dice.oneOf(lengths);
    if (dice.oneIn(15)) end = dice.oneOf(edges);
    if (dice.oneIn(200)) end = std::numeric_limits<double>::infinity();
    if (dice.oneIn(3)) {
      activity = {dice.oneIn(3) ? Value("App " + std::to_string(dice.upTo(12))) : dice.oneOf(apps),
                  dice.oneOf(domains),
                  dice.oneOf(titles),
                  dice.oneOf(urls),
                  dice.oneOf(idle),
                  dice.oneIn(3) ? dice.oneOf(categories) : kNull,
                  dice.oneIn(3) ? Value(dice.upTo(7) - 1) : kNull};
    }
    if (dice.oneIn(3)) activity.title = dice.oneOf(titles);
    rows.push_back({start, end, activity.app, activity.domain, activity.title, activity.url,
                    activity.idle, activity.category, activity.project});
    // Mostly on from its end; sometimes the next one overlaps it.
    if (end > start && end - start < 4000 && !dice.oneIn(10)) start = end;
  }
  dice.shuffle(rows);
  for (const auto& row : rows) {
    db.run(
        "INSERT INTO events(start,end,app,domain,title,url,idle,category,project_id) "
        "VALUES (?,?,?,?,?,?,?,?,?)",
        row);
  }
}

/// Replaces what `db` holds.
inline void fillAtRandom(TestDatabase& db, Dice& dice, double start, int spread,
                         const std::vector<double>& edges) {
  db.exec("BEGIN; DELETE FROM events; DELETE FROM rules; DELETE FROM projects");
  addRandomProjects(db, dice);
  addRandomRules(db, dice);
  addRandomSpans(db, dice, start, spread, edges);
  db.exec("COMMIT");
}

}  // namespace orvanta::test
