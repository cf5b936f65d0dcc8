#include "base/unix_socket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>

namespace orvanta {
namespace {

using Operation = int (*)(int, const sockaddr*, socklen_t);

int withAddress(Operation operation, const OwnedFd& socket, const std::filesystem::path& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (!socket) return EBADF;
  if (path.native().size() >= sizeof address.sun_path) return ENAMETOOLONG;
  std::memcpy(&address.sun_path[0], path.c_str(), path.native().size());
  return operation(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0
             ? 0
             : errno;
}

}  // namespace

OwnedFd unixSocket() {
  return OwnedFd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

int bindTo(const OwnedFd& socket, const std::filesystem::path& path) {
  return withAddress(bind, socket, path);
}

int connectTo(const OwnedFd& socket, const std::filesystem::path& path) {
  return withAddress(connect, socket, path);
}

bool waitToRead(const OwnedFd& socket, std::chrono::steady_clock::time_point deadline) {
  while (true) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) return false;
    pollfd readable{socket.get(), POLLIN, 0};
    const int ready = poll(&readable, 1, static_cast<int>(left.count()));
    if (ready > 0 || (ready < 0 && errno != EINTR)) return true;
  }
}

}  // namespace orvanta
