#include "app/application.h"

#include <giomm/notification.h>
#include <glib-unix.h>
#include <glibmm/main.h>
#include <glibmm/miscutils.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include "app/app_delegate.h"
#include "app/bar.h"
#include "app/commands.h"
#include "app/legacy_agents.h"
#include "app/local_call.h"
#include "app/route_call.h"
#include "app/services.h"
#include "app/turn.h"
#include "bridge/request.h"
#include "platform/dbus/bus_return.h"
#include "platform/desktop_actions.h"
#include "storage/store_swap.h"

namespace orvanta {
namespace {

gboolean quitOnSignal(gpointer application) {
  static_cast<Application*>(application)->end();
  return G_SOURCE_CONTINUE;
}

}  // namespace

Application::Application(std::optional<Handover> left)
    : Gio::Application(kApplicationId, Gio::Application::Flags::HANDLES_COMMAND_LINE |
                                           Gio::Application::Flags::SEND_ENVIRONMENT),
      left_(std::move(left)) {
  Options::addTo(*this);
  bar_ = Gio::SimpleAction::create(kBarAction, Glib::Variant<Glib::ustring>::create(""));
  bar_->signal_change_state().connect([](const auto& /*state*/) {});  // nobody else sets it
  add_action(bar_);
}

Application::~Application() = default;

void Application::end() {
  handover_.reset();
  Gio::Application::quit();
}

// What is not the resident program's is done here, before the bus is asked who that is.
int Application::on_handle_local_options(const Glib::RefPtr<Glib::VariantDict>& parsed) {
  constexpr int kGoOn = -1;
  const Options options(parsed->gobj());
  if (const auto status = runCommand(options)) return *status;
  if (!options.has("call")) return kGoOn;
  if (!runningElsewhere()) return answerHere(options);
  if (options.words() == std::vector<std::string>{kManyCalls}) {
    std::fputs("Orvanta : le programme est en marche, posez-lui les questions une à une\n", stderr);
    return 1;
  }
  call_ = options;
  set_flags(get_flags() | Flags::IS_LAUNCHER);
  return kGoOn;
}

void Application::on_startup() {
  Gio::Application::on_startup();
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    signalSources_.push_back(g_unix_signal_add(signal, quitOnSignal, this));
  }
  // First, since a tracker of old may still write what is moved into place next.
  cleanupLegacyAgents(Glib::get_user_config_dir(), runProgram, systemLog);
  const auto where = DataLocation::ofUser();
  prepare(where, systemLog);
  if (auto lock = DataLock::take(where, left_ ? left_->lock : -1)) begin(std::move(*lock));
  busReturn_ = std::make_unique<dbus::BusReturn>(connectBus(Gio::DBus::BusType::SESSION),
                                                 [this] { rejoin(); });
}

void Application::begin(DataLock lock) {
  finishSwap(DataLocation::ofUser().file());
  services_ = std::make_unique<Services>(std::move(lock), *this, [this] { end(); });
  window_ = &services_->dashboard;
  if (left_) {
    auto& tracker = services_->core.tracker;
    tracker.setCurrentProjectId(left_->project, left_->projectSince);
    if (tracker.pause().has_value() != left_->paused) tracker.setPaused(left_->paused).forget();
  }
  delegate_ = std::make_unique<AppDelegate>(
      services_->core, services_->sessionBus,
      [this](const auto& route, auto task) { services_->dashboard.post(route, std::move(task)); },
      [this](const std::string& state) {
        bar_->set_state(Glib::Variant<Glib::ustring>::create(state));
      });
  delegate_->applicationDidFinishLaunching();
  hold();
}

void Application::waitForTurn() {
  systemLog(
      "Orvanta: une autre session enregistre déjà dans ce dossier de données, celle-ci attend la "
      "suite");
  turn_ = std::make_unique<Turn>(
      DataLocation::ofUser(),
      [this](DataLock lock) {
        turn_.reset();
        begin(std::move(lock));
        delegate_->openDashboardAtLaunch(false, {});
        release();
      },
      [this] { end(); });
  hold();
}

// What others of our process keep of the lost bus, GLib keeps for ever: only a fresh image of the
// program has name, tray and sources again. What could not be stored yet is kept by this one alone.
void Application::rejoin() {
  if (services_ && (services_->db.condition() || services_->core.tracker.waiting() > 0)) {
    constexpr std::chrono::seconds kStoreMayRecover{5};
    mainThread_.after(kStoreMayRecover, [this] { rejoin(); });
    return;
  }
  systemLog("Orvanta: le bus de session est de retour");
  handover_.emplace();
  Gio::Application::quit();
}

// A desktop or a notification asks for us.
void Application::on_activate() {
  if (delegate_) delegate_->applicationShouldHandleReopen();
}

void Application::on_shutdown() {
  busReturn_.reset();
  turn_.reset();
  if (services_) services_->core.tabs.giveUp();  // the end waits for no browser
  if (delegate_) delegate_->applicationWillTerminate();
  delegate_.reset();
  // Nothing is lost any more by a signal that ends us at once.
  for (const auto source : signalSources_) g_source_remove(source);
  if (handover_ && services_) {
    const auto& tracker = services_->core.tracker;
    handover_ = {.lock = services_->lock.leave(),
                 .paused = tracker.pause().has_value(),
                 .project = tracker.currentProjectId(),
                 .projectSince = tracker.currentProjectSince().value_or(0)};
  }
  services_.reset();
  window_ = nullptr;  // not before: until then somebody may be waiting for the user's choice
  Gio::Application::on_shutdown();
}

int Application::on_command_line(const Glib::RefPtr<Gio::ApplicationCommandLine>& commandLine) {
  const Options options(g_application_command_line_get_options_dict(commandLine->gobj()));
  if (!services_) return turnAway(commandLine, options);
  if (options.has("call")) {
    answer(commandLine, options.words());
    return 0;
  }
  follow(options, !commandLine->is_remote(), commandLine->getenv("XDG_ACTIVATION_TOKEN"));
  if (options.empty() && commandLine->is_remote()) {
    commandLine->print("Orvanta est déjà en marche.\n");
  }
  return 0;
}

int Application::turnAway(const Glib::RefPtr<Gio::ApplicationCommandLine>& commandLine,
                          const Options& options) {
  if (options.has("call")) return kAnswerYourself;
  if (options.empty() && !commandLine->is_remote()) {
    waitForTurn();
    return 0;
  }
  commandLine->printerr("Orvanta enregistre déjà dans ce dossier de données.\n");
  return 1;
}

void Application::follow(const Options& options, bool atLaunch,
                         const std::string& activationToken) {
  if (options.has("pause")) {
    const auto& words = options.words();
    delegate_->setPaused(true, words.empty() ? "" : words.front());
  }
  if (options.has("resume")) delegate_->setPaused(false);
  const bool show = options.has("show");
  if (atLaunch) {
    delegate_->openDashboardAtLaunch(show, activationToken);
  } else if (show || options.empty()) {
    delegate_->applicationShouldHandleReopen(activationToken);
  }
}

// The caller's process waits as long as somebody holds its command line.
void Application::answer(const Glib::RefPtr<Gio::ApplicationCommandLine>& commandLine,
                         std::vector<std::string> words) {
  const auto route = words.empty() ? std::string() : words.front();
  // The router outlives the queue; services_ does not name it any more while the queue ends.
  services_->dashboard.post(
      route, [&router = services_->core.router, commandLine, words = std::move(words)] {
        auto result = callRoute(router, words);
        Glib::MainContext::get_default()->invoke([commandLine, result = std::move(result)] {
          commandLine->set_exit_status(result.status);
          commandLine->print(result.output);
          return false;
        });
      });
}

void Application::quit() {
  constexpr std::chrono::milliseconds kAnswersLeave{50};
  post([this] { mainThread_.after(kAnswersLeave, [this] { end(); }); });
}

void Application::showDashboard(const std::string& activationToken, const std::string& day) {
  post([this, activationToken, day] {
    if (services_) services_->dashboard.show(activationToken, day);
  });
}

void Application::prepareDashboard() {
  post([this] {
    if (services_) services_->dashboard.prepare();
  });
}

void Application::refreshMenu() {
  post([this] {
    if (delegate_) delegate_->refreshMenu();
  });
}

// A click on it activates the application, which opens the dashboard.
void Application::tell(const std::string& sentence) {
  post([this, sentence] {
    const auto note = Gio::Notification::create("Orvanta enregistre votre activité");
    note->set_body(sentence);
    send_notification("advice", note);
  });
}

void Application::openUrl(const std::string& url) {
  post([url] { orvanta::openUrl(url, systemLog); });
}

void Application::openFile(const std::filesystem::path& file) {
  post([file] { orvanta::openFile(file, systemLog); });
}

bool Application::reveal(const std::filesystem::path& file) {
  if (!showsFolders()) return false;
  post([this, file] {
    if (services_) revealFile(services_->sessionBus, file, systemLog);
  });
  return true;
}

std::optional<std::filesystem::path> Application::saveAs(const std::string& suggestedName) {
  auto* window = window_.load();
  return window ? window->saveAs(suggestedName) : std::nullopt;
}

std::optional<std::filesystem::path> Application::chooseFile() {
  auto* window = window_.load();
  return window ? window->chooseFile() : std::nullopt;
}

}  // namespace orvanta
