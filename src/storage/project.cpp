#include "storage/project.h"

#include "base/folded.h"
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

void spellClientsAlike(Projects& projects) {
  std::map<std::string, std::string> spellings;
  for (auto& [id, project] : projects) {
    const std::string client(trimBlanks(project.client));
    project.client = spellings.emplace(folded(client), client).first->second;
  }
}

Project Project::read(const Cursor& row) {
  const auto text = [&](const char* name) { return row.str(row.column(name)); };
  const Project defaults;
  return {
      .id = row.int_(row.column("id")).value_or(0),
      .name = std::string(text("name").value_or("")),
      .color = std::string(text("color").value_or(defaults.color)),
      .category = std::string(text("category").value_or(defaults.category)),
      .archived = row.int_(row.column("archived")) == 1,
      .keywords = parseKeywords(text("keywords").value_or("")),
      .client = std::string(text("client").value_or("")),
  };
}

}  // namespace orvanta
