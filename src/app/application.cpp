#include "app/application.h"

#include <giomm/notification.h>
#include <glib-unix.h>
#include <glibmm/main.h>
#include <glibmm/miscutils.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <vector>

#include "app/app_delegate.h"
#include "app/legacy_agents.h"
#include "app/route_call.h"
#include "app/services.h"
#include "bridge/request.h"
#include "platform/desktop_actions.h"
#include "storage/store_swap.h"

namespace orvanta {
namespace {

gboolean quitOnSignal(gpointer application) {
  static_cast<Application*>(application)->quit();
  return G_SOURCE_CONTINUE;
}

}  // namespace

bool startsApplication(const std::vector<std::string>& words) {
  return std::all_of(words.begin(), words.end(), [](const std::string& word) {
    return word == "--show" || word == "--pause" || word == "--resume";
  });
}

Application::Application()
    : Gio::Application(kApplicationId, Gio::Application::Flags::HANDLES_COMMAND_LINE |
                                           Gio::Application::Flags::SEND_ENVIRONMENT) {}

Application::~Application() = default;

void Application::on_startup() {
  Gio::Application::on_startup();
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    signalSources_.push_back(g_unix_signal_add(signal, quitOnSignal, this));
  }
  // First, since a tracker of old may still write what is moved into place next.
  cleanupLegacyAgents(Glib::get_user_config_dir(), runProgram, systemLog);
  const auto where = DataLocation::ofUser();
  prepare(where, systemLog);
  if (auto lock = DataLock::take(where)) {
    finishSwap(where.file());
    services_ = std::make_unique<Services>(
        std::move(*lock), Services::Hooks{
                              .quit = [this] { quit(); },
                              .refreshMenu =
                                  [this] {
                                    if (delegate_) delegate_->refreshMenu();
                                  },
                              .tell = [this](const std::string& text) { tell(text); },
                          });
    launch();
    hold();
  }
}

void Application::launch() {
  delegate_ = std::make_unique<AppDelegate>(
      AppDelegate::Parts{services_->db, services_->tracker, services_->analytics, services_->keeper,
                         services_->sessionBus},
      AppDelegate::Actions{
          .showDashboard = [this](const auto& token) { services_->dashboard.show(token); },
          .dailyTelemetry = [this] { services_->telemetry.daily(); },
          .updateAvailable = [this] { return services_->telemetry.updateAvailable(); },
          .openUrl = [](const std::string& url) { openUrl(url, systemLog); },
          .tell = [this](const std::string& sentence) { tell(sentence); },
          .tellNoTray =
              [this] {
                tell(
                    "Ce bureau n'a pas de zone d'icônes. Pour ouvrir Orvanta, lancez-le une "
                    "deuxième fois depuis le menu des applications.");
              },
          .quit = [this] { quit(); },
      });
  delegate_->applicationDidFinishLaunching();
}

// A desktop or a notification asks for us.
void Application::on_activate() {
  if (delegate_) delegate_->applicationShouldHandleReopen();
}

void Application::on_shutdown() {
  if (services_) services_->browserTabs.giveUp();  // the end waits for no browser
  if (delegate_) delegate_->applicationWillTerminate();
  delegate_.reset();
  services_.reset();
  for (const auto source : signalSources_) g_source_remove(source);
  Gio::Application::on_shutdown();
}

int Application::on_command_line(const Glib::RefPtr<Gio::ApplicationCommandLine>& commandLine) {
  int count = 0;
  const std::unique_ptr<char*, decltype(&g_strfreev)> raw(commandLine->get_arguments(count),
                                                          g_strfreev);
  std::vector<std::string> words(raw.get(), raw.get() + count);
  if (!words.empty()) words.erase(words.begin());  // the program's name
  if (!services_) {
    commandLine->printerr("Orvanta enregistre déjà dans ce dossier de données.\n");
    return 1;
  }
  if (!words.empty() && words.front() == "--call") {
    answer(commandLine, {words.begin() + 1, words.end()});
    return 0;
  }
  follow(words, !commandLine->is_remote(), commandLine->getenv("XDG_ACTIVATION_TOKEN"));
  if (words.empty() && commandLine->is_remote()) {
    commandLine->print("Orvanta est déjà en marche.\n");
  }
  return 0;
}

void Application::follow(const std::vector<std::string>& options, bool atLaunch,
                         const std::string& activationToken) {
  bool show = false;
  for (const auto& option : options) {
    if (option == "--show") {
      show = true;
    } else {
      delegate_->setPaused(option == "--pause");
    }
  }
  if (atLaunch) {
    delegate_->openDashboardAtLaunch(show, activationToken);
  } else if (show || options.empty()) {
    delegate_->applicationShouldHandleReopen(activationToken);
  }
}

// The caller's process waits as long as somebody holds its command line.
void Application::answer(const Glib::RefPtr<Gio::ApplicationCommandLine>& commandLine,
                         std::vector<std::string> words) {
  if (services_->dashboard.waitsForUser()) {  // perhaps for hours
    commandLine->set_exit_status(1);
    commandLine->print(failure("le tableau de bord attend une réponse de l'utilisateur").json +
                       "\n");
    return;
  }
  // The router outlives the queue; services_ does not name it any more while the queue ends.
  services_->dashboard.post([&router = services_->router, commandLine, words = std::move(words)] {
    auto result = callRoute(router, words);
    Glib::MainContext::get_default()->invoke([commandLine, result = std::move(result)] {
      commandLine->set_exit_status(result.status);
      commandLine->print(result.output);
      return false;
    });
  });
}

// A click on it activates the application, which opens the dashboard.
void Application::tell(const std::string& text) {
  const auto note = Gio::Notification::create("Orvanta enregistre votre activité");
  note->set_body(text);
  send_notification("advice", note);
}

}  // namespace orvanta
