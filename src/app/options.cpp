#include "app/options.h"

#include <algorithm>
#include <array>
#include <memory>

#include "bridge/router.h"

namespace orvanta {
namespace {

struct Option {
  const char* name;
  const char* description;
};

constexpr std::array kOptions{
    Option{"show", "ouvre le tableau de bord"},
    Option{"pause", "met le suivi en pause ; 15m, 1h ou demain : jusque-là"},
    Option{"resume", "reprend le suivi"},
    Option{"call",
           "ROUTE [JSON] : affiche la réponse d’une route ; - : répond à chaque ligne de l’entrée"},
    Option{"bar", "waybar, i3blocks ou text : affiche une ligne à chaque changement ; voir --once"},
    Option{"watch", "affiche l’état en JSON, une ligne à chaque changement"},
    Option{"once", "une seule ligne, avec --bar ou --watch"},
    Option{"export", "DU AU [FICHIER] : écrit les activités de ces jours (AAAA-MM-JJ) en CSV"},
    Option{"import", "FICHIER : ajoute ce qu’un autre programme a noté (CSV, ICS, JSON)"},
    Option{"search", "TEXTE : dit quand cela a été fait, dans toutes les années"},
    Option{"report", "PÉRIODE : dit à quoi ces jours sont passés (2026-10, 2026-W43, 2026…)"},
    Option{"sheet", "PÉRIODE : affiche la feuille de temps ; voir --client et --format"},
    Option{"check", "dit si la base et ses sauvegardes sont intactes"},
    Option{"backup", "FICHIER : copie la base, vérifiée, dans un nouveau fichier"},
    Option{"take-all", "FICHIER : tout emporter vers un autre ordinateur, dans un nouveau fichier"},
    Option{"restore", "FICHIER : remet cette copie à la place de la base, qui est gardée"},
    Option{"connect-browsers", "prépare les navigateurs, dit comment ajouter l’extension"},
    Option{"accessibility", "active l’accessibilité du bureau, pour lire l’onglet sans extension"},
    Option{"version", "affiche la version"},
};

// Those that take a word of their own.
constexpr std::array kValues{
    Option{"client", "seulement les projets de ce client, avec --sheet"},
    Option{"format", "text, csv, csv_plain, json ou ics, avec --sheet"},
};

// Only --help shows it, yet GLib wants it beforehand.
std::string routesInWords() {
  constexpr std::size_t kColumn = 34;
  std::string text = "Routes de --call, et les clés de leur objet JSON :\n";
  for (const auto* route : Router::routes()) {
    std::string line = "  " + std::string(route->name);
    if (!route->arguments.empty()) line.resize(std::max(kColumn, line.size() + 2), ' ');
    text += line.append(route->arguments) + "\n";
  }
  return text;
}

}  // namespace

void Options::addTo(Gio::Application& application) {
  using Type = Gio::Application::OptionType;
  for (const auto& [name, description] : kOptions) {
    application.add_main_option_entry(Type::BOOL, name, '\0', description);
  }
  for (const auto& [name, description] : kValues) {
    application.add_main_option_entry(Type::FILENAME, name, '\0', description, "MOT");
  }
  application.add_main_option_entry(Type::FILENAME_VECTOR, G_OPTION_REMAINING);
  application.set_option_context_parameter_string("[MOT…]");
  application.set_option_context_summary(
      "Enregistre votre activité jusqu’à l’arrêt ; déjà en marche, ouvre le tableau de bord.");
  application.set_option_context_description(routesInWords());
}

Options::Options(GVariantDict* parsed) {
  for (const auto& [name, description] : kOptions) {
    gboolean given = FALSE;
    if (g_variant_dict_lookup(parsed, name, "b", &given) && given) given_.emplace_back(name);
  }
  for (const auto& [name, description] : kValues) {
    const char* value = nullptr;  // the bytes that were typed, whatever the language is
    if (g_variant_dict_lookup(parsed, name, "^&ay", &value)) values_[name] = value;
  }
  const std::unique_ptr<GVariant, decltype(&g_variant_unref)> words(
      g_variant_dict_lookup_value(parsed, G_OPTION_REMAINING, G_VARIANT_TYPE_BYTESTRING_ARRAY),
      [](GVariant* value) {
        if (value) g_variant_unref(value);
      });
  if (!words) return;
  const std::unique_ptr<char*, decltype(&g_strfreev)> list(
      g_variant_dup_bytestring_array(words.get(), nullptr), g_strfreev);
  for (char** word = list.get(); *word; ++word) words_.emplace_back(*word);
}

bool Options::has(std::string_view name) const {
  return std::find(given_.begin(), given_.end(), name) != given_.end();
}

std::optional<std::string> Options::value(const std::string& name) const {
  const auto found = values_.find(name);
  return found == values_.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace orvanta
