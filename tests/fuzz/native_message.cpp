// What a browser's extension writes to orvanta-tab.
#include "tab/native_messages.h"

#include <vector>

#include "base/cut.h"
#include "fuzz/fuzz.h"

namespace orvanta::fuzz {
namespace {

std::vector<std::string> messagesIn(NativeMessages& stream, std::string_view bytes) {
  std::vector<std::string> list;
  stream.add(bytes);
  while (auto message = stream.next()) list.push_back(std::move(*message));
  return list;
}

}  // namespace

void target(std::string_view input) {
  NativeMessages whole;
  const auto messages = messagesIn(whole, input);

  NativeMessages pieces;
  std::vector<std::string> same;
  for (std::size_t at = 0, size = 1; at < input.size(); at += size, size = size % 7 + 1) {
    for (auto& message : messagesIn(pieces, input.substr(at, size))) same.push_back(message);
  }
  hold(same == messages && pieces.broken() == whole.broken(), "pieces make the same messages");

  std::string frames;
  for (const auto& message : messages) frames += nativeMessage(message);
  hold(input.starts_with(frames), "a frame is what was read", frames);

  for (const auto& message : messages) {
    const auto [tab, window] = parseReport(message);
    hold(tab.has_value() == window.has_value(), "a tab has a window", message);
    if (!tab) continue;
    hold(tab->url.find('\n') == std::string::npos, "the address is one line", tab->url);
    hold(tab->url.size() <= 8192 && tab->title.size() <= kLongestTitle, "texts are cut", message);
    holdUtf8(tab->url, "the address is UTF-8");
    holdUtf8(tab->title, "the title is UTF-8");
  }
}

}  // namespace orvanta::fuzz
