#include "app/period_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "base/display_text.h"
#include "bridge/change_labels.h"
#include "reports/french_text.h"

namespace orvanta {
namespace {

constexpr std::size_t kMost = 10;
constexpr std::size_t kLongestName = 80;
constexpr auto kColon = "\u00a0: ";

std::string shown(const std::string& name) {
  return oneLine(name.empty() ? "Sans nom" : name, kLongestName);
}

std::string categoryName(const std::string& category) {
  const auto ours = parsed<Category>(category);
  return ours ? std::string(labels::nameOf(*ours)) : shown(category);
}

std::string clockOf(double instant, const Calendar& calendar) {
  constexpr int64_t kDay = 86400;
  const auto wall = calendar.wallSeconds(instant);
  return hoursInWords(static_cast<double>((wall - floorDivide(wall, kDay) * kDay) / 60 * 60));
}

class Text {
 public:
  explicit Text(const PeriodReport& report) : report_(report) {}

  void line(const std::string& text) { text_ += text + ".\n"; }
  void heading(const std::string& text) { text_ += "\n" + text + "\n"; }

  // The largest of a list, and what the rest comes to.
  template <class List, class NameOf>
  void shares(const char* title, const List& list, const NameOf& nameOf, PeriodReport::Rest rest) {
    if (list.empty()) return;
    heading(title);
    for (std::size_t i = 0; i < list.size(); ++i) {
      if (i < kMost) {
        share(nameOf(list[i]), list[i].seconds);
      } else {
        ++rest.count;
        rest.seconds += list[i].seconds;
      }
    }
    if (rest.count > 0) share(fmt::format("{} de plus", rest.count), rest.seconds);
  }

  void share(const std::string& name, double seconds) {
    auto text = "  " + name + kColon + hoursInWords(seconds);
    if (report_.active > 0) {
      const auto percent = std::llround(seconds / report_.active * 100);
      text += percent > 0 ? fmt::format(", {}\u00a0%", percent) : ", moins de 1\u00a0%";
    }
    line(text);
  }

  std::string take() { return std::move(text_); }

 private:
  const PeriodReport& report_;
  std::string text_;
};

void addSums(Text& text, const PeriodReport& report, const Calendar& calendar) {
  const auto days = report.daysActive;
  text.line(fmt::format("Temps actif{}{}", kColon, hoursInWords(report.active)) +
            (days > 1 ? fmt::format(", sur {} jours, {} par jour", days,
                                    hoursInWords(report.active / static_cast<double>(days)))
                      : ""));
  if (report.extent.first && kindOf(report.dates) == PeriodKind::Day) {
    text.line(fmt::format("De {} à {}", clockOf(*report.extent.first, calendar),
                          clockOf(*report.extent.last, calendar)));
  }
  text.line("Pauses" + std::string(kColon) + hoursInWords(report.pauses));
  if (report.bestDay && days > 1) {
    text.line(fmt::format("Jour le plus long{}{}, {}", kColon, longDate(report.bestDay->date),
                          hoursInWords(report.bestDay->active)));
  }
  if (!report.before) return;
  const double change = report.active - report.before->active;
  const auto name = nameOf(report.before->dates);
  text.line(fmt::format("{}{}{}{}, soit {} de {}", name, report.running ? ", au même point" : "",
                        kColon, hoursInWords(report.before->active), hoursInWords(std::abs(change)),
                        change < 0 ? "moins" : "plus"));
}

void addBuckets(Text& text, const PeriodReport& report) {
  if (report.buckets.size() < 2) return;
  text.heading(report.by == PeriodBy::Day    ? "Jour par jour"
               : report.by == PeriodBy::Week ? "Semaine par semaine"
                                             : "Mois par mois");
  for (const auto& bucket : report.buckets) {
    if (bucket.active > 0) {
      text.line("  " + nameOf(bucket.dates) + kColon + hoursInWords(bucket.active));
    }
  }
}

}  // namespace

std::string periodText(const PeriodReport& report, const Calendar& calendar) {
  Text text(report);
  const auto name = nameOf(report.dates);
  addSums(text, report, calendar);
  const auto named = [](const auto& sum) { return shown(sum.name); };
  auto categories = report.byCategory;
  std::stable_sort(categories.begin(), categories.end(),
                   [](const auto& a, const auto& b) { return a.seconds > b.seconds; });
  text.shares("Catégories", categories,
              [](const CategorySum& sum) { return categoryName(sum.category); }, {});
  text.shares("Projets", report.byProject, named, {});
  text.shares("Clients", report.byClient, [](const ClientSum& sum) { return shown(sum.client); },
              {});
  text.shares("Applications", report.apps, named, report.otherApps);
  text.shares("Sites", report.domains, named, report.otherDomains);
  addBuckets(text, report);
  return name + "\n\n" + text.take();
}

}  // namespace orvanta
