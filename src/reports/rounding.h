// Hours as a bill counts them, in whole numbers: what is printed adds up.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/enum_text.h"

namespace orvanta {

enum class RoundingMode { Nearest, Up };
template <>
inline constexpr std::array<std::string_view, 2> kTexts<RoundingMode>{"nearest", "up"};

enum class RoundingScope { Day, Total };
template <>
inline constexpr std::array<std::string_view, 2> kTexts<RoundingScope>{"day", "total"};

/// How the time on a project is rounded: what was done each day, or the whole of it.
struct Rounding {
  int minutes = 0;  ///< 5, 6, 10, 15 or 30; 0 for none
  RoundingMode mode = RoundingMode::Nearest;
  RoundingScope scope = RoundingScope::Day;

  friend bool operator==(const Rounding&, const Rounding&) = default;
};

bool isRoundingStep(int64_t minutes);

/// In which hours are printed.
enum class HourUnit { Clock, Decimal };
template <>
inline constexpr std::array<std::string_view, 2> kTexts<HourUnit>{"hm", "decimal"};

/// A minute, or a hundredth of an hour: the smallest that is printed.
constexpr int64_t secondsOf(HourUnit unit) {
  return unit == HourUnit::Clock ? 60 : 36;
}

/// Whole seconds, halves up; what is no time is none.
int64_t wholeSeconds(double seconds);

/// A stretch of time to its step, of no less than a second; halves up. Up from a second beyond it.
int64_t rounded(int64_t seconds, const Rounding& rounding);

/// The cells as they are printed: each a multiple of `unit` less than one away from what it was,
/// and such that they make what all of them are together, to the nearest unit.
std::vector<int64_t> printed(const std::vector<int64_t>& cells, int64_t unit);

/// A row of a sheet, in seconds.
struct RoundedRow {
  std::vector<int64_t> cells;
  int64_t total = 0;
};

/// Rounds the time of days that stand in columns, of which there are `columns`. By day, a cell is
/// the sum of its rounded days and the total is the sum of the cells as printed. On the total, the
/// cells are as printed without rounding, and only the total is rounded.
RoundedRow roundRow(const std::vector<int64_t>& days, const std::vector<std::size_t>& columnOf,
                    std::size_t columns, const Rounding& rounding, HourUnit unit);

/// Cents for so many seconds at so many cents an hour; halves up. Of three centuries of time at
/// most, at no more than kMostCentsPerHour.
int64_t amountOf(int64_t seconds, int64_t centsPerHour);

/// The rule as the sheet states it, in French: one sentence or two.
std::string inWords(const Rounding& rounding, HourUnit unit);

}  // namespace orvanta
