#include "app/options.h"

#include <algorithm>
#include <array>
#include <memory>

namespace orvanta {
namespace {

struct Option {
  const char* name;
  const char* description;
};

constexpr std::array kOptions{
    Option{"show", "ouvre le tableau de bord"},
    Option{"pause", "met le suivi en pause"},
    Option{"resume", "reprend le suivi"},
    Option{"call",
           "ROUTE [JSON] : affiche la réponse d’une route ; - : répond à chaque ligne de l’entrée"},
    Option{"export", "DU AU [FICHIER] : écrit les activités de ces jours (AAAA-MM-JJ) en CSV"},
    Option{"check", "dit si la base et ses sauvegardes sont intactes"},
    Option{"backup", "FICHIER : copie la base, vérifiée, dans un nouveau fichier"},
    Option{"restore", "FICHIER : remet cette copie à la place de la base, qui est gardée"},
    Option{"connect-browsers", "prépare les navigateurs, dit comment ajouter l’extension"},
    Option{"accessibility", "active l’accessibilité du bureau, pour lire l’onglet sans extension"},
    Option{"version", "affiche la version"},
};

}  // namespace

void Options::addTo(Gio::Application& application) {
  using Type = Gio::Application::OptionType;
  for (const auto& [name, description] : kOptions) {
    application.add_main_option_entry(Type::BOOL, name, '\0', description);
  }
  application.add_main_option_entry(Type::FILENAME_VECTOR, G_OPTION_REMAINING);
  application.set_option_context_parameter_string("[MOT…]");
  application.set_option_context_summary(
      "Enregistre votre activité jusqu’à l’arrêt ; déjà en marche, ouvre le tableau de bord.");
}

Options::Options(GVariantDict* parsed) {
  for (const auto& [name, description] : kOptions) {
    gboolean given = FALSE;
    if (g_variant_dict_lookup(parsed, name, "b", &given) && given) given_.emplace_back(name);
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

}  // namespace orvanta
