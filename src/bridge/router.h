// Answers requests by name.
#pragma once

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <span>
#include <string_view>

namespace orvanta {

class Body;
struct Core;

enum class RouteKind {
  Read,   ///< changes nothing that another route tells
  Write,  ///< afterwards, earlier answers may be out of date
  Ask     ///< the same, and takes as long as the user, a browser or the disk does
};

/// What the route does, as the dashboard is told it: "read", "write", "ask".
std::string_view nameOf(RouteKind kind);

struct Route {
  std::string_view name;
  RouteKind kind;
  boost::json::value (*answer)(Core& core, const Body& body);
  std::string_view arguments;  ///< by name, for whoever asks by hand; "" for none
};

/// Everything that the dashboard, scripts and status bars can ask or have done. An answer to what
/// could not be stored has "stored": false and a "message" that says why; a report that is not
/// whole has "incomplete", a sentence.
class Router {
 public:
  /// `core` outlives it.
  explicit Router(Core& core) : core_(core) {}

  /// Every route, by subject.
  static std::span<const Route* const> routes();
  /// Null for a name that no route has. Any thread.
  static const Route* find(std::string_view name);

  /// The answer of the route of this exact name to the arguments in `body`. Throws AppError, also
  /// for a name that no route has. One thread at a time calls routes that read or write; of those
  /// that ask, each may be answered on a thread of its own.
  boost::json::value handle(std::string_view route, const boost::json::object& body);

 private:
  Core& core_;
};

}  // namespace orvanta
