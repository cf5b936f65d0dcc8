// A month in the life of somebody who does not exist: Camille, free-lance developer in Nantes who studies
// typography in the evening. The same seed gives the same month.

export interface Span {
  id: number;
  start: number;
  end: number;
  app: string;
  title: string | null;
  domain: string | null;
  idle: boolean;
  category: string | null;
  projectId: number | null;
}

type Activity = [
  weight: number,
  app: string,
  domain: string | null,
  titles: string[],
  shortest: number,
  longest: number,
];

const work: Activity[] = [
  [
    9,
    "Code",
    null,
    [
      "panier.ts — boutique-lumiere",
      "livraison.test.ts — boutique-lumiere",
      "README.md — boutique-lumiere",
      "schema.sql — atelier-cmd",
    ],
    240,
    2700,
  ],
  [
    4,
    "Terminal",
    null,
    ["npm run test — boutique-lumiere", "git rebase -i origin/main", "ssh préprod.lumiere"],
    40,
    500,
  ],
  [
    4,
    "Firefox",
    "github.com",
    [
      "Corriger l’arrondi de la TVA au panier par camille · Pull Request #214 · lumiere/boutique",
      "Issues · lumiere/boutique",
    ],
    60,
    900,
  ],
  [3, "Firefox", "localhost", ["Boutique Lumière – Panier", "Boutique Lumière – Paiement"], 40, 600],
  [
    2,
    "Firefox",
    "developer.mozilla.org",
    ["Intl.NumberFormat - JavaScript | MDN", "<dialog> : l’élément boîte de dialogue - HTML | MDN"],
    60,
    420,
  ],
  [
    2,
    "Firefox",
    "stackoverflow.com",
    ["typescript - Why does Object.keys return string[]? - Stack Overflow"],
    40,
    300,
  ],
  [
    2,
    "Firefox",
    "figma.com",
    ["Lumière — Maquettes du paiement v3 (validées par Aurélie, à intégrer avant vendredi) – Figma"],
    120,
    1500,
  ],
  [3, "Slack", null, ["#projet-lumière - Quellvane - Slack", "Aurélie Lefèvre (MP) - Slack"], 30, 420],
  [
    3,
    "Thunderbird",
    null,
    ["Boîte de réception — camille@exemple.fr", "Re: Devis refonte du site de la mairie de Saint-Herblain"],
    60,
    700,
  ],
  [1, "Firefox", "docs.google.com", ["Compte rendu — comité du 12 novembre - Google Docs"], 120, 1200],
  [
    1,
    "LibreOffice Writer",
    null,
    ["Devis 2026-041 Mairie de Saint-Herblain.odt — LibreOffice Writer"],
    300,
    2400,
  ],
  [1, "Firefox", "mairie-saint-herblain.fr", ["Ville de Saint-Herblain – Démarches en ligne"], 60, 800],
  [2, "Fichiers", null, ["Factures 2026", "Photos de l’atelier"], 40, 500],
  [1, "Visionneur de documents", null, ["cahier-des-charges-v4-définitif.pdf"], 60, 900],
  [1, "Firefox", "intranet.atelier-cmd.fr", ["Planning de production – Atelier CMD"], 60, 700],
];
const pause: Activity[] = [
  [3, "Firefox", "lemonde.fr", ["Le Monde.fr - Actualités et Infos en France et dans le monde"], 60, 700],
  [
    3,
    "Firefox",
    "youtube.com",
    ["Restaurer une presse typographique de 1890 (de A à Z, sans parler) - YouTube"],
    120,
    1500,
  ],
  [1, "Firefox", "leboncoin.fr", ["Vélos Pays de la Loire - leboncoin"], 60, 600],
  [2, "Firefox", "meteofrance.com", ["Météo Nantes (44000) - Prévisions à 10 jours"], 30, 120],
  [1, "Firefox", "sncf-connect.com", ["Nantes → Rennes, vendredi 27 novembre | SNCF Connect"], 90, 600],
  [1, "Firefox", "web.whatsapp.com", ["WhatsApp"], 40, 300],
];
const evening: Activity[] = [
  [3, "Spotify", null, ["Agnès Obel — Familiar"], 120, 1200],
  [4, "Firefox", "arte.tv", ["La Minute vieille - Séries et fictions | ARTE"], 900, 3000],
  [3, "Inkscape", null, ["affiche-mémoire-typographie.svg - Inkscape"], 600, 2700],
  [2, "Zotero", null, ["Mémoire M2 — bibliographie - Zotero"], 200, 1500],
  [
    1,
    "Firefox",
    "gallica.bnf.fr",
    ["Manuel typographique : utile aux gens de lettres (Fournier, 1764) | Gallica"],
    200,
    1500,
  ],
  [1, "Steam", null, ["Steam"], 600, 2400],
];

/** Numbers between 0 and 1 that only look random (mulberry32). */
export function random(seed: number): () => number {
  let state = seed;
  return () => {
    state = (state + 0x6d2b79f5) | 0;
    let t = Math.imul(state ^ (state >>> 15), 1 | state);
    t = (t + Math.imul(t ^ (t >>> 7), 61 | t)) ^ t;
    return ((t ^ (t >>> 14)) >>> 0) / 4294967296;
  };
}

function pick(from: readonly Activity[], next: () => number): Activity {
  const total = from.reduce((sum, [weight]) => sum + weight, 0);
  let at = next() * total;
  return from.find(([weight]) => (at -= weight) < 0) ?? from[0]!;
}

/** The spans of the `days` days that end at `now` (Unix seconds). */
export function month(now: number, days = 31): Span[] {
  const spans: Span[] = [];
  const next = random(20261119);
  const midnight = new Date(now * 1000);
  midnight.setHours(0, 0, 0, 0);

  const add = (start: number, end: number, what: Partial<Span>) => {
    if (start >= now) return;
    const blank = { app: "Inconnu", title: null, domain: null, idle: false, category: null, projectId: null };
    spans.push({ ...blank, ...what, id: spans.length + 1, start, end: Math.min(end, now) });
  };
  const session = (from: number, to: number, main: readonly Activity[], straying: number) => {
    let at = from;
    while (at < to) {
      const [, app, domain, titles, shortest, longest] = pick(next() < straying ? pause : main, next);
      const length = shortest + (longest - shortest) * next() ** 2.2;
      const end = Math.min(at + length, to);
      add(at, end, { app, domain, title: titles[Math.floor(next() * titles.length)] ?? null });
      at = end;
      if (next() < 0.045) {
        const away = 200 + next() * 900;
        add(at, at + away, { app: "Inactif", idle: true });
        at += away;
      }
    }
    return at;
  };

  // The computer notices that nobody is there before it goes to sleep.
  const away = (from: number) => add(from, from + 600, { app: "Inactif", idle: true });

  for (let ago = days - 1; ago >= 0; ago--) {
    const day = new Date(midnight);
    day.setDate(day.getDate() - ago);
    const at = (hours: number) => new Date(day).setHours(0, Math.round(hours * 60)) / 1000;
    const weekday = (day.getDay() + 6) % 7;
    if (weekday === 6 && next() < 0.5) continue;
    if (weekday >= 5) {
      away(session(at(10.5 + next()), at(11.4 + next()), evening, 0.4));
      away(session(at(20.5), at(21 + next() * 1.5), evening, 0.2));
      continue;
    }
    const lunch = session(at(8.6 + next() * 0.6), at(12.2 + next() * 0.4), work, 0.09);
    const back = at(13.3 + next() * 0.5);
    add(lunch, back, { app: "Inactif", idle: true });
    away(session(back, at(17.6 + next() * 1.3), work, 0.12));
    if (next() < 0.55) away(session(at(20.4 + next() * 0.4), at(21.4 + next() * 1.4), evening, 0.15));
  }
  // What Camille assigned by hand.
  for (const span of spans) {
    if (span.app === "Inkscape" && span.id % 3 === 0)
      Object.assign(span, { category: "travail", projectId: 4 });
  }
  return spans;
}
