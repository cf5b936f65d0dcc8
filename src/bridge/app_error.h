// The one error that the user is shown.
#pragma once

#include <stdexcept>
#include <string>

namespace orvanta {

/// A request that could not be carried out; `what()` is the French message for the user.
class AppError : public std::runtime_error {
 public:
  explicit AppError(const std::string& msg) : std::runtime_error(msg) {}
};

}  // namespace orvanta
