#include "storage/salvage_sentence.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace orvanta {
namespace {

const SalvageReport::Table* find(const SalvageReport& report, std::string_view name) {
  const auto found = std::find_if(report.tables.begin(), report.tables.end(),
                                  [&](const auto& table) { return table.name == name; });
  return found == report.tables.end() ? nullptr : &*found;
}

int64_t readFrom(const SalvageReport& report, std::string_view name) {
  const auto* table = find(report, name);
  return table ? table->read : 0;
}

std::string counted(int64_t number, std::string_view one, std::string_view many) {
  return fmt::format("{} {}", number, number < 2 ? one : many);
}

std::string activities(int64_t number) {
  return counted(number, "activité", "activités");
}

std::string dateInWords(double instant, const Calendar& calendar) {
  const auto date = calendar.dateOf(instant);
  return fmt::format("{:02}/{:02}/{:04}", date.day, date.month, date.year);
}

std::string lostInWords(const SalvageReport& report, const Calendar& calendar) {
  if (report.spansLost == 0) return "il peut en manquer";
  const auto verb = report.spansLost < 2 ? "est perdue" : "sont perdues";
  const auto first = dateInWords(report.lostTime.front().start, calendar);
  const auto last = dateInWords(report.lostTime.back().end, calendar);
  const auto when =
      first == last ? "du " + first : fmt::format("entre le {} et le {}", first, last);
  return fmt::format("au moins {} {} ({})", report.spansLost, verb, when);
}

std::string spansInWords(const SalvageReport& report, const SalvageReport::Table& spans,
                         const Calendar& calendar, std::optional<double> backupTime) {
  if (spans.whole) {
    return fmt::format("Toutes les activités ont pu être lues ({})", spans.read);
  }
  auto text = spans.read == 0
                  ? std::string("Aucune activité n’a pu être relue dans le fichier abîmé")
                  : fmt::format("{} {} pu être {} dans le fichier abîmé", activities(spans.read),
                                spans.read < 2 ? "a" : "ont", spans.read < 2 ? "relue" : "relues");
  if (spans.fromBackup > 0) {
    text += fmt::format(", {} {} de la sauvegarde", spans.fromBackup,
                        spans.fromBackup < 2 ? "reprise" : "reprises");
    if (backupTime) text += " du " + dateInWords(*backupTime, calendar);
  }
  return text + " ; " + lostInWords(report, calendar);
}

std::string otherLosses(const SalvageReport& report) {
  std::vector<std::string> missing;
  for (const auto& [table, words] : {std::pair("projects", "des projets"),
                                     {"rules", "des règles"},
                                     {"settings", "des réglages"}}) {
    const auto* found = find(report, table);
    if (found && !found->whole) missing.emplace_back(words);
  }
  if (missing.empty()) return {};
  std::string text = " Il peut manquer aussi ";
  for (std::size_t i = 0; i < missing.size(); ++i) {
    if (i > 0) text += i + 1 == missing.size() ? " et " : ", ";
    text += missing[i];
  }
  return text + ".";
}

}  // namespace

std::string salvageSentence(const SalvageReport& report, const Calendar& calendar,
                            std::optional<double> backupTime) {
  const auto* spans = find(report, "events");
  if (report.whole() || !spans) {
    return fmt::format("Tout ce que contient le fichier a pu être lu : {}, {} et {}.",
                       activities(readFrom(report, "events")),
                       counted(readFrom(report, "projects"), "projet", "projets"),
                       counted(readFrom(report, "rules"), "règle", "règles"));
  }
  auto text = spansInWords(report, *spans, calendar, backupTime) + ".";
  if (report.logCut) text += " Ce qui a été enregistré en dernier peut manquer.";
  return text + otherLosses(report);
}

}  // namespace orvanta
