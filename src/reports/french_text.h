// Dates, durations and sums of money as French readers expect them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "reports/date_range.h"

namespace orvanta {

/// "jeudi 1er octobre 2026".
std::string longDate(const Date& date);
/// "01/10/2026".
std::string shortDate(const Date& date);
/// "octobre 2026", "semaine 43, du 19 au 25 octobre 2026", "4e trimestre 2026", "2026", "du 1er au
/// 15 octobre 2026", "jeudi 1er octobre 2026".
std::string nameOf(const DateRange& range);

/// "12 h 05", "45 min"; to the nearest minute.
std::string hoursInWords(double seconds);
/// "12:05"; to the nearest minute.
std::string clockHours(int64_t seconds);
/// "12,08"; to the nearest hundredth.
std::string decimalHours(int64_t seconds, char point = ',');
/// "1 234,50 €"; a currency other than the euro by its code.
std::string moneyText(int64_t cents, std::string_view currency);
/// "1234,50".
std::string plainMoney(int64_t cents, char point = ',');

}  // namespace orvanta
