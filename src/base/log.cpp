#include "base/log.h"

#include <glib.h>

namespace orvanta {

void systemLog(const std::string& line) {
  // As a field value: the line may hold window titles and must not be read as a format.
  g_log_structured(G_LOG_DOMAIN, G_LOG_LEVEL_MESSAGE, "MESSAGE", "%s", line.c_str());
}

}  // namespace orvanta
