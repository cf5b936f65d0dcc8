#include "imports/store_import.h"

#include <optional>

#include "base/text.h"
#include "capture/excluded.h"
#include "capture/sample.h"
#include "storage/category.h"
#include "storage/ev.h"

namespace orvanta {
namespace {

constexpr double kDay = 86400;

std::optional<std::string> textOrNone(const std::string& text) {
  return text.empty() ? std::nullopt : std::optional(text);
}

std::optional<Category> categoryOf(const std::string& text) {
  auto plain = lowerCase(withoutAccents(text));
  std::erase(plain, ' ');
  return parsed<Category>(plain);
}

// What of an event may be stored.
struct Shown {
  std::optional<std::string> title;
  std::optional<std::string> url;
  std::optional<std::string> domain;
};

// Of an address without its scheme, too.
std::optional<std::string> siteIn(const std::string& address) {
  if (address.empty()) return {};
  return domainOf(address.find("://") == std::string::npos ? "https://" + address : address);
}

bool shows(const std::string& address, const Settings& settings) {
  return excluded(settings, address) || excluded(settings, "https://" + address);
}

Shown shownOf(const ImportedEvent& event, const Settings& settings, bool old) {
  if (settings.excludesApp(event.app)) return {};
  if (shows(event.url, settings) || shows(event.domain, settings)) return {};
  Shown shown{textOrNone(event.title), textOrNone(event.url), domainOf(textOrNone(event.url))};
  if (!shown.domain) shown.domain = siteIn(event.domain);
  if (old || settings.privacy == Privacy::Domain) return {{}, {}, shown.domain};
  return shown;
}

}  // namespace

void storeImport(Transaction& change, const ImportPlan& plan, const ProjectIds& projects,
                 const Settings& settings, double now) {
  const double oldest =
      settings.retentionDays > 0 ? now - static_cast<double>(settings.retentionDays) * kDay : 0;
  for (const auto& [start, end, event] : plan.spans) {
    if (!change) return;
    const auto category = categoryOf(event->category);
    const auto project = projects.find(event->project);
    if (category == Category::Inactif) {
      change.run("INSERT INTO events(start, end, app, bundle, idle) VALUES (?,?,'Inactif',?,1)",
                 {start, end, kImportBundle});
      continue;
    }
    const auto shown = shownOf(*event, settings, end < oldest);
    change.run(
        "INSERT INTO events(start, end, app, bundle, title, url, domain, idle, category, "
        "project_id) VALUES (?,?,?,?,?,?,?,0,?,?)",
        {start, end, event->app.empty() ? "Importé" : event->app, kImportBundle, shown.title,
         shown.url, shown.domain,
         category && *category < Category::Nonclasse ? Value(textOf(*category)) : Value(),
         project == projects.end() ? Value() : Value(project->second)});
  }
}

}  // namespace orvanta
