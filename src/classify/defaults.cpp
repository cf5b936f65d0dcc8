#include "classify/defaults.h"

#include <array>
#include <unordered_set>

#include "classify/rule_set.h"
#include "storage/free_id.h"

namespace orvanta {
namespace {

// A domain is looked for inside the visited host, so an entry also catches its sub-domains, and
// should be long enough not to catch strangers ("x.com" would be dropbox.com). Of two that match,
// the longer wins.

constexpr std::array<std::string_view, 102> kTravailDomains{
    // Office suites, mail and calendar
    "docs.google.com",
    "sheets.google.com",
    "slides.google.com",
    "drive.google.com",
    "mail.google.com",
    "calendar.google.com",
    "meet.google.com",
    "office.com",
    "sharepoint.com",
    "outlook.office.com",
    "outlook.office365.com",
    "teams.microsoft.com",
    // Team chat and shared work
    "slack.com",
    "notion.so",
    "notion.site",
    "airtable.com",
    "trello.com",
    "asana.com",
    "monday.com",
    "clickup.com",
    "atlassian.net",
    "linear.app",
    "miro.com",
    "zoom.us",
    "whereby.com",
    "dropbox.com",
    // Design
    "figma.com",
    "canva.com",
    "sketch.com",
    "framer.com",
    "webflow.io",
    // Professional networks, outreach and e-mailing
    "linkedin.com",
    "malt.fr",
    "hubspot.com",
    "salesforce.com",
    "pipedrive.com",
    "brevo.com",
    "mailchimp.com",
    "lemlist.com",
    "mailjet.com",
    "calendly.com",
    // Search and audience consoles
    "search.google.com",
    "analytics.google.com",
    "ads.google.com",
    "tagmanager.google.com",
    "semrush.com",
    "ahrefs.com",
    "matomo.cloud",
    "google.com/search",
    // Hosting and content management
    "ovh.com",
    "ovhcloud.com",
    "o2switch.net",
    "infomaniak.com",
    "gandi.net",
    "ionos.fr",
    "scaleway.com",
    "cloudflare.com",
    "vercel.com",
    "netlify.com",
    "wordpress.com",
    "shopify.com",
    "prestashop.com",
    "wp-admin",
    "elementor",
    // Code and documentation
    "github.com",
    "gitlab.com",
    "bitbucket.org",
    "stackoverflow.com",
    "developer.mozilla.org",
    "npmjs.com",
    "codepen.io",
    "docker.com",
    // Assistants and automation
    "chatgpt.com",
    "openai.com",
    "claude.ai",
    "mistral.ai",
    "perplexity.ai",
    "deepl.com",
    "zapier.com",
    "n8n.io",
    // Money and papers of a business
    "qonto.com",
    "shine.fr",
    "stripe.com",
    "pennylane.com",
    "indy.fr",
    "tiime.fr",
    "urssaf.fr",
    "infogreffe.fr",
    "impots.gouv.fr/professionnel",
    "yousign.com",
    "docusign.com",
    // Forms and file transfer
    "typeform.com",
    "tally.so",
    "wetransfer.com",
    "swisstransfer.com",
    // Jobs and training
    "francetravail.fr",
    "apec.fr",
    "welcometothejungle.com",
    "moncompteformation.gouv.fr",
    "openclassrooms.com",
    // A developer's own machine
    "localhost",
    "127.0.0.1",
};

constexpr std::array<std::string_view, 45> kTravailApps{
    "Slack",
    "Notion",
    "Figma",
    "Terminal",
    "iTerm",
    "Code",
    "Cursor",
    "Claude",
    "Xcode",
    "Local",
    "Mail",
    "Notion Calendar",
    "zoom.us",
    "Numbers",
    "Pages",
    "Keynote",
    "Microsoft Word",
    "Microsoft Excel",
    "Microsoft PowerPoint",
    "Microsoft Teams",
    "Microsoft Outlook",
    "Transmit",
    "FileZilla",
    "Sequel",
    "TablePlus",
    "Postman",
    "Loom",
    "Canva",
    "Adobe",
    "Affinity",
    "Sketch",
    "Pixelmator",
    "Screen Studio",
    "OBS",
    "Calendrier",
    "Calendar",
    "Linear",
    "Obsidian",
    "Bear",
    "Craft",
    "Things",
    "OmniFocus",
    "Todoist",
    "Trello",
    "Asana",
};

constexpr std::array<std::string_view, 59> kLoisirDomains{
    // Video
    "youtube.com",
    "netflix.com",
    "primevideo.com",
    "disneyplus.com",
    "canalplus.com",
    "twitch.tv",
    "dailymotion.com",
    "vimeo.com",
    "molotov.tv",
    // Replay
    "france.tv",
    "tf1.fr",
    "6play.fr",
    "m6.fr",
    "arte.tv",
    // Anime
    "crunchyroll.com",
    "animationdigitalnetwork.com",
    // Social networks
    "facebook.com",
    "instagram.com",
    "twitter.com",
    "tiktok.com",
    "snapchat.com",
    "reddit.com",
    "pinterest.com",
    "bsky.app",
    // Music
    "spotify.com",
    "deezer.com",
    "soundcloud.com",
    "qobuz.com",
    "music.apple.com",
    // Second hand and shops
    "leboncoin.fr",
    "vinted.fr",
    "ebay.fr",
    "amazon.fr",
    "cdiscount.com",
    "fnac.com",
    "zalando.fr",
    "aliexpress.com",
    "shein.com",
    "asos.com",
    "backmarket.fr",
    // Games
    "store.steampowered.com",
    "epicgames.com",
    "gog.com",
    "playstation.com",
    "xbox.com",
    "nintendo.com",
    "jeuxvideo.com",
    "gamekult.com",
    // Films and books
    "allocine.fr",
    "senscritique.com",
    "babelio.com",
    // Travel
    "booking.com",
    "airbnb.fr",
    "tripadvisor.fr",
    // Recipes, news and home
    "marmiton.org",
    "750g.com",
    "lequipe.fr",
    "lemonde.fr",
    "leroymerlin.fr",
};

constexpr std::array<std::string_view, 12> kLoisirApps{
    "Spotify", "Musique", "Music",    "TV",   "Photos",  "Steam",
    "Livres",  "Books",   "Podcasts", "Jeux", "Netflix", "Twitch",
};

constexpr std::array<std::string_view, 39> kAutreDomains{
    // Health
    "doctolib.fr",
    "ameli.fr",
    "mgen.fr",
    "malakoffhumanis.com",
    "harmonie-mutuelle.fr",
    // Taxes and public services
    "impots.gouv.fr",
    "service-public.fr",
    "franceconnect.gouv.fr",
    "ants.gouv.fr",
    // Trains, rides and meals
    "sncf-connect.com",
    "trainline.fr",
    "uber.com",
    "ubereats.com",
    "deliveroo.fr",
    // Banks
    "boursobank.com",
    "fortuneo.fr",
    "credit-agricole.fr",
    "labanquepostale.fr",
    "mabanque.bnpparibas",
    "lcl.fr",
    "hellobank.fr",
    "revolut.com",
    "qonto.com/banking",
    // Post and parcels
    "laposte.fr",
    "chronopost.fr",
    "mondialrelay.fr",
    // Energy and telecom
    "edf.fr",
    "engie.fr",
    "orange.fr",
    "bouyguestelecom.fr",
    // Maps and messages
    "maps.google",
    "openstreetmap.org",
    "web.whatsapp.com",
    "web.telegram.org",
    // Benefits, sharing a ride, getting about
    "caf.fr",
    "blablacar.fr",
    "ratp.fr",
    // Paying
    "paypal.com",
    "lydia-app.com",
};

// Names in French and in English: the desktop may speak either. The two screenshot tools differ in
// their apostrophe.
constexpr std::array<std::string_view, 30> kAutreApps{
    "Messages",
    "WhatsApp",
    "FaceTime",
    "Discord",
    "Telegram",
    "Réglages Système",
    "System Settings",
    "Finder",
    "App Store",
    "Calculette",
    "Calculatrice",
    "Calculator",
    "Aperçu",
    "Preview",
    "Plans",
    "Maps",
    "Rappels",
    "Reminders",
    "Notes",
    "Activity Monitor",
    "Moniteur d'activité",
    "Horloge",
    "Clock",
    "Contacts",
    "Capture d'écran",
    "Capture d’écran",
    "QuickTime Player",
    "Installer",
    "Software Update",
    "Mise à jour de logiciels",
};

template <class List>
void append(std::vector<DefaultRule>& rules, const List& patterns, RuleField field,
            Category category) {
  for (const auto pattern : patterns) {
    // Administration pages and addresses with a path are seen in the URL only.
    const bool inUrl = pattern.find('/') != std::string_view::npos || pattern == "wp-admin" ||
                       pattern == "elementor";
    rules.push_back({inUrl ? RuleField::Url : field, pattern, category});
  }
}

}  // namespace

std::vector<DefaultRule> defaultRules() {
  std::vector<DefaultRule> rules;
  append(rules, kTravailDomains, RuleField::Domain, Category::Travail);
  append(rules, kTravailApps, RuleField::App, Category::Travail);
  append(rules, kLoisirDomains, RuleField::Domain, Category::Loisir);
  append(rules, kLoisirApps, RuleField::App, Category::Loisir);
  append(rules, kAutreDomains, RuleField::Domain, Category::Autre);
  append(rules, kAutreApps, RuleField::App, Category::Autre);
  return rules;
}

int addDefaults(Transaction& change, const Clock& clock) {
  std::unordered_set<std::string> present;
  change.each("SELECT field, pattern FROM rules", {}, [&](const Cursor& row) {
    present.insert(ruleKey(row.str(0).value_or(""), row.str(1).value_or("")));
  });
  int added = 0;
  const double now = clock();
  const auto first = freeId(change, "rules");
  for (const auto& rule : defaultRules()) {
    const auto field = textOf(rule.field);
    if (present.contains(ruleKey(field, rule.pattern))) continue;
    change.run(
        "INSERT INTO rules(id, field, pattern, category, priority, created) VALUES (?,?,?,?,?,?)",
        {first + added, field, rule.pattern, textOf(rule.category), kDefaultPriority, now});
    ++added;
  }
  change.run("INSERT OR REPLACE INTO settings(key, value) VALUES ('rules_seeded', '1')");
  return added;
}

int seedDefaults(Database& db, const Clock& clock) {
  if (db.setting("rules_seeded") == "1") return 0;
  Transaction change(db);
  const int added = addDefaults(change, clock);
  return change.commit() ? added : 0;
}

}  // namespace orvanta
