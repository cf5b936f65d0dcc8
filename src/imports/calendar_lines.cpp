#include "imports/calendar_lines.h"

#include <algorithm>

#include "base/text.h"

namespace orvanta {

bool CalendarLines::next() {
  if (text_.empty()) return false;
  number_ = read_ + 1;
  line_ = piece();
  while (text_.starts_with(' ') || text_.starts_with('\t')) line_ += piece().substr(1);
  return true;
}

std::string_view CalendarLines::piece() {
  const auto end = std::min(text_.find('\n'), text_.size());
  auto piece = text_.substr(0, end);
  text_.remove_prefix(std::min(end + 1, text_.size()));
  ++read_;
  if (piece.ends_with('\r')) piece.remove_suffix(1);
  return piece;
}

std::optional<Property> propertyIn(std::string_view line) {
  bool quoted = false;
  std::size_t colon = 0;
  for (; colon < line.size() && (quoted || line[colon] != ':'); ++colon) {
    if (line[colon] == '"') quoted = !quoted;
  }
  if (colon == line.size()) return {};
  const auto head = line.substr(0, colon);
  const auto end = std::min(head.find(';'), head.size());
  return Property{lowerCase(head.substr(0, end)), std::string(head.substr(end)),
                  std::string(line.substr(colon + 1))};
}

std::string plainText(std::string_view value) {
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const bool escaped = value[i] == '\\' && i + 1 < value.size();
    if (escaped) ++i;
    text += escaped && (value[i] == 'n' || value[i] == 'N') ? ' ' : value[i];
  }
  return text;
}

}  // namespace orvanta
