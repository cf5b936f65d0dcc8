#include "app/command_line.h"

#include <giomm/appinfo.h>
#include <glibmm/convert.h>

#include "base/log.h"
#include "platform/desktop_actions.h"

namespace orvanta {
namespace {

void open(const std::string& uri) {
  try {
    Gio::AppInfo::launch_default_for_uri(uri);
  } catch (const Glib::Error& error) {
    systemLog(std::string("Orvanta: ouverture impossible : ") + error.what());
  }
}

}  // namespace

void CommandLine::tell(const std::string& sentence) {
  systemLog("Orvanta: " + sentence);
}

void CommandLine::openUrl(const std::string& url) {
  if (const auto address = openable(url)) open(*address);
}

void CommandLine::openFile(const std::filesystem::path& file) {
  open(Glib::filename_to_uri(file.string()));
}

bool CommandLine::reveal(const std::filesystem::path& file) {
  if (!showsFolders()) return false;
  openFile(file.parent_path());
  return true;
}

}  // namespace orvanta
