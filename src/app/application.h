// The resident program.
#pragma once

#include <giomm/application.h>
#include <giomm/applicationcommandline.h>
#include <giomm/simpleaction.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/handover.h"
#include "app/options.h"
#include "base/application_id.h"
#include "base/main_thread.h"
#include "bridge/shell.h"
#include "storage/data_lock.h"

namespace orvanta {

class AppDelegate;
class DashboardWindow;
class Turn;
struct Services;
namespace dbus {
class BusReturn;
}

/// The exit status by which an instance that records nothing leaves a `--call` to the caller.
inline constexpr int kAnswerYourself = 75;

/// One instance a session: a second start hands its command line to the first. Puts the parts
/// together at start, runs until SIGTERM, SIGINT, SIGHUP, the end of the session or quit(), then
/// closes the open span. While another session records into the same data, it waits for its turn.
/// Without a session bus it runs all the same; when one comes (back), run() returns with something
/// to hand over.
class Application : public Gio::Application, public Shell {
 public:
  /// `left` is what the image before this one left.
  explicit Application(std::optional<Handover> left = {});
  ~Application() override;

  /// Makes run() return, for good. Main thread.
  void end();

  void post(std::function<void()> task) override { mainThread_.post(std::move(task)); }
  void quit() override;
  void showDashboard(const std::string& activationToken, const std::string& day) override;
  void prepareDashboard() override;
  void refreshMenu() override;
  void tell(const std::string& sentence) override;
  void openUrl(const std::string& url) override;
  void openFile(const std::filesystem::path& file) override;
  bool reveal(const std::filesystem::path& file) override;
  std::optional<std::filesystem::path> saveAs(const std::string& suggestedName) override;
  std::optional<std::filesystem::path> chooseFile() override;

  /// After run(): whether this was the session's instance, and not one that handed its command line
  /// to that.
  bool started() const { return !signalSources_.empty(); }

  /// After run(): the `--call` that the session's instance left to this process.
  const std::optional<Options>& call() const { return call_; }

  /// After run(): what a fresh image of the program is to go on with; absent when it is to end.
  const std::optional<Handover>& handover() const { return handover_; }

 protected:
  int on_handle_local_options(const Glib::RefPtr<Glib::VariantDict>& options) override;
  void on_startup() override;
  void on_activate() override;
  void on_shutdown() override;
  int on_command_line(const Glib::RefPtr<Gio::ApplicationCommandLine>& commandLine) override;

 private:
  void begin(DataLock lock);
  void waitForTurn();
  void rejoin();
  int turnAway(const Glib::RefPtr<Gio::ApplicationCommandLine>& commandLine,
               const Options& options);
  void follow(const Options& options, bool atLaunch, const std::string& activationToken);
  void answer(const Glib::RefPtr<Gio::ApplicationCommandLine>& commandLine,
              std::vector<std::string> words);

  const std::optional<Handover> left_;
  std::optional<Handover> handover_;
  std::optional<Options> call_;
  Glib::RefPtr<Gio::SimpleAction> bar_;  // its state is what status bars show
  std::vector<unsigned> signalSources_;
  std::unique_ptr<dbus::BusReturn> busReturn_;
  std::unique_ptr<Turn> turn_;          // while the data belong to another process
  std::unique_ptr<Services> services_;  // null as long
  std::unique_ptr<AppDelegate> delegate_;
  std::atomic<DashboardWindow*> window_ = nullptr;  // while there is one
  MainThread mainThread_;
};

}  // namespace orvanta
