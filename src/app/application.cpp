#include "app/application.h"

#include <glib-unix.h>
#include <glibmm/main.h>

#include <csignal>
#include <string>
#include <vector>

#include "app/route_call.h"
#include "app/services.h"

namespace orvanta {
namespace {

gboolean quitOnSignal(gpointer application) {
  static_cast<Application*>(application)->quit();
  return G_SOURCE_CONTINUE;
}

}  // namespace

Application::Application()
    : Gio::Application(kApplicationId, Gio::Application::Flags::HANDLES_COMMAND_LINE) {}

Application::~Application() = default;

void Application::on_startup() {
  Gio::Application::on_startup();
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) g_unix_signal_add(signal, quitOnSignal, this);
  const auto where = DataLocation::ofUser();
  prepare(where, systemLog);
  if (auto lock = DataLock::take(where)) {
    services_ = std::make_unique<Services>(std::move(*lock), [this] { quit(); });
    hold();
  }
}

void Application::on_shutdown() {
  if (services_) services_->shutdown();
  services_.reset();
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
  } else if (commandLine->is_remote() || (!words.empty() && words.front() == "--show")) {
    services_->dashboard.show();
  }
  return 0;
}

// The caller's process waits as long as somebody holds its command line.
void Application::answer(const Glib::RefPtr<Gio::ApplicationCommandLine>& commandLine,
                         std::vector<std::string> words) {
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

}  // namespace orvanta
