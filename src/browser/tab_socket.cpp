#include "browser/tab_socket.h"

#include <fmt/format.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <ctime>
#include <system_error>

#include "base/number.h"
#include "base/unix_socket.h"

namespace orvanta {
namespace {

namespace fs = std::filesystem;
using Milliseconds = std::chrono::milliseconds;
using SteadyClock = std::chrono::steady_clock;

constexpr std::string_view kPrefix = "tab-";
constexpr std::size_t kMostAnswer = 65536;

std::string written(const TabState& state) {
  if (!state.tab) return fmt::format("none {:.6f}", state.since);
  return fmt::format("tab {:.6f}\n{}\n{}", state.since, state.tab->url, state.tab->title);
}

std::optional<TabState> parse(std::string_view text) {
  constexpr std::string_view kNone = "none ";
  constexpr std::string_view kTab = "tab ";
  const auto line = text.substr(0, text.find('\n'));
  const auto kind = line.substr(0, line.find(' ') + 1);
  const auto since = parseNumber(line.substr(kind.size()));
  if (!since) return {};
  if (kind == kNone) return TabState{{}, *since};
  if (kind != kTab || line.size() == text.size()) return {};
  const auto rest = text.substr(line.size() + 1);
  const auto feed = rest.find('\n');
  if (feed == std::string_view::npos) return {};
  return TabState{ActiveTab{std::string(rest.substr(0, feed)), std::string(rest.substr(feed + 1))},
                  *since};
}

// All that comes until the other side closes; absent when it does not in time.
std::optional<std::string> readAll(const OwnedFd& socket, SteadyClock::time_point deadline) {
  std::string text;
  std::array<char, 4096> buffer{};
  while (text.size() <= kMostAnswer) {
    if (!waitToRead(socket, deadline)) return {};
    const auto count = read(socket.get(), buffer.data(), buffer.size());
    if (count == 0) return text;
    if (count > 0) text.append(buffer.data(), static_cast<std::size_t>(count));
    if (count < 0 && errno != EINTR && errno != EAGAIN) return {};
  }
  return {};
}

void removeDeadSockets(const fs::path& folder) {
  for (const auto& host : tabHosts(folder)) {
    const auto socket = unixSocket();
    if (connectTo(socket, host.path) != ECONNREFUSED) continue;
    std::error_code ignored;
    fs::remove(host.path, ignored);
  }
}

}  // namespace

fs::path tabSocketFolder() {
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  const fs::path base = runtime && *runtime == '/'
                            ? fs::path(runtime)
                            : fs::path("/run/user") / fmt::to_string(getuid());
  return base / "orvanta";
}

double monotonicNow() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  constexpr double kNanoseconds = 1e9;
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / kNanoseconds;
}

std::vector<TabHost> tabHosts(const fs::path& folder) {
  std::vector<TabHost> hosts;
  std::error_code failed;
  for (fs::directory_iterator entry(folder, failed), end; !failed && entry != end;
       entry.increment(failed)) {
    const auto name = entry->path().filename().string();
    if (!name.starts_with(kPrefix)) continue;
    TabHost host{entry->path()};
    const auto* last = name.data() + name.size();
    const auto [stop, error] = std::from_chars(name.data() + kPrefix.size(), last, host.browser);
    if (error == std::errc() && stop != last && *stop == '-') hosts.push_back(std::move(host));
  }
  return hosts;
}

TabAnswer askHosts(const std::vector<TabHost>& hosts, Milliseconds patience) {
  using Kind = TabAnswer::Kind;
  const auto deadline = SteadyClock::now() + patience;
  TabAnswer together;
  double newest = 0;
  for (const auto& host : hosts) {
    const auto socket = unixSocket();
    const int problem = connectTo(socket, host.path);
    if (problem == ECONNREFUSED || problem == ENOENT) continue;  // dead, or just gone
    if (together.kind == Kind::kNoHost) together.kind = Kind::kMute;
    const auto text = problem == 0 ? readAll(socket, deadline) : std::nullopt;
    const auto state = text ? parse(*text) : std::nullopt;
    if (!state) continue;
    together.kind = Kind::kState;
    if (!state->tab || (together.tab && state->since < newest)) continue;
    together.tab = state->tab;
    newest = state->since;
  }
  return together;
}

TabServer::TabServer(const fs::path& folder, int32_t browser, int32_t host)
    : path_(folder / fmt::format("{}{}-{}", kPrefix, browser, host)), listener_(unixSocket()) {
  const auto check = [](bool good, const char* what) {
    if (!good) throw std::system_error(errno, std::generic_category(), what);
  };
  check(mkdir(folder.c_str(), S_IRWXU) == 0 || errno == EEXIST, "mkdir");
  check(chmod(folder.c_str(), S_IRWXU) == 0, "chmod");
  removeDeadSockets(folder);

  // It gets its name when it listens: others take a socket that refuses for a dead one.
  auto hidden = path_;
  hidden.replace_filename("." + path_.filename().string());
  unlink(hidden.c_str());
  constexpr int kBacklog = 16;
  errno = bindTo(listener_, hidden);
  check(errno == 0, "bind");
  check(chmod(hidden.c_str(), S_IRUSR | S_IWUSR) == 0, "chmod");
  check(listen(listener_.get(), kBacklog) == 0, "listen");
  check(rename(hidden.c_str(), path_.c_str()) == 0, "rename");
}

TabServer::~TabServer() {
  unlink(path_.c_str());
}

void TabServer::answer() {
  const auto text = written(state_);
  while (true) {
    const OwnedFd client(accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!client) return;
    // An answer fits the socket's buffer; who asks and does not read misses it.
    send(client.get(), text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  }
}

}  // namespace orvanta
