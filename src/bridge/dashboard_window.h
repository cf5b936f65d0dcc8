// The dashboard, as the resident program knows it: another process.
#pragma once

#include <sigc++/connection.h>

#include <filesystem>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "base/line_channel.h"
#include "base/log.h"
#include "base/main_thread.h"
#include "base/serial_queue.h"
#include "bridge/core.h"

namespace orvanta {

/// Starts `orvanta-dashboard` (the window, the web engine, the page) when it is wanted, and answers
/// what its page asks: one request at a time, in the order of asking, on a queue of its own; but
/// each route that asks the user has a queue of its own, and keeps none of the others waiting. The
/// two talk in lines over a socket pair, which has no name and so nobody else can connect to:
///
///     to the dashboard:   first JSON | show "TOKEN" | day "DAY" | reload | resolve ID JSON |
///                         save "NAME"
///     from the dashboard: shown | post JSON | saved "URI" | saved null
///
/// A dashboard that crashed, was killed or does not react is started afresh by the next show(); the
/// rest of the program does not notice. It ends by itself after ten minutes without a window, and
/// when this end of the socket goes away. Main thread only, unless said otherwise.
class DashboardWindow {
 public:
  /// `program` is the dashboard's file; `core` outlives the window. `release` gives back what
  /// answers have taken: it runs on the requests' queue some seconds after a request, once for all
  /// that came meanwhile, and when a dashboard has ended, after the last of its requests.
  DashboardWindow(std::filesystem::path program, Core& core, SerialQueue::Task release, Log log);
  ~DashboardWindow();
  DashboardWindow(const DashboardWindow&) = delete;
  DashboardWindow& operator=(const DashboardWindow&) = delete;

  /// Opens the window or brings it to the front. Wayland lets a window come to the front only with
  /// a token of the program that the user has clicked in (the protocol xdg-activation-v1); "" where
  /// there is none. The page shows `day` then, where that is not "".
  void show(const std::string& activationToken = {}, const std::string& day = {});
  /// Starts what show() would have to start; its window stays closed.
  void prepare();
  /// Loads the page again, if there is one.
  void reload();

  /// Asks where to save, over the dashboard's window, and blocks until the user has chosen. Absent
  /// when cancelled or without a dashboard; "" for a place that has no path here. From any thread
  /// but the main thread.
  std::optional<std::filesystem::path> saveAs(const std::string& suggestedName);
  /// The same about a store file that is there.
  std::optional<std::filesystem::path> chooseFile();

  /// Runs `task` between the page's requests to this route, on their queue.
  void post(const std::string& route, SerialQueue::Task task);

 private:
  struct Process;
  using Saved = std::promise<std::optional<std::filesystem::path>>;

  void start();
  void lost();
  void tellFailure();
  void received(const std::string& line);
  void answerLater(const std::string& envelope);
  SerialQueue::Task saying(std::function<std::string()> line);
  std::optional<std::filesystem::path> asked(const std::string& line);
  void fileChosen(std::optional<std::filesystem::path> file);

  const std::filesystem::path program_;
  Core& core_;
  const SerialQueue::Task release_;
  bool releasing_ = false;  // will be, in some seconds
  const Log log_;
  std::unique_ptr<Process> process_;  // null while no dashboard runs
  int generation_ = 0;                // counts the starts: an answer goes to the page that asked
  sigc::connection patience_;         // until the dashboard must have reacted
  std::mutex savedMutex_;             // guards the next two
  bool ending_ = false;
  std::optional<Saved> saved_;  // who waits for the user's choice
  MainThread mainThread_;
  std::unique_ptr<SerialQueue> work_;          // ends first, with the next
  std::map<std::string, SerialQueue> asking_;  // by route, made when first asked
};

}  // namespace orvanta
