// Work in a child of this process.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <functional>

namespace orvanta::test {

/// How a child ended that did this, as waitpid tells it.
inline int endOfChild(const std::function<void()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    work();
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

/// Whether it is so for a user who may not write, since root may write anywhere.
inline bool isSoForNobody(const std::function<bool()>& check) {
  return endOfChild([&] {
           constexpr uid_t kNobody = 65534;
           if (getuid() == 0 && setuid(kNobody) != 0) _exit(2);
           _exit(check() ? 0 : 1);
         }) == 0;
}

}  // namespace orvanta::test
