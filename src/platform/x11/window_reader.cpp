#include "platform/x11/window_reader.h"

#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "base/text.h"
#include "platform/x11/compound_text.h"
#include "platform/x11/connection.h"

namespace orvanta::x11 {
namespace {

constexpr uint32_t kLongestText = 4096;  // in units of 4 bytes, as X counts property lengths
constexpr uint32_t kMostWindows = 65536;

using PropertyReply = Owned<xcb_get_property_reply_t>;

xcb_get_property_cookie_t ask(xcb_connection_t* connection, xcb_window_t window,
                              xcb_atom_t property, xcb_atom_t type, uint32_t length) {
  return xcb_get_property(connection, 0, window, property, type, 0, length);
}

PropertyReply answer(xcb_connection_t* connection, xcb_get_property_cookie_t cookie, bool& gone) {
  xcb_generic_error_t* raw = nullptr;
  PropertyReply reply(xcb_get_property_reply(connection, cookie, &raw));
  const Owned<xcb_generic_error_t> error(raw);
  if (!reply) gone = true;
  return reply;
}

std::string_view bytesOf(const xcb_get_property_reply_t* reply) {
  if (!reply || reply->format != 8) return "";  // not {}: GLib takes no null pointer
  return {static_cast<const char*>(xcb_get_property_value(reply)),
          static_cast<std::size_t>(xcb_get_property_value_length(reply))};
}

// Its bytes are the first 256 code points.
std::string fromLatin1(std::string_view bytes) {
  icu::UnicodeString text;
  for (const char c : bytes) text.append(static_cast<UChar>(static_cast<uint8_t>(c)));
  std::string utf8;
  return text.toUTF8String(utf8);
}

// Two strings, each ended by NUL; programs that forget the last NUL exist.
void splitClass(std::string_view bytes, WindowFacts& facts) {
  const auto nul = bytes.find('\0');
  facts.instance = validUtf8(bytes.substr(0, nul));
  if (nul == std::string_view::npos) return;
  bytes.remove_prefix(nul + 1);
  facts.className = validUtf8(bytes.substr(0, bytes.find('\0')));
}

}  // namespace

WindowReader::WindowReader(xcb_connection_t* connection)
    : connection_(connection), root_(rootOf(connection)), atoms_(internAtoms()) {}

WindowReader::Atoms WindowReader::internAtoms() const {
  constexpr std::array<std::string_view, 7> kNames{
      "_NET_ACTIVE_WINDOW", "_NET_CLIENT_LIST", "_NET_WM_PID",        "_NET_WM_NAME",
      "UTF8_STRING",        "COMPOUND_TEXT",    "_GTK_APPLICATION_ID"};
  std::array<xcb_intern_atom_cookie_t, kNames.size()> cookies{};
  std::transform(kNames.begin(), kNames.end(), cookies.begin(), [this](std::string_view name) {
    return xcb_intern_atom(connection_, 0, static_cast<uint16_t>(name.size()), name.data());
  });
  std::array<xcb_atom_t, kNames.size()> atoms{};
  std::transform(cookies.begin(), cookies.end(), atoms.begin(), [this](auto cookie) {
    const Owned<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection_, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
  });
  return {atoms[0], atoms[1], atoms[2], atoms[3], atoms[4], atoms[5], atoms[6]};
}

bool WindowReader::matters(xcb_atom_t property) const {
  return property == atoms_.activeWindow || property == atoms_.clientList ||
         property == atoms_.wmName || property == atoms_.wmPid ||
         property == atoms_.gtkApplicationId || property == XCB_ATOM_WM_NAME ||
         property == XCB_ATOM_WM_CLASS;
}

std::optional<xcb_window_t> WindowReader::active() const {
  const auto activeCookie = ask(connection_, root_, atoms_.activeWindow, XCB_ATOM_WINDOW, 1);
  const auto clientsCookie =
      ask(connection_, root_, atoms_.clientList, XCB_ATOM_WINDOW, kMostWindows);
  bool gone = false;
  const auto active = answer(connection_, activeCookie, gone);
  const auto clients = answer(connection_, clientsCookie, gone);
  if (gone || xcb_get_property_value_length(active.get()) != sizeof(xcb_window_t)) return {};
  const auto window = *static_cast<const xcb_window_t*>(xcb_get_property_value(active.get()));
  if (window == XCB_WINDOW_NONE) return {};
  // Some managers go on naming the last window after it is closed, and its number may by now be a
  // stranger's. Only a window that is managed can be active.
  const auto* managed = static_cast<const xcb_window_t*>(xcb_get_property_value(clients.get()));
  const auto count =
      static_cast<std::size_t>(xcb_get_property_value_length(clients.get())) / sizeof(xcb_window_t);
  if (clients->type == XCB_ATOM_WINDOW &&
      std::find(managed, managed + count, window) == managed + count) {
    return {};
  }
  return window;
}

std::string WindowReader::textOf(const xcb_get_property_reply_t* reply) const {
  auto bytes = bytesOf(reply);
  bytes = bytes.substr(0, bytes.find('\0'));  // some programs store the end of a C string
  if (reply->type == XCB_ATOM_STRING) return fromLatin1(bytes);
  if (reply->type == atoms_.compoundText) return fromCompoundText(bytes);
  return validUtf8(bytes);
}

std::optional<WindowFacts> WindowReader::read(xcb_window_t window) const {
  const auto text = [&](xcb_atom_t property, xcb_atom_t type) {
    return ask(connection_, window, property, type, kLongestText);
  };
  // All questions first, then the answers: one trip to the server.
  const auto netName = text(atoms_.wmName, atoms_.utf8String);
  const auto oldName = text(XCB_ATOM_WM_NAME, XCB_GET_PROPERTY_TYPE_ANY);
  const auto wmClass = text(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING);
  const auto gtkId = text(atoms_.gtkApplicationId, atoms_.utf8String);
  const auto pid = ask(connection_, window, atoms_.wmPid, XCB_ATOM_CARDINAL, 1);

  bool gone = false;
  const auto netNameReply = answer(connection_, netName, gone);
  const auto oldNameReply = answer(connection_, oldName, gone);
  const auto classReply = answer(connection_, wmClass, gone);
  const auto gtkIdReply = answer(connection_, gtkId, gone);
  const auto pidReply = answer(connection_, pid, gone);
  if (gone) return {};

  WindowFacts facts;
  auto title = textOf(netNameReply.get());
  if (title.empty()) title = textOf(oldNameReply.get());
  if (!title.empty()) facts.title = std::move(title);
  splitClass(bytesOf(classReply.get()), facts);
  facts.gtkApplicationId = validUtf8(bytesOf(gtkIdReply.get()));
  if (xcb_get_property_value_length(pidReply.get()) == sizeof(int32_t)) {
    facts.pid = *static_cast<const int32_t*>(xcb_get_property_value(pidReply.get()));
  }
  return facts;
}

}  // namespace orvanta::x11
