// How the user adds our extension to a browser, and what may be in the way.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "browser/browsers.h"

namespace orvanta {

/// One thing to do in the browser.
struct SetupStep {
  std::string text;    ///< what, in French
  std::string copy;    ///< the address, setting or file that it takes; "" for none
  std::string button;  ///< what a button says that opens `page`; "" where there is none
  std::string page;    ///< what openingCommand() is told
  bool done = false;   ///< as far as that can be seen from outside
};

/// What is to be done, in order, until the extension connects by itself. `pid` is the main process
/// of this browser, 0 when it does not run; `data` the folder with the extension. Empty where an
/// obstacle is in the way. Any thread.
std::vector<SetupStep> setupSteps(const Browser& browser, int32_t pid,
                                  const std::filesystem::path& data);

/// Why our extension does not help with this browser, and what does, in French; "" when it does.
/// Any thread.
std::string setupObstacle(const Browser& browser, int32_t pid);

/// The command that has the running browser open a page: its own program in its own profile, which
/// hands the page over and ends. Empty when the process is gone.
std::vector<std::string> openingCommand(int32_t pid, const std::string& page);

}  // namespace orvanta
