#include "dashboard/sandbox.h"

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "base/log.h"

namespace orvanta {
namespace {

bool userNamespacesAllowed() {
  const auto child = fork();
  if (child == 0) _exit(unshare(CLONE_NEWUSER) == 0 ? 0 : 1);
  int status = 1;
  return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace

void prepareSandbox() {
  if (userNamespacesAllowed()) return;
  systemLog("Orvanta: cette machine interdit le bac à sable du moteur web, la page s’en passe");
  setenv("WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS", "1", 1);
}

}  // namespace orvanta
