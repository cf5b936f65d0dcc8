#include "platform/sway/tree.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <boost/json/parse.hpp>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>

#include "base/unix_socket.h"

namespace orvanta::sway {
namespace {

constexpr std::string_view kMagic = "i3-ipc";
constexpr std::size_t kHeaderSize = 14;  // magic, length of what follows, type; native byte order
constexpr uint32_t kGetTree = 4;
constexpr uint32_t kLongestTree = 64U << 20U;

using Deadline = std::chrono::steady_clock::time_point;

bool readAll(const OwnedFd& socket, char* into, std::size_t size, Deadline deadline) {
  while (size > 0) {
    if (!waitToRead(socket, deadline)) return false;
    const auto got = recv(socket.get(), into, size, 0);
    if (got <= 0) return false;
    into += got;
    size -= static_cast<std::size_t>(got);
  }
  return true;
}

std::optional<std::string> readTree(const std::string& path, Deadline deadline) {
  const auto socket = unixSocket();
  if (connectTo(socket, path) != 0) return {};
  std::array<char, kHeaderSize> header{};
  std::memcpy(header.data(), kMagic.data(), kMagic.size());
  std::memcpy(header.data() + kMagic.size() + sizeof(uint32_t), &kGetTree, sizeof kGetTree);
  if (send(socket.get(), header.data(), header.size(), MSG_NOSIGNAL) != ssize_t{kHeaderSize}) {
    return {};
  }
  if (!readAll(socket, header.data(), header.size(), deadline)) return {};
  uint32_t length = 0;
  std::memcpy(&length, header.data() + kMagic.size(), sizeof length);
  if (length > kLongestTree) return {};
  std::string tree(length, '\0');
  if (!readAll(socket, tree.data(), tree.size(), deadline)) return {};
  return tree;
}

bool inhibits(const boost::json::value& node) {
  const auto* object = node.if_object();
  if (!object) return false;
  const auto* mark = object->if_contains("inhibit_idle");
  if (mark && mark->is_bool() && mark->get_bool()) return true;
  for (const auto* key : {"nodes", "floating_nodes"}) {
    const auto* children = object->if_contains(key);
    if (!children || !children->is_array()) continue;
    for (const auto& child : children->get_array()) {
      if (inhibits(child)) return true;
    }
  }
  return false;
}

}  // namespace

bool holdsDisplayAwake(std::string_view tree) {
  boost::system::error_code broken;
  boost::json::parse_options options;
  constexpr std::size_t kDeepest = 256;  // containers nest
  options.max_depth = kDeepest;
  return inhibits(boost::json::parse(tree, broken, {}, options));
}

Tree::Tree(std::string socket)
    : socket_([&socket] {
        const char* told = std::getenv("SWAYSOCK");
        return socket.empty() && told ? std::string(told) : std::move(socket);
      }()) {}

bool Tree::displayKeptAwake() {
  constexpr std::chrono::milliseconds kPatience{50};
  if (socket_.empty()) return false;
  if (const auto tree = readTree(socket_, std::chrono::steady_clock::now() + kPatience)) {
    answer_ = holdsDisplayAwake(*tree);
  } else if (access(socket_.c_str(), F_OK) != 0) {
    answer_ = false;  // sway has ended
  }
  return answer_;
}

Source Tree::source() {
  const bool there = !socket_.empty() && access(socket_.c_str(), F_OK) == 0;
  return there ? Source{"sway-tree", "sway"} : kNoSource;
}

}  // namespace orvanta::sway
