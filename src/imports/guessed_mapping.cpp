#include <array>
#include <utility>

#include "base/text.h"
#include "imports/read_import.h"

namespace orvanta {
namespace {

using Known = std::pair<Column, std::string_view>;

// Names without accents, capitals and punctuation; of two that fit a column the first one here.
constexpr Known kKnown[]{
    {Column::Start, "start"},
    {Column::Start, "debut"},
    {Column::Start, "start time"},
    {Column::Start, "heure de debut"},
    {Column::Start, "heure debut"},
    {Column::Start, "started at"},
    {Column::Start, "started"},
    {Column::Start, "begin"},
    {Column::Start, "from"},
    {Column::Start, "de"},
    {Column::Start, "timestamp"},
    {Column::Start, "check in"},
    {Column::StartDate, "start date"},
    {Column::StartDate, "date de debut"},
    {Column::StartDate, "date debut"},
    {Column::StartDate, "date"},
    {Column::StartDate, "jour"},
    {Column::StartDate, "day"},
    {Column::End, "end"},
    {Column::End, "fin"},
    {Column::End, "end time"},
    {Column::End, "heure de fin"},
    {Column::End, "heure fin"},
    {Column::End, "ended at"},
    {Column::End, "ended"},
    {Column::End, "stop"},
    {Column::End, "to"},
    {Column::End, "a"},
    {Column::End, "check out"},
    {Column::EndDate, "end date"},
    {Column::EndDate, "date de fin"},
    {Column::EndDate, "date fin"},
    {Column::Duration, "duration"},
    {Column::Duration, "duree"},
    {Column::Duration, "seconds"},
    {Column::Duration, "secondes"},
    {Column::Duration, "minutes"},
    {Column::Duration, "hours"},
    {Column::Duration, "heures"},
    {Column::Duration, "time spent"},
    {Column::App, "app"},
    {Column::App, "application"},
    {Column::App, "logiciel"},
    {Column::App, "program"},
    {Column::Title, "title"},
    {Column::Title, "titre"},
    {Column::Title, "description"},
    {Column::Title, "note"},
    {Column::Title, "notes"},
    {Column::Title, "summary"},
    {Column::Title, "task"},
    {Column::Title, "tache"},
    {Column::Title, "activity"},
    {Column::Title, "activite"},
    {Column::Title, "name"},
    {Column::Title, "nom"},
    {Column::Url, "url"},
    {Column::Url, "adresse"},
    {Column::Url, "link"},
    {Column::Domain, "domain"},
    {Column::Domain, "domaine"},
    {Column::Domain, "site"},
    {Column::Category, "category"},
    {Column::Category, "categorie"},
    {Column::Project, "project"},
    {Column::Project, "projet"},
};

std::string plainName(std::string_view name) {
  std::string plain;
  for (const auto& word : words(lowerCase(withoutAccents(name)))) {
    plain += (plain.empty() ? "" : " ") + word;
  }
  return plain;
}

}  // namespace

Mapping guessedMapping(const std::vector<std::string>& names) {
  std::vector<std::string> plain;
  for (const auto& name : names) plain.push_back(plainName(name));
  Mapping mapping;
  std::vector<bool> meant(plain.size());
  // First by the whole name, then by how it begins: "Durée (min)".
  constexpr std::size_t kTelling = 4;
  for (const bool whole : {true, false}) {
    for (const auto& [column, known] : kKnown) {
      if (mapping.contains(column) || (!whole && known.size() < kTelling)) continue;
      const auto start = std::string(known) + ' ';
      for (std::size_t i = 0; i < plain.size(); ++i) {
        if (meant[i] || !(whole ? plain[i] == known : plain[i].starts_with(start))) continue;
        mapping[column] = i;
        meant[i] = true;
        break;
      }
    }
  }
  return mapping;
}

}  // namespace orvanta
