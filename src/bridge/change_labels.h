// What a change by hand is called in the list of changes, in French.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/calendar.h"
#include "storage/category.h"

namespace orvanta::labels {

/// For the user, in French.
std::string_view nameOf(Category category);

/// Time given to a category and a project's name, or to neither: "Travail · Thèse : 3 activités".
std::string assigned(const std::optional<std::string>& category,
                     const std::optional<std::string>& project, int64_t spans);
/// The same of a range: "Travail : 20/11/2026, 14:00 – 15:30".
std::string assigned(const std::optional<std::string>& category,
                     const std::optional<std::string>& project, const TimeRange& range,
                     const Calendar& calendar);
/// Moments added by hand: "Ajout · Travail : 20/11/2026, 14:00 – 15:30", or how many ranges.
std::string added(const std::optional<std::string>& category,
                  const std::optional<std::string>& project, const std::vector<TimeRange>& ranges,
                  const Calendar& calendar);
/// One of them, with its time of now: "Moment modifié : 20/11/2026, 14:00 – 15:30".
std::string momentChanged(const TimeRange& range, const Calendar& calendar);
/// Absences that stay what they are: "Absence ignorée : 20/11/2026, 12:00 – 13:00".
std::string skipped(const std::vector<TimeRange>& ranges, const Calendar& calendar);
std::string projectSaved(std::string_view name);
/// Without a name for one that was gone already, yet spans or rules belonged to.
std::string projectDeleted(std::string_view name);
std::string projectArchived(std::string_view name);
/// Of a goal in words.
std::string goalSaved(std::string_view goal);
std::string goalDeleted(std::string_view goal);
std::string ruleSaved(std::string_view pattern);
std::string ruleDeleted(std::string_view pattern);
std::string defaultsRestored(int rules);
/// Time deleted for good: "Suppression : 3 activités", or of a range.
std::string erased(int64_t spans);
std::string erased(const TimeRange& range, const Calendar& calendar);
/// Only what they show was erased.
std::string blanked(int64_t spans);

std::string imported(std::string_view file, int64_t spans);

/// What the user knows a setting as; "" for one that is no choice of taste but a state of the
/// program.
std::string_view nameOfSetting(std::string_view key);
std::string settings(const std::vector<std::string_view>& keys);

/// A label as it is quoted in a sentence, without guillemets of its own.
std::string inSentence(std::string_view label);

}  // namespace orvanta::labels
