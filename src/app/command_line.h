// The surroundings of a single call from the command line.
#pragma once

#include "bridge/shell.h"

namespace orvanta {

/// There is no window and no menu, and nobody to be asked: what concerns them does nothing.
class CommandLine : public Shell {
 public:
  void post(std::function<void()> task) override { task(); }
  void quit() override {}
  void showDashboard(const std::string& /*activationToken*/, const std::string& /*day*/) override {}
  void prepareDashboard() override {}
  void refreshMenu() override {}
  void tell(const std::string& sentence) override;
  void openUrl(const std::string& url) override;
  void openFile(const std::filesystem::path& file) override;
  bool reveal(const std::filesystem::path& file) override;
  std::optional<std::filesystem::path> saveAs(const std::string& /*suggestedName*/) override {
    return {};
  }
  std::optional<std::filesystem::path> chooseFile() override { return {}; }
};

}  // namespace orvanta
