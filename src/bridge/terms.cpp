#include "bridge/terms.h"

#include <algorithm>
#include <cmath>

#include "base/calendar.h"
#include "bridge/app_error.h"
#include "bridge/report_json.h"
#include "reports/french_text.h"

namespace orvanta {

namespace json = boost::json;

namespace {

std::optional<int64_t> amountIn(const Body& body, std::string_view key, int64_t most,
                                const char* problem) {
  const auto* value = body.find(key);
  if (!value || value->is_null()) return {};
  const auto amount = body.i(key);
  if (!amount || *amount < 0 || *amount > most) throw AppError(problem);
  return amount;
}

std::string currencyIn(const Body& body) {
  const auto currency = body.trimmed("currency").value_or("EUR");
  constexpr std::size_t kLetters = 3;
  const bool code =
      currency.size() == kLetters &&
      std::all_of(currency.begin(), currency.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
  if (!code) throw AppError("devise inconnue\u00a0: trois lettres, comme EUR");
  return currency;
}

template <class Enum>
std::optional<std::string> nameIn(const Body& body, std::string_view key) {
  const auto name = body.s(key);
  return name && parsed<Enum>(*name) ? name : std::nullopt;
}

}  // namespace

std::optional<ProjectTerms> termsIn(const Body& body) {
  const auto* value = body.find("terms");
  if (!value) return {};
  if (value->is_null()) return ProjectTerms();
  if (!value->is_object()) throw AppError("conditions illisibles");
  const Body terms(value->get_object());
  const auto rounding = terms.i("rounding");
  if (rounding && !isRoundingStep(*rounding)) {
    throw AppError("arrondi inconnu\u00a0: 0, 5, 6, 10, 15 ou 30 minutes");
  }
  const auto from = terms.s("budget_from");
  if (from && !Date::parse(*from)) throw AppError("date du budget invalide");
  return ProjectTerms{.currency = currencyIn(terms),
                      .rate = amountIn(terms, "rate", kMostCentsPerHour, "tarif invalide"),
                      .billable = terms.b("billable").value_or(true),
                      .budget = amountIn(terms, "budget", kMostBudget, "budget d’heures invalide"),
                      .budgetFrom = from ? std::optional(Date::parse(*from)->iso()) : std::nullopt,
                      .rounding = rounding,
                      .roundingMode = nameIn<RoundingMode>(terms, "rounding_mode"),
                      .roundingScope = nameIn<RoundingScope>(terms, "rounding_scope")};
}

json::object termsJson(const ProjectTerms& terms) {
  return {{"currency", terms.currency},
          {"rate", jsonOrNull(terms.rate)},
          {"rate_text", terms.rate ? json::value(moneyText(*terms.rate, terms.currency) + "/h")
                                   : json::value(nullptr)},
          {"billable", terms.billable},
          {"budget", jsonOrNull(terms.budget)},
          {"budget_from", jsonOrNull(terms.budgetFrom)},
          {"rounding", jsonOrNull(terms.rounding)},
          {"rounding_mode", jsonOrNull(terms.roundingMode)},
          {"rounding_scope", jsonOrNull(terms.roundingScope)}};
}

json::object hoursJson(const ProjectHours& hours, const ProjectTerms& terms) {
  json::object object{{"project_id", hours.project},
                      {"this_month", hours.thisMonth},
                      {"last_month", hours.lastMonth},
                      {"per_week", hours.perWeek},
                      {"budget", jsonOrNull(terms.budget)},
                      {"used", nullptr},
                      {"used_percent", nullptr},
                      {"left", nullptr},
                      {"runs_out", nullptr}};
  if (!hours.left || !terms.budget) return object;
  object["used"] = hours.used;
  object["left"] = *hours.left;
  if (*terms.budget > 0) {
    object["used_percent"] = std::llround(hours.used / static_cast<double>(*terms.budget) * 100);
  }
  if (hours.runsOut) object["runs_out"] = hours.runsOut->iso();
  return object;
}

}  // namespace orvanta
