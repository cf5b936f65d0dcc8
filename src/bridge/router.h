// Answers requests by name.
#pragma once

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <string_view>

#include "reports/analytics.h"

namespace orvanta {

/// The questions that the dashboard, scripts and status bars ask. One thread at a time calls it.
class Router {
 public:
  /// `analytics` outlives the router.
  explicit Router(const Analytics& analytics) : analytics_(analytics) {}

  /// The answer of the route of this exact name to the arguments in `body`. Throws AppError, also
  /// for a name that no route has.
  boost::json::value handle(std::string_view route, const boost::json::object& body) const;

 private:
  const Analytics& analytics_;
};

}  // namespace orvanta
