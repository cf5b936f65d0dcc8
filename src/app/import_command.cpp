#include "app/import_command.h"

#include <fmt/format.h>

#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <cstdio>
#include <filesystem>
#include <optional>

#include "base/child_process.h"
#include "base/display_text.h"
#include "base/exact_json.h"
#include "base/program_files.h"
#include "base/text.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr std::size_t kLongest = 60;

// Whoever has the store answers: the program that runs, or one of our own.
json::object ask(const char* route, const json::object& body) {
  constexpr double kPatience = 300;  // seconds
  const auto result = runChild(
      {.words = {ownProgram().string(), "--call", route, json::serialize(body)}}, kPatience);
  auto answer = parseJson(result.output);
  if (answer && answer->is_object()) return std::move(answer->get_object());
  return {{"error", "pas de réponse"}};
}

std::optional<std::string> problemOf(const json::object& answer) {
  for (const auto* key : {"error", "message", "problem"}) {
    const auto* value = answer.if_contains(key);
    if (value && value->is_string()) return std::string(value->get_string());
  }
  return {};
}

int failed(const std::string& problem) {
  fmt::print(stderr, "Orvanta\u00a0: {}\n", problem);
  return 1;
}

double number(const json::object& object, const char* key) {
  const auto* value = object.if_contains(key);
  return value && value->is_number() ? value->to_number<double>() : 0;
}

std::string textIn(const json::object& object, const char* key) {
  const auto* value = object.if_contains(key);
  return value && value->is_string() ? oneLine(value->get_string(), kLongest) : std::string();
}

template <class Print>
void each(const json::object& object, const char* key, const Print& print) {
  const auto* value = object.if_contains(key);
  if (!value || !value->is_array()) return;
  for (const auto& entry : value->get_array()) {
    if (entry.is_object()) print(entry.get_object());
  }
}

void tell(const json::object& preview) {
  const auto* mapping = preview.if_contains("mapping");
  const auto* columns = preview.if_contains("columns");
  if (mapping && mapping->is_object() && columns && columns->is_array()) {
    for (const auto& [name, index] : mapping->get_object()) {
      const auto& list = columns->get_array();
      const auto* column = index.is_int64() ? list.if_contains(index.get_int64()) : nullptr;
      if (!column || !column->is_object()) continue;
      fmt::print("{:<12}{}\n", std::string(name), textIn(column->get_object(), "name"));
    }
  }
  each(preview, "months", [](const json::object& month) {
    fmt::print("{}  {:>9} lues, {:>9} à ajouter\n", textIn(month, "month"),
               fmtDur(number(month, "seconds")), fmtDur(number(month, "fills")));
  });
  each(preview, "rejected", [](const json::object& rejected) {
    fmt::print("écarté\u00a0: {} ({} fois, la première ligne {})\n", textIn(rejected, "reason"),
               number(rejected, "count"), number(rejected, "line"));
  });
}

}  // namespace

int importCommand(const std::vector<std::string>& words) {
  if (words.size() != 1) {
    fmt::print(stderr, "usage\u00a0: orvanta --import FICHIER\n");
    return 2;
  }
  std::error_code ignored;
  const json::object what{
      {"file", validUtf8(std::filesystem::absolute(words.front(), ignored).string())}};
  const auto preview = ask("import.preview", what);
  if (const auto problem = problemOf(preview)) return failed(*problem);
  tell(preview);
  if (number(preview, "spans") == 0) return failed("rien à ajouter\u00a0: tout est déjà couvert");
  const auto done = ask("import.run", what);
  if (const auto problem = problemOf(done)) return failed(*problem);
  fmt::print(
      "Activités ajoutées\u00a0: {}, {}. L’historique de l’application annule tout d’un coup.\n",
      number(done, "spans"), fmtDur(number(done, "seconds")));
  return 0;
}

}  // namespace orvanta
