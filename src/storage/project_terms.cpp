#include "storage/project_terms.h"

namespace orvanta {
namespace {

std::optional<std::string> textOf(const Cursor& row, int column) {
  const auto text = row.str(column);
  return text ? std::optional(std::string(*text)) : std::nullopt;
}

// Another program may have written anything.
std::optional<int64_t> amountOf(const Cursor& row, int column, int64_t most) {
  const auto amount = row.int_(column);
  return amount && *amount >= 0 && *amount <= most ? amount : std::nullopt;
}

}  // namespace

TermsByProject loadTerms(Database& db, bool* whole) {
  enum { kProject, kCurrency, kRate, kBillable, kBudget, kBudgetFrom, kRounding, kMode, kScope };
  TermsByProject terms;
  const bool all = db.scan(
      "SELECT project_id, currency, rate, billable, budget, budget_from, rounding, rounding_mode, "
      "rounding_scope FROM project_terms",
      {}, [&](const Cursor& row) {
        terms[row.int_(kProject).value_or(0)] = {.currency = textOf(row, kCurrency).value_or("EUR"),
                                                 .rate = amountOf(row, kRate, kMostCentsPerHour),
                                                 .billable = row.int_(kBillable).value_or(1) != 0,
                                                 .budget = amountOf(row, kBudget, kMostBudget),
                                                 .budgetFrom = textOf(row, kBudgetFrom),
                                                 .rounding = row.int_(kRounding),
                                                 .roundingMode = textOf(row, kMode),
                                                 .roundingScope = textOf(row, kScope)};
      });
  if (!all && whole) *whole = false;
  return terms;
}

void saveTerms(Transaction& change, int64_t project, const ProjectTerms& terms) {
  change.run(
      "INSERT OR REPLACE INTO project_terms(project_id, currency, rate, billable, budget, "
      "budget_from, rounding, rounding_mode, rounding_scope) VALUES (?,?,?,?,?,?,?,?,?)",
      {project, terms.currency, terms.rate, terms.billable, terms.budget, terms.budgetFrom,
       terms.rounding, terms.roundingMode, terms.roundingScope});
}

void dropTerms(Transaction& change, int64_t project) {
  change.run("DELETE FROM project_terms WHERE project_id=?", {project});
}

}  // namespace orvanta
