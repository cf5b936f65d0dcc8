#include "capture/browser_connection.h"

#include <algorithm>

namespace orvanta {

std::vector<BrowserState> BrowserConnection::states() const {
  std::vector<BrowserState> states;
  const auto add = [&](const Browser* browser, int32_t pid) {
    const bool connected = pid > 0 && tabs_.isConnected(pid);
    const auto known = std::find_if(states.begin(), states.end(), [&](const BrowserState& state) {
      return state.browser == browser;
    });
    if (known == states.end()) {
      states.push_back({browser, pid, connected});
    } else if (pid > 0 && connected >= known->connected) {
      *known = {browser, pid, connected};
    }
  };
  for (const auto& running : running_()) add(running.browser, running.pid);
  for (const auto* browser : setup_.installed()) add(browser, 0);
  for (auto& state : states) {
    state.obstacle = setupObstacle(*state.browser, state.pid);
    state.steps = setupSteps(*state.browser, state.pid, setup_.data());
  }
  return states;
}

std::string BrowserConnection::connect(const std::string& bundle) const {
  const auto* browser = findBrowser(bundle);
  if (!browser) return "navigateur inconnu";
  const auto problem = setup_.connect(*browser);
  return problem.empty() ? "" : "Impossible de préparer le navigateur : " + problem;
}

std::string BrowserConnection::openPage(const std::string& bundle, std::size_t step) const {
  constexpr double kPatience = 10;  // seconds
  const auto* browser = findBrowser(bundle);
  if (!browser) return "navigateur inconnu";
  const auto pid = processOf(*browser);
  const auto steps = setupSteps(*browser, pid, setup_.data());
  if (step >= steps.size() || steps[step].page.empty()) return "cette étape n’ouvre pas de page";
  const auto command = openingCommand(pid, steps[step].page);
  const std::string name(browser->name);
  if (command.empty()) return "Ouvrez d’abord " + name + ".";
  const auto child = runChild_({command, {}}, kPatience);
  if (child.launchError.empty() && !child.timedOut && child.status == 0) return {};
  return name + " n’a pas ouvert la page.";
}

ScriptResult BrowserConnection::test(const std::string& bundle) {
  const auto* browser = findBrowser(bundle);
  if (!browser) return {{}, "navigateur inconnu"};
  // An extension that was there first connects within seconds.
  const bool patient = !setup_.isPrepared(*browser);
  if (const auto problem = connect(bundle); !problem.empty()) return {{}, problem};
  auto result = tabs_.test(bundle, patient);
  if (!result.output && !result.givenUp) {
    result.error = "Pas de réponse (" + result.error + "). " + advice(*browser);
  }
  return result;
}

std::string BrowserConnection::advice(const Browser& browser) const {
  const auto pid = processOf(browser);
  const auto obstacle = setupObstacle(browser, pid);
  if (!obstacle.empty()) return obstacle;
  const std::string name(browser.name);
  return pid > 0 ? "Ajoutez l’extension Orvanta à " + name + "."
                 : "Ouvrez " + name + ", puis recommencez.";
}

int32_t BrowserConnection::processOf(const Browser& browser) const {
  int32_t last = 0;
  for (const auto& running : running_()) {
    if (running.browser == &browser) last = running.pid;
  }
  return last;
}

}  // namespace orvanta
