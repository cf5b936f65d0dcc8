#include "telemetry/telemetry.h"

#include <glib.h>

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <cstdlib>
#include <memory>
#include <utility>

#include "base/text.h"
#include "telemetry/version.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr auto kErrorDay = "telemetry_last_error";

std::string newInstallId() {
  const std::unique_ptr<char, decltype(&g_free)> id(g_uuid_string_random(), g_free);
  return id.get();
}

// The user is led there. On this machine itself nobody else can answer.
bool isSafe(const std::string& url) {
  char* rawScheme = nullptr;
  char* rawHost = nullptr;
  const bool read = g_uri_split(url.c_str(), G_URI_FLAGS_NONE, &rawScheme, nullptr, &rawHost,
                                nullptr, nullptr, nullptr, nullptr, nullptr) != FALSE;
  const std::unique_ptr<char, decltype(&g_free)> scheme(rawScheme, g_free);
  const std::unique_ptr<char, decltype(&g_free)> host(rawHost, g_free);
  if (!read || !scheme || !host || !*host) return false;
  const auto named = lowerCase(scheme.get());
  return named == "https" || (named == "http" && std::string_view(host.get()) == "127.0.0.1");
}

// "major.minor" of VERSION_ID in os-release, which may have more numbers or fewer; rolling
// distributions have none.
std::string osVersion() {
  const std::unique_ptr<char, decltype(&g_free)> raw(g_get_os_info(G_OS_INFO_KEY_VERSION_ID),
                                                     g_free);
  const std::string version = raw ? raw.get() : "0";
  const auto first = version.find('.');
  if (first == std::string::npos) return version + ".0";
  return version.substr(0, version.find('.', first + 1));
}

}  // namespace

AppFacts appFacts(std::string version) {
#if defined(__x86_64__)
  constexpr auto kArch = "x86_64";
#elif defined(__aarch64__)
  constexpr auto kArch = "arm64";
#else
  constexpr auto kArch = "other";
#endif
  return {.version = std::move(version), .osVersion = osVersion(), .arch = kArch};
}

std::string serviceUrl() {
  const char* chosen = std::getenv("ORVANTA_SERVICE_URL");
  return chosen && *chosen ? chosen : ORVANTA_SERVICE_URL;
}

Telemetry::Telemetry(Database& db, AppFacts facts, std::string service,
                     std::function<void()> updateChanged, Clock clock, Calendar calendar)
    : db_(db),
      facts_(std::move(facts)),
      service_(std::move(service)),
      updateChanged_(std::move(updateChanged)),
      clock_(std::move(clock)),
      calendar_(std::move(calendar)) {}

bool Telemetry::enabled() const {
  return db_.settings().telemetry;
}

Written Telemetry::setEnabled(bool on) {
  const auto known = on ? db_.settings().installId : "";
  auto written =
      db_.setSettings({stored(&Settings::telemetry, on),
                       stored(&Settings::installId, on && known.empty() ? newInstallId() : known)});
  if (on) daily();
  return written;
}

void Telemetry::daily() {
  if (!enabled()) return;
  const auto today = todayIso();
  if (db_.setting("telemetry_first_sent").empty()) {
    send("first_launch", {},
         [this, today] { db_.setSetting("telemetry_first_sent", today).forget(); });
  }
  if (db_.setting("telemetry_last_heartbeat") != today) {
    send("heartbeat", {},
         [this, today] { db_.setSetting("telemetry_last_heartbeat", today).forget(); });
  }
  checkUpdate();
}

void Telemetry::reportError(const std::string& message) {
  constexpr std::size_t kMostCharacters = 500;
  if (!enabled()) return;
  const auto today = todayIso();
  {
    const std::lock_guard lock(mutex_);
    if (lastErrorDay_ == today) return;
    lastErrorDay_ = today;
  }
  if (db_.setting(kErrorDay) == today) return;
  // Not here: what has failed may be the store.
  mainThread_.post([this, today] { db_.setSetting(kErrorDay, today).forget(); });
  send("error", {{"error", firstCharacters(validUtf8(message), kMostCharacters)}}, {});
}

void Telemetry::send(const std::string& event, const Extra& extra, std::function<void()> accepted) {
  json::object payload{{"install_id", db_.settings().installId},
                       {"version", facts_.version},
                       {"macos", facts_.osVersion},
                       {"arch", facts_.arch},
                       {"event", event}};
  for (const auto& [key, value] : extra) payload[key] = value;
  mainThread_.post([this, text = json::serialize(payload), accepted = std::move(accepted)] {
    http_.post(service_ + "/api/telemetry", text, [accepted](const auto& answer) {
      constexpr int kOk = 200;
      if (accepted && answer && answer->status == kOk) accepted();
    });
  });
}

void Telemetry::checkUpdate() {
  setCheck(UpdateCheck::Going);
  mainThread_.post([this] {
    http_.get(service_ + "/appcast.json", [this](const auto& answer) {
      const bool read = answer && readFeed(answer->body);
      setCheck(read ? UpdateCheck::Done : UpdateCheck::Failed);
      if (read && updateChanged_) updateChanged_();
    });
  });
}

// Whether it tells of a release.
bool Telemetry::readFeed(const std::string& body) {
  boost::system::error_code broken;
  const auto feed = json::parse(body, broken);
  if (broken || !feed.is_object()) return false;
  const auto* version = feed.get_object().if_contains("version");
  const auto* url = feed.get_object().if_contains("url");
  if (!version || !url || !version->is_string() || !url->is_string()) return false;
  Update release{std::string(version->get_string()), std::string(url->get_string())};
  if (!isSafe(release.url)) return false;
  const std::lock_guard lock(mutex_);
  update_.reset();
  if (isNewer(release.version, facts_.version)) update_ = std::move(release);
  return true;
}

void Telemetry::setCheck(UpdateCheck check) {
  const std::lock_guard lock(mutex_);
  check_ = check;
}

UpdateCheck Telemetry::updateCheck() const {
  const std::lock_guard lock(mutex_);
  return check_;
}

std::optional<Update> Telemetry::updateAvailable() const {
  const std::lock_guard lock(mutex_);
  return update_;
}

std::string Telemetry::todayIso() const {
  return calendar_.dateOf(clock_()).iso();
}

}  // namespace orvanta
