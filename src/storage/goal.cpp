#include "storage/goal.h"

namespace orvanta {
namespace {

std::optional<Goal> read(const Cursor& row) {
  enum { kId, kSubject, kName, kProject, kPeriod, kBound, kSeconds, kCreated };
  const auto subject = parsed<GoalSubject>(row.str(kSubject).value_or(""));
  const auto period = parsed<GoalPeriod>(row.str(kPeriod).value_or(""));
  const auto bound = parsed<GoalBound>(row.str(kBound).value_or(""));
  const auto seconds = row.int_(kSeconds).value_or(0);
  if (!subject || !period || !bound || seconds <= 0) return {};
  return Goal{.id = row.int_(kId).value_or(0),
              .subject = *subject,
              .name = std::string(row.str(kName).value_or("")),
              .project = row.int_(kProject),
              .period = *period,
              .bound = *bound,
              .seconds = seconds,
              .created = row.dbl(kCreated)};
}

}  // namespace

std::optional<std::vector<Goal>> loadGoals(Database& db) {
  std::vector<Goal> goals;
  const bool all = db.each(
      "SELECT id, subject, name, project_id, period, bound, seconds, created FROM goals "
      "ORDER BY id",
      {}, [&](const Cursor& row) {
        if (auto goal = read(row)) goals.push_back(std::move(*goal));
      });
  return all ? std::optional(std::move(goals)) : std::nullopt;
}

int64_t saveGoal(Transaction& change, const Goal& goal) {
  change.run(
      "INSERT INTO goals(id, subject, name, project_id, period, bound, seconds, created) "
      "VALUES (?1,?2,?3,?4,?5,?6,?7,?8) ON CONFLICT(id) DO UPDATE SET subject=?2, name=?3, "
      "project_id=?4, period=?5, bound=?6, seconds=?7",
      {goal.id, textOf(goal.subject), goal.name, goal.project, textOf(goal.period),
       textOf(goal.bound), goal.seconds, goal.created});
  return goal.id;
}

void deleteGoal(Transaction& change, int64_t id) {
  change.run("DELETE FROM goals WHERE id=?", {id});
}

int64_t toldOfGoal(Database& db, int64_t goal, const std::string& day) {
  int64_t percent = 0;
  db.each("SELECT percent FROM goal_told WHERE goal_id=? AND day=?", {goal, day},
          [&](const Cursor& row) { percent = row.int_(0).value_or(0); });
  return percent;
}

Written setToldOfGoal(Database& db, int64_t goal, const std::string& day, int64_t percent,
                      const std::string& oldest) {
  Transaction change(db);
  change.run("DELETE FROM goal_told WHERE day < ?", {oldest});
  change.run("INSERT OR REPLACE INTO goal_told(goal_id, day, percent) VALUES (?,?,?)",
             {goal, day, percent});
  return change.commit();
}

}  // namespace orvanta
