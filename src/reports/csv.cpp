#include "reports/csv.h"

#include <fmt/format.h>

#include <string_view>

#include "storage/value.h"

namespace orvanta {
namespace {

void appendQuoted(std::string& line, std::string_view value) {
  line += ";\"";
  for (const char c : value) {
    if (c == '"') line += '"';
    line += c;
  }
  line += '"';
}

std::string_view projectName(const Ev& ev, const Projects& projects) {
  const auto project = ev.pid ? projects.find(*ev.pid) : projects.end();
  return project != projects.end() ? std::string_view(project->second.name) : std::string_view();
}

}  // namespace

std::string csvHeader() {
  return "\xEF\xBB\xBF"
         "debut;fin;duree_s;categorie;projet;app;domaine;titre;url";
}

std::string csvLine(const Ev& ev, const Projects& projects, const Calendar& calendar) {
  auto line =
      fmt::format("\n{};{};{};{}", calendar.dateTimeOf(ev.start), calendar.dateTimeOf(ev.end),
                  truncated(ev.duration()).value_or(0), ev.cat.view());
  appendQuoted(line, projectName(ev, projects));
  for (const auto text : {ev.app, ev.domain, ev.title, ev.url}) appendQuoted(line, text.view());
  return line;
}

}  // namespace orvanta
