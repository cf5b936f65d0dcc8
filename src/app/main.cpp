// orvanta: records what is in front, and answers questions about it.
#include <giomm/init.h>
#include <glib.h>
#include <malloc.h>

#include <cstdio>
#include <optional>

#include "app/application.h"
#include "app/commands.h"
#include "app/handover.h"

namespace {

using namespace orvanta;

bool printed = false;

// GLib would convert to the locale's character set; JSON is UTF-8 wherever it goes.
void printAsIs(const char* text) {
  printed = true;
  std::fputs(text, stdout);
}

// Ends, or goes on in a fresh image. That one has a right to the data, so it does not give way to a
// start of the program that has the name for the moment in which it is turned away.
int record(int argc, char** argv, const std::optional<Handover>& left) {
  constexpr int kAttempts = 20;
  constexpr unsigned long kPause = 100'000;  // microseconds
  for (int attempt = 1;; ++attempt) {
    Application application(left);
    const int status = application.run(argc, argv);
    if (application.handover()) {
      handOver(*application.handover());
      systemLog("Orvanta: impossible de reprendre avec le nouveau bus de session");
      return 1;
    }
    if (const auto& call = application.call()) {
      if (status == kAnswerYourself) return answerHere(*call);
      return printed ? status : tellUnanswered();
    }
    if (!left || application.started() || status == 0 || attempt == kAttempts) return status;
    g_usleep(kPause);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const auto left = takeHandover();
  // The threads take turns: an arena for each would only hold on to what it once needed.
  mallopt(M_ARENA_MAX, 1);
  g_set_print_handler(printAsIs);
  Gio::init();
  return record(argc, argv, left);
}
