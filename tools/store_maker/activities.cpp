#include "store_maker/activities.h"

namespace orvanta {

// clang-format off
const std::vector<Activity>& workActivities() {
  static const std::vector<Activity> list{
      {9, "Code", nullptr,
       {"panier.ts — boutique-lumiere", "livraison.test.ts — boutique-lumiere",
        "README.md — boutique-lumiere", "schema.sql — atelier-cmd"}, 240, 2700},
      {4, "Terminal", nullptr,
       {"npm run test — boutique-lumiere", "git rebase -i origin/main", "ssh préprod.lumiere"}, 40, 500},
      {4, "Firefox", "github.com",
       {"Corriger l’arrondi de la TVA au panier par camille · Pull Request #214 · lumiere/boutique",
        "Issues · lumiere/boutique"}, 60, 900},
      {3, "Firefox", "localhost", {"Boutique Lumière – Panier", "Boutique Lumière – Paiement"}, 40, 600},
      {2, "Firefox", "developer.mozilla.org",
       {"Intl.NumberFormat - JavaScript | MDN", "<dialog> : l’élément boîte de dialogue - HTML | MDN"}, 60, 420},
      {2, "Firefox", "stackoverflow.com",
       {"typescript - Why does Object.keys return string[]? - Stack Overflow"}, 40, 300},
      {2, "Firefox", "figma.com",
       {"Lumière — Maquettes du paiement v3 (validées par Aurélie, à intégrer avant vendredi) – Figma"}, 120, 1500},
      {3, "Slack", nullptr, {"#projet-lumière - Quellvane - Slack", "Aurélie Lefèvre (MP) - Slack"}, 30, 420},
      {3, "Thunderbird", nullptr,
       {"Boîte de réception — camille@exemple.fr",
        "Re: Devis refonte du site de la mairie de Saint-Herblain"}, 60, 700},
      {1, "Firefox", "docs.google.com", {"Compte rendu — comité du 12 novembre - Google Docs"}, 120, 1200},
      {1, "LibreOffice Writer", nullptr,
       {"Devis 2026-041 Mairie de Saint-Herblain.odt — LibreOffice Writer"}, 300, 2400},
      {1, "Firefox", "extranet-mairie.fr", {"Démarches en ligne – suivi des demandes"}, 60, 800},
      {2, "Fichiers", nullptr, {"Factures 2026", "Photos de l’atelier"}, 40, 500},
      {1, "Visionneur de documents", nullptr, {"cahier-des-charges-v4-définitif.pdf"}, 60, 900},
      {1, "Firefox", "intranet.atelier-cmd.fr", {"Planning de production – Atelier CMD"}, 60, 700},
  };
  return list;
}

const std::vector<Activity>& pauseActivities() {
  static const std::vector<Activity> list{
      {3, "Firefox", "lemonde.fr", {"Le Monde.fr - Actualités et Infos en France et dans le monde"}, 60, 700},
      {3, "Firefox", "youtube.com",
       {"Restaurer une presse typographique de 1890 (de A à Z, sans parler) - YouTube"}, 120, 1500},
      {1, "Firefox", "leboncoin.fr", {"Vélos Pays de la Loire - leboncoin"}, 60, 600},
      {2, "Firefox", "meteofrance.com", {"Météo Nantes (44000) - Prévisions à 10 jours"}, 30, 120},
      {1, "Firefox", "sncf-connect.com", {"Nantes → Rennes, vendredi 27 novembre | SNCF Connect"}, 90, 600},
      {1, "Firefox", "web.whatsapp.com", {"WhatsApp"}, 40, 300},
      {1, "Slack", nullptr, {"#général - Quellvane - Slack"}, 11, 25},
  };
  return list;
}

const std::vector<Activity>& eveningActivities() {
  static const std::vector<Activity> list{
      {3, "Spotify", nullptr, {"Agnès Obel — Familiar"}, 120, 1200},
      {4, "Firefox", "arte.tv", {"La Minute vieille - Séries et fictions | ARTE"}, 900, 3000},
      {3, "Inkscape", nullptr, {"affiche-mémoire.svg - Inkscape"}, 600, 2700},
      {2, "Zotero", nullptr, {"Mémoire M2 — bibliographie - Zotero"}, 200, 1500},
      {1, "Firefox", "revue-typographie.fr", {"Manuel des caractères (Fournier, 1764), planches"}, 200, 1500},
      {1, "Steam", nullptr, {"Steam"}, 600, 2400},
  };
  return list;
}

const std::vector<MadeProject>& madeProjects() {
  static const std::vector<MadeProject> list{
      {"Boutique Lumière", "#3b82f6", "travail", false, "lumiere, lumière"},
      {"Mairie de Saint-Herblain", "#d9622b", "travail", false, "saint-herblain"},
      {"Atelier CMD", "#0e9aa7", "travail", false, "atelier-cmd"},
      {"Mémoire de typographie", "#8b5fd6", "autre", false, "mémoire"},
      {"Portfolio 2025", "#64748b", "travail", true, ""},
  };
  return list;
}
// clang-format on

const std::vector<std::string>& unusualTexts() {
  static const std::vector<std::string> list = [] {
    std::string families;
    for (int i = 0; i < 200; ++i) families += "👩‍👩‍👧";
    return std::vector<std::string>{
        "<script>hit=1</script>",
        "<img src=x onerror=hit=1>",
        "\"><b onclick=\"hit=1\">clic</b>",
        "\u202eessoper ed etxet\u202c \u2067مرحبا\u2069",
        families,
        std::string(10'000, 'x'),
        "javascript:hit=1//%00\a'); DROP TABLE events;--",
        "{{constructor.constructor('hit=1')()}}",
    };
  }();
  return list;
}

}  // namespace orvanta
