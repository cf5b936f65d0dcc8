#include "bridge/dashboard_window.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gio/gio.h>
#include <glibmm/main.h>
#include <sys/socket.h>

#include <array>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <utility>

#include "base/gobject_ref.h"
#include "base/text.h"
#include "bridge/first_answers.h"
#include "bridge/request.h"

namespace orvanta {
namespace {

namespace json = boost::json;

// A cold start on a slow disk; and a window that is there, maybe with a form half filled in, on a
// busy machine.
constexpr unsigned kPatience = 20000;  // ms
// A page that shows today asks for it again as often.
constexpr auto kRelease = std::chrono::seconds(10);

// "" of what has none.
std::filesystem::path pathOf(const std::string& uri) {
  const std::unique_ptr<char, decltype(&g_free)> path(
      g_filename_from_uri(uri.c_str(), nullptr, nullptr), g_free);
  return path ? path.get() : "";
}

}  // namespace

struct DashboardWindow::Process {
  Ref<GSubprocess> child;
  std::unique_ptr<LineChannel> channel;
  bool reacted = false;
};

DashboardWindow::DashboardWindow(std::filesystem::path program, Core& core,
                                 SerialQueue::Task release, Log log)
    : program_(std::move(program)),
      core_(core),
      release_(std::move(release)),
      log_(std::move(log)),
      work_(std::make_unique<SerialQueue>("orvanta.bridge")) {}

DashboardWindow::~DashboardWindow() {
  {
    const std::lock_guard lock(savedMutex_);
    ending_ = true;
  }
  fileChosen({});  // nobody waits for a user who cannot answer any more
  for (auto& [route, queue] : asking_) queue.discard();
  asking_.clear();
  work_->discard();
  work_.reset();
  patience_.disconnect();
}

void DashboardWindow::show(const std::string& activationToken, const std::string& day) {
  prepare();
  if (!process_) return tellFailure();
  process_->channel->send("show " + json::serialize(json::value(validUtf8(activationToken))));
  if (!day.empty()) process_->channel->send("day " + json::serialize(json::value(day)));
  if (patience_.connected()) return;
  patience_ = Glib::signal_timeout().connect(
      [this] {
        log_("Orvanta: le tableau de bord ne répond pas");
        g_subprocess_force_exit(process_->child.get());
        lost();
        return false;
      },
      kPatience);
}

void DashboardWindow::prepare() {
  if (!process_) start();
}

void DashboardWindow::reload() {
  mainThread_.post([this] {
    if (process_) process_->channel->send("reload");
  });
}

void DashboardWindow::start() {
  std::array<int, 2> ends{};
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    log_(fmt::format("Orvanta: tableau de bord : {}", std::strerror(errno)));
    return;
  }
  // Takes the number 3 in the child.
  constexpr int kChildsEnd = 3;
  const Ref<GSubprocessLauncher> launcher(g_subprocess_launcher_new(G_SUBPROCESS_FLAGS_NONE));
  g_subprocess_launcher_take_fd(launcher.get(), ends[1], kChildsEnd);
  GError* raw = nullptr;
  auto process = std::make_unique<Process>();
  process->child.reset(
      g_subprocess_launcher_spawn(launcher.get(), &raw, program_.c_str(), "--socket=3", nullptr));
  const std::unique_ptr<GError, decltype(&g_error_free)> error(raw, g_error_free);
  process->channel = std::make_unique<LineChannel>(
      ends[0], LineChannel::Listener{.received = [this](const auto& line) { received(line); },
                                     .closed = [this] { lost(); }});
  if (!process->child) {
    log_(fmt::format("Orvanta: tableau de bord : {}", error->message));
    return;
  }
  ++generation_;
  process_ = std::move(process);
  work_->post(saying([this] { return "first " + firstAnswers(core_); }));
}

// The process is gone. If its window was wanted, another takes its place, but for one that has
// never shown any: the next would not either.
void DashboardWindow::lost() {
  const bool wanted = patience_.connected();
  const bool reacted = process_->reacted;
  patience_.disconnect();
  process_.reset();
  fileChosen({});
  work_->post(release_);
  if (wanted && reacted) show();
  if (wanted && !reacted) tellFailure();
}

void DashboardWindow::tellFailure() {
  std::error_code ignored;
  core_.shell.tell(
      std::filesystem::exists(program_, ignored)
          ? "Le tableau de bord n’a pas pu s’ouvrir ; le journal du système dit pourquoi."
          : "Le tableau de bord n’est pas installé : ajoutez le paquet orvanta-dashboard.");
}

void DashboardWindow::post(const std::string& route, SerialQueue::Task task) {
  const auto* known = Router::find(route);
  if (known && known->kind == RouteKind::Ask) {
    asking_.try_emplace(route, "orvanta.ask").first->second.post(std::move(task));
  } else {
    work_->post(std::move(task));
  }
  if (std::exchange(releasing_, true)) return;
  mainThread_.after(kRelease, [this] {
    releasing_ = false;
    work_->post(release_);
  });
}

void DashboardWindow::received(const std::string& line) {
  const auto space = line.find(' ');
  const auto verb = line.substr(0, space);
  const auto rest = space != std::string::npos ? line.substr(space + 1) : std::string();
  if (verb == "post") {
    answerLater(rest);
  } else if (verb == "shown") {
    process_->reacted = true;
    patience_.disconnect();
  } else if (verb == "saved") {
    boost::system::error_code broken;
    const auto uri = json::parse(rest, broken);
    const bool chosen = !broken && uri.is_string();
    fileChosen(chosen ? std::optional(pathOf(std::string(uri.get_string()))) : std::nullopt);
  }
}

void DashboardWindow::answerLater(const std::string& envelope) {
  auto request = parseRequest(envelope);
  if (!request) return;
  const auto route = request->path;
  post(route, saying([this, request = std::move(*request)] {
         return fmt::format("resolve {} {}", request.id,
                            answer(core_.router, request.path, request.body).json);
       }));
}

// Makes a line and says it to the dashboard of now, unless there is another by then.
SerialQueue::Task DashboardWindow::saying(std::function<std::string()> line) {
  return [this, hearer = generation_, line = std::move(line)] {
    mainThread_.post([this, hearer, text = line()] {
      if (process_ && hearer == generation_) process_->channel->send(text);
    });
  };
}

std::optional<std::filesystem::path> DashboardWindow::saveAs(const std::string& suggestedName) {
  return asked("save " + json::serialize(json::value(suggestedName)));
}

std::optional<std::filesystem::path> DashboardWindow::chooseFile() {
  return asked("choose");
}

// One at a time: the window shows one panel.
std::optional<std::filesystem::path> DashboardWindow::asked(const std::string& line) {
  Saved saved;
  auto file = saved.get_future();
  {
    const std::lock_guard lock(savedMutex_);
    if (ending_ || saved_) return {};
    saved_ = std::move(saved);
  }
  mainThread_.post([this, line] {
    if (process_) {
      process_->channel->send(line);
    } else {
      fileChosen({});
    }
  });
  return file.get();
}

void DashboardWindow::fileChosen(std::optional<std::filesystem::path> file) {
  const std::lock_guard lock(savedMutex_);
  if (auto saved = std::exchange(saved_, std::nullopt)) saved->set_value(std::move(file));
}

}  // namespace orvanta
