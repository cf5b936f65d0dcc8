#include "tab/native_host.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <system_error>

#include "tab/native_messages.h"

namespace orvanta {
namespace {

OwnedFd endingSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) sigaddset(&signals, signal);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  signal(SIGPIPE, SIG_IGN);
  return OwnedFd(signalfd(-1, &signals, SFD_CLOEXEC));
}

void send(std::string_view json) {
  const auto frame = nativeMessage(json);
  // A browser that is going away is noticed by its end of our input.
  [[maybe_unused]] const auto count = write(STDOUT_FILENO, frame.data(), frame.size());
}

class Reports {
 public:
  explicit Reports(TabServer& server) : server_(server) {}

  // Whether there will be more.
  bool take() {
    std::array<char, 65536> buffer{};
    const auto count = read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count <= 0) return count < 0 && errno == EINTR;
    messages_.add({buffer.data(), static_cast<std::size_t>(count)});
    while (const auto message = messages_.next()) {
      auto report = parseReport(*message);
      const bool sameWindow = report.window == window_;
      window_ = report.window;
      server_.setState(
          {std::move(report.tab), sameWindow ? server_.state().since : monotonicNow()});
    }
    return !messages_.broken();
  }

 private:
  TabServer& server_;
  NativeMessages messages_;
  std::optional<double> window_;
};

}  // namespace

int runNativeHost() {
  const auto signals = endingSignals();
  try {
    TabServer server(tabSocketFolder(), getppid(), getpid());
    Reports reports(server);
    send(R"({"ready":true})");
    std::array<pollfd, 3> sources{pollfd{STDIN_FILENO, POLLIN, 0}, pollfd{server.file(), POLLIN, 0},
                                  pollfd{signals.get(), POLLIN, 0}};
    while (poll(sources.data(), sources.size(), -1) >= 0 || errno == EINTR) {
      if (sources[2].revents != 0) return 0;
      if (sources[0].revents != 0 && !reports.take()) return 0;
      if (sources[1].revents != 0) server.answer();
    }
  } catch (const std::system_error& error) {
    std::fprintf(stderr, "orvanta-tab: %s\n", error.what());
  }
  return 1;
}

}  // namespace orvanta
