#include "classify/desktop_categories.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace orvanta {
namespace {

struct Row {
  std::string_view listed;
  std::optional<Category> meaning;
};

constexpr auto kWork = Category::Travail;
constexpr auto kLeisure = Category::Loisir;
constexpr auto kOther = Category::Autre;

// In the order of decision: what tells more stands above the main category that it comes with, and
// of several main categories the one that tells more above the others. Where a main category says
// little of work or leisure, it is as the built-in rules have such applications.
constexpr std::array kRows{
    Row{"WebBrowser", {}},
    Row{"Game", kLeisure},  // a game to learn by, too
    Row{"Development", kWork},
    Row{"Office", kWork},
    Row{"Science", kWork},
    Row{"Education", kWork},
    Row{"Graphics", kWork},
    Row{"TerminalEmulator", kWork},   // as Terminal
    Row{"TextEditor", kWork},         // as Code
    Row{"AudioVideoEditing", kWork},  // making, not watching: as Adobe, OBS
    Row{"Email", kWork},              // as Mail
    Row{"VideoConference", kWork},    // as zoom.us
    Row{"InstantMessaging", kOther},  // as WhatsApp, Telegram, Discord
    Row{"Chat", kOther},
    Row{"IRCClient", kOther},
    Row{"Telephony", kOther},  // as FaceTime
    Row{"AudioVideo", kLeisure},
    Row{"Audio", kLeisure},
    Row{"Video", kLeisure},
    Row{"News", kLeisure},  // as the sites of newspapers
    Row{"Feed", kLeisure},
    Row{"P2P", kOther},
    Row{"Network", kWork},    // meetings, transfers, remote screens: as zoom.us, FileZilla
    Row{"System", kOther},    // as Finder, Activity Monitor
    Row{"Settings", kOther},  // as System Settings
    Row{"Utility", kOther},   // as Calculator, Clock
};

}  // namespace

std::optional<Category> categoryOf(const std::vector<std::string>& desktopCategories) {
  const auto row = std::find_if(kRows.begin(), kRows.end(), [&](const Row& one) {
    return std::find(desktopCategories.begin(), desktopCategories.end(), one.listed) !=
           desktopCategories.end();
  });
  return row != kRows.end() ? row->meaning : std::nullopt;
}

}  // namespace orvanta
