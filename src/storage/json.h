// Small bridges between the records and Boost.JSON.
#pragma once

#include <boost/json/value.hpp>
#include <optional>

#include "base/string_pool.h"

namespace orvanta {

inline boost::json::value jsonOrNull(Text text) {
  return text ? boost::json::value(text.view()) : boost::json::value(nullptr);
}

template <class T>
boost::json::value jsonOrNull(const std::optional<T>& value) {
  return value ? boost::json::value(*value) : boost::json::value(nullptr);
}

}  // namespace orvanta
