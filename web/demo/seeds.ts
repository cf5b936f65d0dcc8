// What Camille's store holds before the first span: projects, and rules of the built-in kind.
import type { ProjectRow, RuleField, RuleRow } from "../src/bridge/routes";

export const people: ProjectRow[] = [
  [1, "Boutique Lumière", "#3b82f6", "travail", 0, "lumiere, lumière"],
  [2, "Mairie de Saint-Herblain", "#d9622b", "travail", 0, "saint-herblain, mairie"],
  [3, "Atelier CMD", "#0e9aa7", "travail", 0, "atelier-cmd"],
  [4, "Mémoire de typographie", "#8b5fd6", "autre", 0, "mémoire, typographi"],
  [5, "Portfolio 2025", "#64748b", "travail", 1, ""],
].map(
  ([id, name, color, category, archived, keywords]) =>
    ({ id, name, color, category, archived, keywords }) as ProjectRow,
);

const seeds: Record<string, Partial<Record<RuleField, string>>> = {
  travail: {
    domain:
      "github.com stackoverflow.com developer.mozilla.org figma.com docs.google.com localhost slack.com notion.so gitlab.com npmjs.com",
    app: "Slack Code Terminal Thunderbird Figma Obsidian Zotero LibreOffice",
    url: "wp-admin elementor",
  },
  loisir: {
    domain: "youtube.com arte.tv leboncoin.fr netflix.com twitch.tv lemonde.fr france.tv deezer.com",
    app: "Spotify Steam Netflix Podcasts",
  },
  autre: {
    domain:
      "sncf-connect.com meteofrance.com web.whatsapp.com impots.gouv.fr doctolib.fr laposte.fr ameli.fr",
    app: "Messages WhatsApp Calculatrice Finder",
  },
};

export function seededRules(): RuleRow[] {
  const rules: RuleRow[] = [];
  for (const [category, byField] of Object.entries(seeds)) {
    for (const [field, patterns] of Object.entries(byField)) {
      for (const pattern of patterns.split(" ")) {
        rules.push({
          id: rules.length + 1,
          field: field as RuleField,
          pattern,
          category,
          project_id: null,
          priority: -10,
          created: 0,
        });
      }
    }
  }
  return rules;
}
