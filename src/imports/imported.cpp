#include "imports/imported.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/cut.h"
#include "base/text.h"

namespace orvanta {
namespace {

// One line of it, as it may be stored and shown.
void tidy(std::string& text) {
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7f; }, ' ');
  text = std::string(firstBytes(trimBlanks(validUtf8(text)), kLongestTitle));
}

}  // namespace

void Imported::reject(const std::string& reason, std::size_t line) {
  auto& entry = rejected[reason];
  if (entry.count++ == 0) entry.line = line;
}

void Imported::take(ImportedEvent event, std::size_t line) {
  constexpr double kFirst = 631152000;    // 1990
  constexpr double kLast = 4102444800;    // 2100
  constexpr double kLongest = 24 * 3600;  // seconds
  constexpr double kShortest = 1;
  const double seconds = event.end - event.start;
  if (!(event.start >= kFirst && event.end <= kLast)) return reject("date hors limites", line);
  if (seconds < 0) return reject("la fin précède le début", line);
  if (seconds < kShortest) return reject("sans durée", line);
  if (seconds > kLongest) return reject("dure plus d’un jour", line);
  if (events.size() >= kMostImported) return reject("au-delà de 200 000 activités", line);
  for (auto* text :
       {&event.app, &event.title, &event.url, &event.domain, &event.category, &event.project}) {
    tidy(*text);
  }
  events.push_back(std::move(event));
}

}  // namespace orvanta
