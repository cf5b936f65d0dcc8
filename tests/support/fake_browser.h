// A process that passes for a browser by the name of its program file.
#pragma once

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "base/processes.h"
#include "support/temp_store.h"

namespace orvanta::test {

/// Runs from when it is made until it is destroyed.
class FakeBrowser {
 public:
  explicit FakeBrowser(const std::string& name) : program_(folder_.path() / name) {
    std::filesystem::copy_file("/bin/sleep", program_);
    pid_ = fork();
    if (pid_ == 0) {
      execl(program_.c_str(), program_.c_str(), "60", nullptr);
      _exit(1);
    }
    while (programOf(pid_) != program_) usleep(1000);
  }
  ~FakeBrowser() {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  FakeBrowser(const FakeBrowser&) = delete;
  FakeBrowser& operator=(const FakeBrowser&) = delete;

  int32_t pid() const { return pid_; }

 private:
  TempFolder folder_;
  std::filesystem::path program_;
  pid_t pid_ = 0;
};

}  // namespace orvanta::test
