// What the program asks of whoever runs it.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace orvanta {

/// The surroundings of the core: the resident program with its tray and window, or a single call
/// from the command line. All may be called from any thread. But for saveAs() they return at once
/// and act later, on the main thread; the command line acts at once.
class Shell {
 public:
  virtual ~Shell() = default;

  /// Runs `task` on the main thread.
  virtual void post(std::function<void()> task) = 0;
  /// Ends the program; answers that are on their way still go out.
  virtual void quit() = 0;
  /// Opens the window or brings it to the front. Wayland lets it come to the front only with the
  /// token of what the user clicked on (xdg-activation-v1); "" where there is none. The page shows
  /// this day ("yyyy-MM-dd") then; "": what it showed last.
  virtual void showDashboard(const std::string& activationToken, const std::string& day = {}) = 0;
  /// The window will probably be wanted soon: what takes long before it can open is done now.
  virtual void prepareDashboard() = 0;
  /// What the menu shows may have changed.
  virtual void refreshMenu() = 0;
  /// Shows the user a French sentence.
  virtual void tell(const std::string& sentence) = 0;
  /// Opens a web or mail address in the user's program for it, and no other address.
  virtual void openUrl(const std::string& url) = 0;
  /// Opens a file of ours in the user's program for it.
  virtual void openFile(const std::filesystem::path& file) = 0;
  /// Shows a file in the file manager. False when there is none; whether that one shows it is not
  /// waited for.
  virtual bool reveal(const std::filesystem::path& file) = 0;
  /// Lets the user choose where to save, and blocks until then; not on the main thread. Absent when
  /// that was cancelled or there is no window to ask in; "" for a place that has no path here.
  virtual std::optional<std::filesystem::path> saveAs(const std::string& suggestedName) = 0;
  /// Likewise, a store file that is there.
  virtual std::optional<std::filesystem::path> chooseFile() = 0;
};

}  // namespace orvanta
