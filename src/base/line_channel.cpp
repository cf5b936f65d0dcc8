#include "base/line_channel.h"

#include <fcntl.h>
#include <glibmm/main.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace orvanta {
namespace {

// A day's report is some megabytes at most. More than this waits for nobody.
constexpr std::size_t kMostBytes = std::size_t{256} << 20;

}  // namespace

LineChannel::LineChannel(int socket, Listener listener)
    : socket_(socket), listener_(std::move(listener)) {
  fcntl(socket_, F_SETFL, fcntl(socket_, F_GETFL) | O_NONBLOCK);
  reading_ =
      Glib::signal_io().connect([this](Glib::IOCondition condition) { return readable(condition); },
                                socket_, Glib::IOCondition::IO_IN | Glib::IOCondition::IO_HUP);
}

LineChannel::~LineChannel() {
  if (destroyed_) *destroyed_ = true;
  reading_.disconnect();
  writing_.disconnect();
  ::close(socket_);
}

void LineChannel::send(std::string_view line) {
  if (!reading_.connected() || outgoing_.size() + line.size() > kMostBytes) return;
  outgoing_.append(line).push_back('\n');
  if (!writing_.connected() && writeSome()) {
    writing_ = Glib::signal_io().connect([this](Glib::IOCondition) { return writable(); }, socket_,
                                         Glib::IOCondition::IO_OUT);
  }
}

bool LineChannel::writable() {
  return writeSome();
}

// Whether something is left to be written later.
bool LineChannel::writeSome() {
  std::size_t sent = 0;
  while (sent < outgoing_.size()) {
    const auto count =
        ::send(socket_, outgoing_.data() + sent, outgoing_.size() - sent, MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno != EAGAIN) {  // the reading side tells that nobody is there
      outgoing_.clear();
      return false;
    }
    if (count < 0) break;
    sent += static_cast<std::size_t>(count);
  }
  outgoing_.erase(0, sent);
  return !outgoing_.empty();
}

bool LineChannel::readable(Glib::IOCondition /*condition*/) {
  std::array<char, 65536> buffer;
  const auto count = recv(socket_, buffer.data(), buffer.size(), 0);
  if (count < 0 && (errno == EAGAIN || errno == EINTR)) return true;
  if (count <= 0 || incoming_.size() > kMostBytes) {
    close();
    return false;
  }
  auto from = incoming_.size();  // no line feed before it
  incoming_.append(buffer.data(), static_cast<std::size_t>(count));
  bool destroyed = false;
  destroyed_ = &destroyed;
  std::size_t start = 0;
  for (auto end = incoming_.find('\n', from); end != std::string::npos;
       end = incoming_.find('\n', from)) {
    auto line = incoming_.substr(start, end - start);
    start = from = end + 1;
    listener_.received(std::move(line));
    if (destroyed) return false;
  }
  destroyed_ = nullptr;
  incoming_.erase(0, start);
  return true;
}

void LineChannel::close() {
  reading_.disconnect();
  writing_.disconnect();
  auto closed = listener_.closed;  // it may destroy us
  closed();
}

}  // namespace orvanta
