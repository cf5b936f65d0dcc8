#include "capture/browser_connection.h"

namespace orvanta {

ScriptResult BrowserConnection::test(const std::string& bundle) {
  const auto* browser = findBrowser(bundle);
  if (!browser) return {{}, "navigateur inconnu"};
  const auto problem = setup_.connect(*browser);
  if (!problem.empty()) return {{}, "Impossible de préparer le navigateur : " + problem};
  auto result = tabs_.test(bundle);
  if (!result.output && !result.givenUp) {
    result.error = "Pas de réponse (" + result.error + "). " + setup_.advice(*browser);
  }
  return result;
}

}  // namespace orvanta
