// The frames of native messaging: a message is its length, four bytes in the machine's order, and
// JSON text. By developer.chrome.com/docs/extensions/develop/concepts/native-messaging.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "browser/tab_socket.h"

namespace orvanta {

/// Cuts a stream of bytes into messages.
class NativeMessages {
 public:
  /// A message longer than this is none of ours: the stream cannot be trusted any more.
  static constexpr std::size_t kLongest = std::size_t{1} << 20U;

  void add(std::string_view bytes) { bytes_ += bytes; }
  /// The next complete message, if there is one.
  std::optional<std::string> next();
  bool broken() const;

 private:
  std::optional<std::size_t> length() const;

  std::string bytes_;
};

/// The frame of a message.
std::string nativeMessage(std::string_view json);

/// What our extension says: {"window": number, "url": text, "title": text}, or {} when no window
/// that may be read is in front.
struct TabReport {
  std::optional<ActiveTab> tab;  ///< with URL and title cut to a sane length
  std::optional<double> window;  ///< the browser's own number for it
};

/// Anything else than what is described above counts as {}: the tab before it is no longer true.
TabReport parseReport(std::string_view json);

}  // namespace orvanta
