#include "tab/accessibility.h"

#include <gio/gio.h>

#include <algorithm>
#include <deque>
#include <memory>
#include <string>

namespace orvanta {
namespace {

constexpr int kPatienceMilliseconds = 500;
constexpr auto kAccessible = "org.a11y.atspi.Accessible";

// Numbers of the protocol, as in the header atspi-constants.h of at-spi2-core.
constexpr uint32_t kStateActive = 1;
constexpr uint32_t kStateShowing = 25;
constexpr uint32_t kRelationEmbeds = 13;
constexpr uint32_t kRoleDocumentWeb = 95;

struct Free {
  void operator()(GVariant* value) const { g_variant_unref(value); }
  void operator()(GDBusConnection* bus) const { g_object_unref(bus); }
  void operator()(GError* error) const { g_error_free(error); }
  void operator()(GVariantIter* iterator) const { g_variant_iter_free(iterator); }
};
using Variant = std::unique_ptr<GVariant, Free>;

// An object of an application.
struct Object {
  std::string owner;
  std::string path;
};

class Bus {
 public:
  explicit Bus(GDBusConnection* bus) : bus_(bus) {}
  explicit operator bool() const { return bus_ != nullptr; }

  // Null when there is no answer of that type. Takes `arguments`, which may be floating.
  Variant call(const Object& object, const char* interface, const char* method, const char* type,
               GVariant* arguments = nullptr) const {
    GError* raw = nullptr;
    Variant reply(g_dbus_connection_call_sync(bus_.get(), object.owner.c_str(), object.path.c_str(),
                                              interface, method, arguments, G_VARIANT_TYPE(type),
                                              G_DBUS_CALL_FLAGS_NO_AUTO_START,
                                              kPatienceMilliseconds, nullptr, &raw));
    const std::unique_ptr<GError, Free> error(raw);
    mute_ = mute_ || g_error_matches(raw, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE ||
            g_error_matches(raw, G_DBUS_ERROR, G_DBUS_ERROR_NO_REPLY) != FALSE;
    return reply;
  }

  // Whether anybody did not answer in time.
  bool mute() const { return mute_; }

  Variant property(const Object& object, const char* interface, const char* name) const {
    const auto reply = call(object, "org.freedesktop.DBus.Properties", "Get", "(v)",
                            g_variant_new("(ss)", interface, name));
    if (!reply) return {};
    GVariant* value = nullptr;
    g_variant_get(reply.get(), "(v)", &value);
    return Variant(value);
  }

 private:
  std::unique_ptr<GDBusConnection, Free> bus_;
  mutable bool mute_ = false;
};

// The bus that the accessible applications meet on; none when accessibility is off.
Bus accessibilityBus(const Bus& session) {
  if (!session) return Bus(nullptr);
  const Object service{"org.a11y.Bus", "/org/a11y/bus"};
  const auto enabled = session.property(service, "org.a11y.Status", "IsEnabled");
  if (!enabled || !g_variant_is_of_type(enabled.get(), G_VARIANT_TYPE_BOOLEAN) ||
      g_variant_get_boolean(enabled.get()) == FALSE) {
    return Bus(nullptr);
  }
  const auto reply = session.call(service, "org.a11y.Bus", "GetAddress", "(s)");
  if (!reply) return Bus(nullptr);
  const char* address = nullptr;
  g_variant_get(reply.get(), "(&s)", &address);
  constexpr auto kFlags =
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
  return Bus(g_dbus_connection_new_for_address_sync(address, kFlags, nullptr, nullptr, nullptr));
}

class Tree {
 public:
  explicit Tree(const Bus& bus) : bus_(bus) {}

  std::vector<Object> applications() const {
    return children({"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"});
  }

  int32_t processOf(const Object& application) const {
    const auto reply = bus_.call({"org.freedesktop.DBus", "/org/freedesktop/DBus"},
                                 "org.freedesktop.DBus", "GetConnectionUnixProcessID", "(u)",
                                 g_variant_new("(s)", application.owner.c_str()));
    guint32 pid = 0;
    if (reply) g_variant_get(reply.get(), "(u)", &pid);
    return static_cast<int32_t>(pid);
  }

  std::vector<Object> children(const Object& object) const {
    const auto reply = bus_.call(object, kAccessible, "GetChildren", "(a(so))");
    std::vector<Object> found;
    if (!reply) return found;
    GVariantIter* raw = nullptr;
    g_variant_get(reply.get(), "(a(so))", &raw);
    const std::unique_ptr<GVariantIter, Free> iterator(raw);
    append(*iterator, found);
    return found;
  }

  bool hasState(const Object& object, uint32_t state) const {
    constexpr uint32_t kBits = 32;
    const auto reply = bus_.call(object, kAccessible, "GetState", "(au)");
    if (!reply) return false;
    GVariantIter* raw = nullptr;
    g_variant_get(reply.get(), "(au)", &raw);
    const std::unique_ptr<GVariantIter, Free> iterator(raw);
    guint32 word = 0;
    for (uint32_t first = 0; g_variant_iter_next(iterator.get(), "u", &word) != FALSE;
         first += kBits) {
      if (state >= first && state < first + kBits) return ((word >> (state - first)) & 1U) != 0;
    }
    return false;
  }

  uint32_t role(const Object& object) const {
    const auto reply = bus_.call(object, kAccessible, "GetRole", "(u)");
    guint32 role = 0;
    if (reply) g_variant_get(reply.get(), "(u)", &role);
    return role;
  }

  std::string name(const Object& object) const {
    const auto value = bus_.property(object, kAccessible, "Name");
    if (!value || !g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING)) return {};
    return g_variant_get_string(value.get(), nullptr);
  }

  std::string attribute(const Object& document, const char* attribute) const {
    const auto reply = bus_.call(document, "org.a11y.atspi.Document", "GetAttributeValue", "(s)",
                                 g_variant_new("(s)", attribute));
    const char* value = "";
    if (reply) g_variant_get(reply.get(), "(&s)", &value);
    return value;
  }

  // The page that a window shows.
  std::optional<Object> document(const Object& frame) const {
    if (auto embedded = embeddedBy(frame)) return embedded;
    return searchDocument(frame);
  }

 private:
  static void append(GVariantIter& iterator, std::vector<Object>& found) {
    const char* owner = nullptr;
    const char* path = nullptr;
    while (g_variant_iter_next(&iterator, "(&s&o)", &owner, &path) != FALSE) {
      found.push_back({owner, path});
    }
  }

  std::optional<Object> embeddedBy(const Object& frame) const {
    const auto reply = bus_.call(frame, kAccessible, "GetRelationSet", "(a(ua(so)))");
    if (!reply) return {};
    GVariantIter* raw = nullptr;
    g_variant_get(reply.get(), "(a(ua(so)))", &raw);
    const std::unique_ptr<GVariantIter, Free> relations(raw);
    guint32 relation = 0;
    GVariantIter* rawTargets = nullptr;
    while (g_variant_iter_next(relations.get(), "(ua(so))", &relation, &rawTargets) != FALSE) {
      const std::unique_ptr<GVariantIter, Free> targets(rawTargets);
      std::vector<Object> found;
      append(*targets, found);
      if (relation == kRelationEmbeds && !found.empty()) return found.front();
    }
    return {};
  }

  // Browsers whose frame does not point to its page: the first page that is on the screen. Pages
  // are not entered, so the walk sees the browser's own controls only.
  std::optional<Object> searchDocument(const Object& frame) const {
    constexpr int kMostObjects = 500;
    std::deque<Object> open{frame};
    for (int seen = 0; !open.empty() && seen < kMostObjects; ++seen) {
      const auto object = open.front();
      open.pop_front();
      if (role(object) != kRoleDocumentWeb) {
        for (auto& child : children(object)) open.push_back(std::move(child));
      } else if (hasState(object, kStateShowing)) {
        return object;
      }
    }
    return {};
  }

  const Bus& bus_;
};

ActiveTab tabOf(const Tree& tree, const Object& document) {
  ActiveTab tab;
  for (const auto* key : {"URI", "DocURL"}) {  // Chromium; Firefox and WebKit
    if (tab.url.empty()) tab.url = tree.attribute(document, key);
  }
  tab.title = tree.attribute(document, "Title");
  if (tab.title.empty()) tab.title = tree.name(document);
  return tab;
}

// The window of the application that says that it is active.
std::optional<Object> activeFrame(const Tree& tree, const Object& application) {
  for (auto& frame : tree.children(application)) {
    if (tree.hasState(frame, kStateActive)) return std::move(frame);
  }
  return {};
}

// Screen readers are told the same title, with a mark behind it if the window is private. Where two
// windows could be meant and one of them is private, none is.
std::optional<Object> frameWithTitle(const Browser& browser, const Tree& tree,
                                     const Object& application, const std::string& title) {
  std::optional<Object> found;
  for (auto& frame : tree.children(application)) {
    const auto name = tree.name(frame);
    if (!name.starts_with(title)) continue;
    if (!showsPublicFrame(browser, name)) return {};
    if (!found) found = std::move(frame);
  }
  return found;
}

std::optional<Object> frontFrame(const Browser& browser, const Tree& tree,
                                 const Object& application,
                                 const std::optional<std::string>& title) {
  if (browser.kind == BrowserKind::kChromium) {
    return title && !title->empty() ? frameWithTitle(browser, tree, application, *title)
                                    : std::nullopt;
  }
  auto frame = activeFrame(tree, application);
  return frame && showsPublicFrame(browser, tree.name(*frame)) ? frame : std::nullopt;
}

}  // namespace

AccessibleAnswer readAccessibleTab(const Browser& browser, const std::vector<int32_t>& pids,
                                   const std::optional<std::string>& windowTitle) {
  using Kind = AccessibleAnswer::Kind;
  const Bus session(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  const auto bus = accessibilityBus(session);
  if (!bus) return {.kind = session.mute() ? Kind::kMute : Kind::kOff, .tab = {}};
  const Tree tree(bus);
  AccessibleAnswer answer{.kind = Kind::kUnknown, .tab = {}};
  for (const auto& application : tree.applications()) {
    if (std::find(pids.begin(), pids.end(), tree.processOf(application)) == pids.end()) continue;
    answer.kind = Kind::kState;
    const auto frame = frontFrame(browser, tree, application, windowTitle);
    const auto document = frame ? tree.document(*frame) : std::nullopt;
    // The page is of that very window, whatever comes to the front meanwhile.
    if (document) answer.tab = tabOf(tree, *document);
    if (answer.tab) return answer;
  }
  if (bus.mute()) answer.kind = Kind::kMute;
  return answer;
}

}  // namespace orvanta
