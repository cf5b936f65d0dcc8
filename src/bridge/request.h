// A question of the dashboard page, and how it is answered.
#pragma once

#include <boost/json/object.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "bridge/router.h"

namespace orvanta {

/// What the page posts: {"id": integer, "path": text, "body": object}. Without a body, or with one
/// that is no object, the body is empty.
struct Request {
  int64_t id = 0;  ///< the page's number of the question
  std::string path;
  boost::json::object body;
};

/// Reads an envelope. Absent, and to be ignored, when the text is not JSON (objects and lists may
/// nest 500 deep) or lacks an integer "id" or a textual "path".
std::optional<Request> parseRequest(std::string_view text);

/// An answer as JSON text on one line, always valid UTF-8.
struct Answer {
  std::string json;
  /// It has an "error", or says that not all was stored, written or read.
  bool failed = false;
};

/// The router's answer, or its error. What JSON cannot express (an infinite number) becomes "{}".
Answer answer(Router& router, std::string_view path, const boost::json::object& body);

/// The answer of one that failed with this message.
Answer failure(std::string_view message);

}  // namespace orvanta
