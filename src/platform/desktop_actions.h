// What the desktop does for the program at the user's wish.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "base/log.h"
#include "dbus/bus.h"

namespace orvanta {

/// A web or mail address, its scheme in small letters; absent for any other, which could start
/// anything.
std::optional<std::string> openable(const std::string& url);

/// Opens a web or mail address in the user's program for it, and nothing else. Main thread; returns
/// at once, a failure is logged.
void openUrl(const std::string& url, const Log& log);

/// Opens a file of ours in the user's program for it. Main thread; returns at once, a failure is
/// logged.
void openFile(const std::filesystem::path& file, const Log& log);

/// Whether some application shows folders. Any thread.
bool showsFolders();

/// Shows the file in the file manager (org.freedesktop.FileManager1), or where none answers on
/// `session` opens its folder. Main thread; returns at once.
void revealFile(const dbus::Bus& session, const std::filesystem::path& file, const Log& log);

}  // namespace orvanta
