// The resident program.
#pragma once

#include <giomm/application.h>
#include <giomm/applicationcommandline.h>

#include <memory>
#include <string>
#include <vector>

namespace orvanta {

class AppDelegate;
struct Services;

inline constexpr auto kApplicationId = "fr.quellvane.orvanta";

/// One instance a session: a second start hands its command line to the first. Puts the parts
/// together at start, runs until SIGTERM, SIGINT, SIGHUP, the end of the session or quit(), then
/// closes the open span. Without a session bus it runs all the same; a lock on the data keeps a
/// second one out.
class Application : public Gio::Application {
 public:
  Application();
  ~Application() override;

 protected:
  void on_startup() override;
  void on_activate() override;
  void on_shutdown() override;
  int on_command_line(const Glib::RefPtr<Gio::ApplicationCommandLine>& commandLine) override;

 private:
  void launch();
  void follow(const std::vector<std::string>& options, bool atLaunch,
              const std::string& activationToken);
  void answer(const Glib::RefPtr<Gio::ApplicationCommandLine>& commandLine,
              std::vector<std::string> words);
  void tell(const std::string& text);

  std::vector<unsigned> signalSources_;
  std::unique_ptr<Services> services_;  // null when the data belong to another process
  std::unique_ptr<AppDelegate> delegate_;
};

/// Whether these words of a command line start the program, or tell the running one what to do:
/// "--show", "--pause", "--resume", or none.
bool startsApplication(const std::vector<std::string>& words);

}  // namespace orvanta
