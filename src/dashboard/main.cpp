// orvanta-dashboard: the window of the resident program, which starts it and talks to it in lines
// over the socket that --socket=N names.
#include <fcntl.h>
#include <glibmm/main.h>
#include <gtk/gtk.h>
#include <gtkmm/application.h>
#include <sys/stat.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/application_id.h"
#include "base/line_channel.h"
#include "base/log.h"
#include "dashboard/appearance.h"
#include "dashboard/popups.h"
#include "dashboard/program_name.h"
#include "dashboard/sandbox.h"
#include "dashboard/screen_reader.h"
#include "dashboard/window.h"

namespace {

using namespace orvanta;
namespace json = boost::json;

// Hidden for so long, the window gives back the memory of its web engine; sooner if it was made
// ready and not asked for.
constexpr unsigned kLingerSeconds = 600;
constexpr unsigned kReadySeconds = 60;

unsigned lingerSeconds(unsigned usual) {
  const char* chosen = std::getenv("ORVANTA_LINGER_SECONDS");
  return chosen ? static_cast<unsigned>(std::strtoul(chosen, nullptr, 10)) : usual;
}

std::optional<std::string> textIn(const std::string& line) {
  boost::system::error_code broken;
  const auto value = json::parse(line, broken);
  if (broken || !value.is_string()) return {};
  return std::string(value.get_string());
}

// Also out of a dialogue that has a loop of its own, as the one that prints.
void quit(Gtk::Application& application) {
  const std::unique_ptr<GList, decltype(&g_list_free)> windows(gtk_window_list_toplevels(),
                                                               g_list_free);
  for (const auto* at = windows.get(); at; at = at->next)
    if (GTK_IS_DIALOG(at->data)) gtk_window_close(GTK_WINDOW(at->data));
  application.quit();
}

class Dashboard {
 public:
  Dashboard(Gtk::Application& application, int socket)
      : application_(application),
        channel_(socket, {.received = [this](const auto& line) { obey(line); },
                          .closed = [this] { quit(application_); }}),
        window_({.posted = [this](const auto& text) { channel_.send("post " + text); },
                 .fileChosen =
                     [this](const auto& path) {
                       channel_.send("saved " + json::serialize(path ? json::value(*path)
                                                                     : json::value(nullptr)));
                     },
                 .hidden = [this] { linger(kLingerSeconds); },
                 .failed =
                     [this] {
                       systemLog("Orvanta: la page ne tient pas, le tableau de bord se ferme");
                       quit(application_);
                     }}) {
    application_.add_window(window_);
    linger(kReadySeconds);
  }

 private:
  void obey(const std::string& line) {
    const auto space = line.find(' ');
    const auto verb = std::string_view(line).substr(0, space);
    const auto rest = space != std::string::npos ? line.substr(space + 1) : std::string();
    if (verb == "show") {
      ending_.disconnect();
      window_.comeToFront(textIn(rest).value_or(""));
      channel_.send("shown");
    } else if (verb == "day") {
      if (const auto day = textIn(rest)) window_.page().showDay(*day);
    } else if (verb == "first") {
      window_.page().begin(rest);
    } else if (verb == "reload") {
      window_.page().reload();
    } else if (verb == "resolve") {
      resolve(rest);
    } else if (verb == "save") {
      if (const auto name = textIn(rest)) window_.askWhereToSave(*name);
    } else if (verb == "choose") {
      window_.askForStore();
    }
  }

  void resolve(const std::string& rest) {
    int64_t id = 0;
    const auto [stop, error] = std::from_chars(rest.data(), rest.data() + rest.size(), id);
    if (error == std::errc() && *stop == ' ') window_.page().resolve(id, stop + 1);
  }

  void linger(unsigned usual) {
    ending_.disconnect();
    ending_ = Glib::signal_timeout().connect_seconds(
        [this] {
          quit(application_);
          return false;
        },
        lingerSeconds(usual));
  }

  Gtk::Application& application_;
  LineChannel channel_;
  Window window_;
  Appearance appearance_{window_.page().widget()};
  Popups popups_;
  ScreenReader screenReader_{[this] { window_.page().startAfresh(); }};
  sigc::connection ending_;
};

int socketOf(int argc, char** argv) {
  constexpr std::string_view kOption = "--socket=";
  for (int i = 1; i < argc; ++i) {
    const std::string_view word = argv[i];
    int socket = -1;
    if (word.starts_with(kOption) &&
        std::from_chars(word.data() + kOption.size(), word.data() + word.size(), socket).ec ==
            std::errc()) {
      return socket;
    }
  }
  return -1;
}

}  // namespace

int main(int argc, char** argv) {
  const int socket = socketOf(argc, argv);
  if (socket < 0 || fcntl(socket, F_SETFD, FD_CLOEXEC) != 0) {
    systemLog("Orvanta: orvanta-dashboard est ouvert par orvanta, pas à la main");
    return 2;
  }
  // The web engine writes as it likes, and this process starts nothing for the user.
  umask(S_IRWXG | S_IRWXO);
  prepareSandbox();
  // The page is flat and still: drawing it without the graphics card costs less than the card's
  // driver takes in memory.
  setenv("GSK_RENDERER", "cairo", 0);
  if (gtk_init_check() == 0) {
    systemLog("Orvanta: pas d’écran pour le tableau de bord");
    return 1;
  }
  nameProgram();
  const auto application =
      Gtk::Application::create(kApplicationId, Gio::Application::Flags::NON_UNIQUE);
  std::unique_ptr<Dashboard> dashboard;
  application->signal_startup().connect([&] {
    dashboard = std::make_unique<Dashboard>(*application.get(), socket);
    application->hold();
  });
  application->signal_activate().connect([] {});
  application->signal_shutdown().connect([&] { dashboard.reset(); });
  return application->run();
}
