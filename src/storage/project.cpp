#include "storage/project.h"

#include "base/text.h"

namespace orvanta {

std::vector<std::string> parseKeywords(std::string_view list) {
  constexpr std::size_t kShortest = 3;
  std::vector<std::string> keywords;
  while (!list.empty()) {
    const auto comma = list.find(',');
    auto keyword = lowerCase(trimBlanks(list.substr(0, comma)));
    if (userCharacters(keyword) >= kShortest) keywords.push_back(std::move(keyword));
    list.remove_prefix(comma == std::string_view::npos ? list.size() : comma + 1);
  }
  return keywords;
}

Project Project::fromRow(const Row& row) {
  const Project defaults;
  return {
      .id = row.int_("id").value_or(0),
      .name = row.str("name").value_or(""),
      .color = row.str("color").value_or(defaults.color),
      .category = row.str("category").value_or(defaults.category),
      .archived = row.int_("archived") == 1,
      .keywords = parseKeywords(row.str("keywords").value_or("")),
  };
}

}  // namespace orvanta
