// Whether the program opens when the user logs in.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "base/application_id.h"

namespace orvanta {

/// The program's entry in the user's autostart folder (XDG Desktop Application Autostart
/// Specification). The file is the only state: it is read at every question. From any thread.
class LoginItem {
 public:
  /// `folder` is the autostart folder, `program` what is started.
  LoginItem(const std::filesystem::path& folder, std::filesystem::path program)
      : file_(folder / (std::string(kApplicationId) + ".desktop")), program_(std::move(program)) {}

  /// That of this user and of the running program.
  static LoginItem ofUser();

  /// Whether there is an entry and no desktop has switched it off.
  bool enabled() const;

  /// Makes or removes the entry. Yields the reason when that fails, in the user's language.
  std::optional<std::string> set(bool on) const;

 private:
  std::filesystem::path file_;
  std::filesystem::path program_;
};

}  // namespace orvanta
