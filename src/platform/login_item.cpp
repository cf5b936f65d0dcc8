#include "platform/login_item.h"

#include <glib/gstdio.h>
#include <glibmm/fileutils.h>
#include <glibmm/keyfile.h>
#include <glibmm/miscutils.h>

#include <cerrno>

#include "base/own_file.h"
#include "base/program_files.h"

namespace orvanta {
namespace {

constexpr auto kGroup = "Desktop Entry";

// An argument of a command line as desktop entries write it: in double quotes, with what means
// something there escaped, and "%" doubled.
std::string quoted(const std::string& argument) {
  std::string text = "\"";
  for (const char c : argument) {
    if (c == '"' || c == '`' || c == '$' || c == '\\') text += '\\';
    if (c == '%') text += '%';
    text += c;
  }
  return text + '"';
}

bool flag(const Glib::RefPtr<Glib::KeyFile>& file, const char* key, bool fallback) {
  try {
    return file->get_boolean(kGroup, key);
  } catch (const Glib::Error&) {
    return fallback;
  }
}

}  // namespace

LoginItem LoginItem::ofUser() {
  return {std::filesystem::path(Glib::get_user_config_dir()) / "autostart", ownProgram()};
}

bool LoginItem::enabled() const {
  const auto file = Glib::KeyFile::create();
  try {
    file->load_from_file(file_.string());
  } catch (const Glib::Error&) {
    return false;
  }
  return file->has_group(kGroup) && !flag(file, "Hidden", false) &&
         flag(file, "X-GNOME-Autostart-enabled", true);
}

std::optional<std::string> LoginItem::set(bool on) const {
  if (!on) {
    if (g_unlink(file_.c_str()) == 0 || errno == ENOENT) return {};
    return g_strerror(errno);
  }
  const auto file = Glib::KeyFile::create();
  file->set_string(kGroup, "Type", "Application");
  file->set_string(kGroup, "Name", "Orvanta");
  file->set_string(kGroup, "Comment", "Suivi d’activité personnel");
  file->set_string(kGroup, "Exec", quoted(program_.string()));
  // No desktop is to complain once the program's package is gone.
  file->set_string(kGroup, "TryExec", program_.string());
  file->set_string(kGroup, "Icon", kApplicationId);
  file->set_boolean(kGroup, "X-GNOME-Autostart-enabled", true);
  return writeOwnFile(file_, file->to_data());
}

}  // namespace orvanta
