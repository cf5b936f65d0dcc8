#include "reports/rounding.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace orvanta {
namespace {

constexpr int64_t kMinute = 60;
constexpr int64_t kHour = 3600;

int64_t nearest(int64_t number, int64_t step) {
  return (number * 2 + step) / (step * 2) * step;
}

}  // namespace

bool isRoundingStep(int64_t minutes) {
  constexpr std::array<int64_t, 6> kSteps{0, 5, 6, 10, 15, 30};
  return std::find(kSteps.begin(), kSteps.end(), minutes) != kSteps.end();
}

int64_t wholeSeconds(double seconds) {
  constexpr double kMost = 1e12;
  return seconds > 0 ? std::llround(std::min(seconds, kMost)) : 0;
}

int64_t rounded(int64_t seconds, const Rounding& rounding) {
  if (rounding.minutes == 0) return seconds;
  const auto step = rounding.minutes * kMinute;
  if (rounding.mode == RoundingMode::Nearest) return nearest(seconds, step);
  return (seconds + step - 1) / step * step;
}

std::vector<int64_t> printed(const std::vector<int64_t>& cells, int64_t unit) {
  std::vector<int64_t> list;
  int64_t exact = 0;
  int64_t shown = 0;
  for (const auto cell : cells) {
    exact += cell;
    const auto until = nearest(exact, unit);
    list.push_back(until - shown);
    shown = until;
  }
  return list;
}

RoundedRow roundRow(const std::vector<int64_t>& days, const std::vector<std::size_t>& columnOf,
                    std::size_t columns, const Rounding& rounding, HourUnit unit) {
  const bool byDay = rounding.scope == RoundingScope::Day;
  std::vector<int64_t> cells(columns);
  for (std::size_t day = 0; day < days.size(); ++day) {
    cells[columnOf[day]] += byDay ? rounded(days[day], rounding) : days[day];
  }
  RoundedRow row{printed(cells, secondsOf(unit)), 0};
  if (byDay || rounding.minutes == 0) {
    row.total = std::accumulate(row.cells.begin(), row.cells.end(), int64_t{0});
  } else {
    const auto all = std::accumulate(days.begin(), days.end(), int64_t{0});
    row.total = nearest(rounded(all, rounding), secondsOf(unit));
  }
  return row;
}

int64_t amountOf(int64_t seconds, int64_t centsPerHour) {
  constexpr int64_t kMost = 10'000'000'000;  // of spans that overlap without end
  return (std::min(seconds, kMost) * centsPerHour + kHour / 2) / kHour;
}

std::string inWords(const Rounding& rounding, HourUnit unit) {
  const auto* smallest = unit == HourUnit::Clock ? "la minute" : "le centième d’heure";
  if (rounding.minutes == 0) {
    return fmt::format(
        "Sans arrondi\u00a0: les cases sont à {} près et leur somme fait chaque total.", smallest);
  }
  const auto step =
      fmt::format("{}\u00a0min {}", rounding.minutes,
                  rounding.mode == RoundingMode::Up ? "supérieures" : "les plus proches");
  if (rounding.scope == RoundingScope::Total) {
    return fmt::format(
        "Total de chaque projet arrondi aux {}, et le total général est leur somme\u00a0; les "
        "cases et "
        "les totaux des colonnes ne sont pas arrondis.",
        step);
  }
  return fmt::format(
      "Temps de chaque projet arrondi chaque jour aux {}\u00a0; chaque total est la somme des "
      "cases "
      "affichées.",
      step);
}

}  // namespace orvanta
