#include "base/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstring>
#include <memory>
#include <optional>
#include <thread>

#include "base/owned_fd.h"

namespace orvanta {
namespace {

using std::chrono::milliseconds;
using SteadyClock = std::chrono::steady_clock;

constexpr milliseconds kGrace{100};      // between asking to end and making it end
constexpr milliseconds kLongestNap{50};  // between two looks at the child and at who waits for it

struct Pipe {
  OwnedFd reader;
  OwnedFd writer;
};

std::optional<Pipe> makePipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return {};
  fcntl(ends[0], F_SETFL, O_NONBLOCK);
  return Pipe{OwnedFd(ends[0]), OwnedFd(ends[1])};
}

struct FileActions {
  posix_spawn_file_actions_t value{};
  FileActions() { posix_spawn_file_actions_init(&value); }
  ~FileActions() { posix_spawn_file_actions_destroy(&value); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
};

struct Attributes {
  posix_spawnattr_t value{};
  Attributes() { posix_spawnattr_init(&value); }
  ~Attributes() { posix_spawnattr_destroy(&value); }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
};

// As execve takes them.
std::vector<char*> pointers(const std::vector<std::string>& words) {
  std::vector<char*> list(words.size());
  std::transform(words.begin(), words.end(), list.begin(),
                 [](const std::string& word) { return const_cast<char*>(word.c_str()); });
  return list;
}

// Yields an errno, 0 when the child runs.
int spawn(const ChildCommand& command, int output, int errors, pid_t& pid) {
  FileActions files;
  posix_spawn_file_actions_addopen(&files.value, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&files.value, output, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&files.value, errors, STDERR_FILENO);

  Attributes attributes;
  sigset_t none;
  sigset_t all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&attributes.value, &none);
  posix_spawnattr_setsigdefault(&attributes.value, &all);
  posix_spawnattr_setpgroup(&attributes.value, 0);
  posix_spawnattr_setflags(&attributes.value,
                           POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);

  auto words = pointers(command.words);
  words.push_back(nullptr);
  auto variables = pointers(command.environment);  // the first of a name counts
  for (char** variable = environ; *variable; ++variable) variables.push_back(*variable);
  variables.push_back(nullptr);
  return posix_spawn(&pid, words[0], &files.value, &attributes.value, words.data(),
                     variables.data());
}

// Takes what is there now; closes the pipe at its end.
void drain(OwnedFd& pipe, std::string& text) {
  std::array<char, 65536> buffer{};
  while (pipe) {
    const auto count = read(pipe.get(), buffer.data(), buffer.size());
    if (count > 0) {
      const auto room = kMostChildOutput - std::min(kMostChildOutput, text.size());
      text.append(buffer.data(), std::min(static_cast<std::size_t>(count), room));
    } else if (count < 0 && errno == EINTR) {
      continue;
    } else {
      if (count == 0 || errno != EAGAIN) pipe.reset();
      return;
    }
  }
}

class Child {
 public:
  Child(pid_t pid, OwnedFd output, OwnedFd errors)
      : pid_(pid), output_(std::move(output)), errors_(std::move(errors)) {}

  // Whether it ended before `deadline` and before it was to stop.
  bool wait(SteadyClock::time_point deadline, ChildResult& result,
            const std::stop_token& stop = {}) {
    milliseconds nap{1};
    while (true) {
      const bool done = ended();
      drain(output_, result.output);
      drain(errors_, result.errors);
      if (done) return true;
      const auto left = std::chrono::ceil<milliseconds>(deadline - SteadyClock::now());
      if (left.count() <= 0 || stop.stop_requested()) return false;
      // With both pipes closed it is about to end; otherwise the pipes wake us.
      const bool open = output_ || errors_;
      std::array<pollfd, 2> pipes{pollfd{output_.get(), POLLIN, 0},
                                  pollfd{errors_.get(), POLLIN, 0}};
      poll(pipes.data(), pipes.size(),
           static_cast<int>(std::min(left, open ? kLongestNap : nap).count()));
      nap = open ? milliseconds{1} : std::min(nap * 2, kLongestNap);
    }
  }

  void end() {
    ChildResult ignored;
    kill(-pid_, SIGTERM);
    if (wait(SteadyClock::now() + kGrace, ignored)) return;
    kill(-pid_, SIGKILL);
    if (wait(SteadyClock::now() + kGrace, ignored)) return;
    // Stuck in the kernel: it ends some day, and is buried then.
    std::thread([pid = pid_] { waitpid(pid, nullptr, 0); }).detach();
  }

  int status() const { return WIFEXITED(status_) ? WEXITSTATUS(status_) : 128 + WTERMSIG(status_); }

 private:
  bool ended() { return waitpid(pid_, &status_, WNOHANG) != 0; }

  pid_t pid_;
  int status_ = 0;
  OwnedFd output_;
  OwnedFd errors_;
};

}  // namespace

ChildResult runChild(const ChildCommand& command, double timeout) {
  const auto deadline = SteadyClock::now() + std::chrono::duration_cast<SteadyClock::duration>(
                                                 std::chrono::duration<double>(timeout));
  auto output = makePipe();
  auto errors = output ? makePipe() : std::nullopt;
  if (!errors) return {.launchError = std::strerror(errno)};
  pid_t pid = 0;
  const int problem = spawn(command, output->writer.get(), errors->writer.get(), pid);
  if (problem != 0) return {.launchError = std::strerror(problem)};
  output->writer.reset();
  errors->writer.reset();

  Child child(pid, std::move(output->reader), std::move(errors->reader));
  ChildResult result;
  if (child.wait(deadline, result, command.stop)) {
    result.status = child.status();
    return result;
  }
  child.end();
  return {.timedOut = true};
}

}  // namespace orvanta
