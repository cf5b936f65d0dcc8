// Everything that the page can show, so that pictures and tests of its layout miss none of it.
import { settled } from "./browser.mjs";

/** Under which a view's pictures are kept: its title in plain letters. */
const slug = (title) =>
  title
    .normalize("NFD")
    .replace(/[^A-Za-z0-9]+/g, "")
    .toLowerCase();

/** The views as the sidebar offers them, which is what the page's registry holds. */
export async function listedViews(page) {
  await page.waitForSelector("[data-view]");
  const all = await page
    .locator("[data-view]")
    .evaluateAll((buttons) =>
      buttons.map(({ dataset, textContent, ariaKeyShortcuts }) => ({
        id: dataset.view,
        title: textContent,
        key: ariaKeyShortcuts.toLowerCase(),
      })),
    );
  return all.map((view) => ({ ...view, name: slug(view.title) }));
}

// Only rows in sight exist.
const block = async (page, row) => {
  await page.getByRole("listbox").evaluate((list) => list.scrollIntoView());
  await page.locator(".block:not(.idle)").nth(row).click();
};
const press = (page, name) => page.getByRole("button", { name, exact: true }).first().click();
const section = (title) => (page) =>
  page.getByRole("heading", { name: title, exact: true }).evaluate((one) => one.scrollIntoView());
const editRule = async (page) => {
  await page.keyboard.press("n");
  await page.locator("dialog input").first().fill("lemonde");
  await page.locator("dialog select").nth(1).selectOption("autre");
  await page.locator(".preview summary").click();
};
const steps = (count) => async (page) => {
  for (let step = 0; step < count; step++) await press(page, "Continuer");
};

const idsOf = async (page, date) => {
  const { blocks } = await page.program.ask("day", { date });
  return blocks.filter(({ idle }) => !idle).flatMap(({ ids }) => ids);
};
// Two days of all sorts given to one project: what they have in common is learnt.
const teach = (view) => async (page) => {
  for (const date of ["2026-11-19", "2026-11-18"])
    await page.program.ask("events.assign", { ids: await idsOf(page, date), category: "travail", project_id: 3 });
  await page.reload();
  await page.waitForSelector(view);
};
const takeBack = (count) => async (page) => {
  const history = await page.program.ask("changes.list", { limit: count });
  for (const { id } of history) await page.program.ask("changes.undo", { id });
};
const unfold = (page, place) => page.locator(`${place} .effect-fold > summary`).first().click();
const rowAction = (row, index) => (page) =>
  page.locator(".project-row", { hasText: row }).locator("button").nth(index).click();

// Two projects that are billed, by one client.
const bill = async (page) => {
  const say = page.program.ask.bind(page.program);
  const terms = { currency: "EUR", rate: 8550, billable: true, budget: 360_000, budget_from: "2026-11-01", rounding: 15 };
  for (const project of (await say("projects.list")).filter(({ id }) => id === 1 || id === 3)) {
    const { id, name, color, category, keywords } = project;
    await say("projects.save", { id, name, color, category, keywords, client: "Galerie Lumière", terms });
  }
  await page.reload();
  await page.waitForSelector("[data-view]");
};
// The sheet of the month is frozen, and then no more as it was.
const frozen = async (page) => {
  await bill(page);
  await page.program.ask("sheets.freeze", { from: "2026-11-01", to: "2026-11-30" });
  await page.program.ask("events.assign", { ids: await idsOf(page, "2026-11-17"), category: "travail", project_id: 1 });
  await page.reload();
  await page.locator(".frozen .link").first().click();
  await page.waitForSelector(".sheet-diff");
};
const unfrozen = async (page) => {
  for (const { id } of await page.program.ask("sheets.list")) await page.program.ask("sheets.delete", { id });
  await takeBack(3)(page);
};

// A goal of each sort: reached, on the way, exceeded.
const goals = (view) => async (page) => {
  const wishes = [
    { subject: "category", value: "travail", bound: "least", period: "day", seconds: 6 * 3600 },
    { subject: "category", value: "loisir", bound: "most", period: "day", seconds: 1800 },
    { subject: "project", project_id: 3, bound: "least", period: "week", seconds: 7200 },
    { subject: "site", value: "youtube.com", bound: "most", period: "week", seconds: 4 * 3600 },
  ];
  for (const wish of wishes) await page.program.ask("goals.save", wish);
  await page.reload();
  await page.waitForSelector(view);
};
const table = [
  "Début;Fin;Tâche;Projet",
  "2026-09-07 09:00;2026-09-07 12:30;Entretien <b>client</b>;Conseil",
  "2026-10-12 14:00;2026-10-12 17:15;Rapport;Conseil",
  "2026-11-19 10:00;2026-11-19 11:00;Déjà là;Portfolio",
  "hier;2026-10-13 10:00;?;",
].join("\n");
const importing = async (page) => {
  const file = { name: "heures d’avant.csv", mimeType: "text/csv", buffer: Buffer.from(table) };
  await page.locator('input[type="file"]').setInputFiles(file);
  await page.waitForSelector(".months");
};

const year = async (page) => {
  await page.getByText("Année", { exact: true }).click();
  await page.getByLabel("Ce que les barres montrent").selectOption("app");
};

// What is done in a view: its name, the view's id, the doing. Those that write take it back themselves.
const acts = [
  ["jour-bloc", "day", (page) => block(page, 1)],
  [
    "jour-selection",
    "day",
    async (page) => {
      await block(page, 1);
      await page.keyboard.press("Shift+ArrowDown");
      await page.keyboard.press("Shift+ArrowDown");
    },
  ],
  [
    "jour-plage",
    "day",
    async (page) => {
      await page.getByRole("button", { name: "Plage…" }).click();
      await page.getByLabel("Fin de la plage").waitFor();
    },
  ],
  [
    "jour-message",
    "day",
    async (page) => {
      await block(page, 1);
      await page.keyboard.press("2");
      await page.waitForSelector(".toast");
    },
    (page) => page.keyboard.press("Control+z"),
  ],
  ["jour-appris", "day", teach(".learnt"), takeBack(2)],
  [
    "jour-appris-detail",
    "day",
    async (page) => {
      await teach(".learnt")(page);
      await unfold(page, ".learnt");
    },
    takeBack(2),
  ],
  ["regles-a-confirmer", "rules", teach(".pending"), takeBack(2)],
  [
    "historique-plein",
    "history",
    async (page) => {
      const { ask } = page.program;
      const say = ask.bind(page.program);
      await say("rules.save", { field: "domain", pattern: "youtube.com", category: "autre", project_id: 1 });
      await say("events.assign", { ids: await idsOf(page, "2026-11-17"), category: "loisir", project_id: null });
      await say("settings.set", { idle_threshold: 240 });
      await say("projects.archive", { id: 1, keep: false });
      await page.reload();
      await page.waitForSelector(".change-row");
      await unfold(page, ".change-row");
    },
    takeBack(4),
  ],
  [
    "jour-absence",
    "day",
    async (page) => {
      await page.getByRole("listbox").evaluate((list) => list.scrollIntoView());
      await page.locator(".block.idle").first().click();
      await page.waitForSelector(".offered");
    },
  ],
  ["jour-moment", "day", (page) => page.keyboard.press("n")],
  ["semaine-trous", "week", (page) => page.keyboard.press("t")],
  ["jour-calendrier", "day", (page) => page.keyboard.press("c")],
  [
    "jour-supprimer",
    "day",
    async (page) => {
      await block(page, 1);
      await page.keyboard.press("Delete");
    },
  ],
  ["jour-objectifs", "day", goals(".goals"), takeBack(4)],
  ["reglages-objectifs", "settings", async (page) => (await goals(".goal-row")(page), await section("Objectifs et limites")(page)), takeBack(4)],
  ["objectif-editeur", "settings", (page) => press(page, "Ajouter un objectif…")],
  ["periode-objectifs", "period", async (page) => (await goals(".goal-days")(page), await section("Objectifs et limites")(page)), takeBack(4)],
  ["importer", "settings", importing],
  [
    "moment-modifier",
    "day",
    async (page) => {
      const { blocks } = await page.program.ask("day", { date: "2026-11-19" });
      if (!blocks.some(({ app }) => app === "Hors écran")) {
        const [{ start, end }] = blocks.filter(({ idle }) => idle).slice(-1);
        const moment = { ranges: [{ from: start, to: end }], title: "Réunion de chantier", project_id: 1 };
        await page.program.ask("moments.add", moment);
      }
      await page.reload();
      await page.locator(".block", { hasText: "Hors écran" }).first().click();
      await press(page, "Modifier…");
      await page.getByRole("dialog").getByLabel("Note").waitFor();
    },
    takeBack(1),
  ],
  [
    "exclure",
    "day",
    async (page) => {
      await block(page, 1);
      await press(page, "Exclure…");
      await page.getByRole("dialog").getByRole("radio").last().check();
    },
  ],
  ["periode-jours", "period", (page) => page.locator(".period-lists .share").first().click()],
  ["periode-calendrier", "period", (page) => page.keyboard.press("c")],
  ["feuille-client", "sheet", bill, takeBack(2)],
  ["feuille-figer", "sheet", (page) => press(page, "Figer…")],
  ["feuille-figee", "sheet", frozen, unfrozen],
  ["feuille-a-ranger", "sheet", (page) => page.locator(".to-file").click()],
  ["projets-clients", "projects", bill, takeBack(2)],
  ["projet-editeur", "projects", (page) => page.locator(".row-actions button").first().click()],
  [
    "projet-mots-cles",
    "projects",
    async (page) => {
      await page.keyboard.press("n");
      await page.getByLabel("Mots-clés").fill("firefox, github");
    },
  ],
  ["projet-supprimer", "projects", rowAction("Boutique Lumière", 2)],
  ["projet-archiver", "projects", rowAction("Boutique Lumière", 1)],
  ["projet-reactiver", "projects", rowAction("Portfolio", 1)],
  ["suggestion", "projects", (page) => press(page, "Tout accepter…")],
  ["regle-apercu", "rules", editRule],
  [
    "regle-effet",
    "rules",
    async (page) => {
      await editRule(page);
      await page.locator(".effect-more summary").click();
    },
  ],
  [
    "regle-supprimer",
    "rules",
    async (page) => {
      await page.locator("#rule-search").fill("youtube.com");
      await press(page, "Supprimer la règle youtube.com");
    },
  ],
  ["regles-integrees", "rules", (page) => press(page, "Rétablir les règles intégrées")],
  ["regle-aucune", "rules", (page) => page.locator("#rule-search").fill("rien de tel")],
  ["reglages-vie-privee", "settings", section("Vie privée")],
  ["reglages-bureau", "settings", section("Ce que ce bureau permet")],
  ["reglages-donnees", "settings", section("Données")],
  [
    "reglages-telemetrie",
    "settings",
    async (page) => {
      await section("Télémétrie et mises à jour")(page);
      await page.getByText("Voir les champs").click();
    },
  ],
  ["reglages-export", "settings", (page) => page.getByRole("button", { name: /^Premier jour/ }).click()],
  [
    "restaurer",
    "settings",
    async (page) => {
      await press(page, "Sauvegarder maintenant");
      await page.waitForSelector(".toast");
      await press(page, "Restaurer…");
      await page.getByRole("dialog").getByRole("radio").first().check();
      await page.waitForSelector(".comparison");
    },
  ],
  ["quitter", "settings", (page) => press(page, "Quitter Orvanta")],
  [
    "retrouver",
    "week",
    async (page) => {
      await page.keyboard.press("Control+k");
      await page.keyboard.type("le monde");
      await page.locator(".found-row").first().waitFor();
      await settled(page); // the answer to the last key
      await page.keyboard.press("ArrowDown");
    },
  ],
  [
    "retrouver-attribuer",
    "day",
    async (page) => {
      await page.keyboard.press("Control+k");
      await page.getByRole("combobox", { name: "Retrouver" }).fill("github");
      await page.locator(".found-row").first().click();
      await press(page, "Attribuer…");
      await page.locator(".effect-now").waitFor();
    },
  ],
  [
    "retrouver-effacer",
    "week",
    async (page) => {
      await page.keyboard.press("Control+k");
      await page.getByRole("combobox", { name: "Retrouver" }).fill("le monde");
      await page.locator(".found-row").first().click();
      await press(page, "Effacer tout…");
      await page.getByText("activités), du").waitFor();
    },
  ],
  ["raccourcis", "day", (page) => page.keyboard.press("?")],
  ["guide", "day", (page) => page.keyboard.press("F1")],
];

/**
 * What there is to see, by the store that it needs: `open` is what a stage opens, `scenes` are shown one
 * after the other by `show` on such a page.
 */
export async function listScenes(stage) {
  const first = await stage.open();
  const views = await listedViews(first);
  await first.context().close();
  const of = (id) => views.find((view) => view.id === id);
  const all = (suffix = "") => views.map((view) => ({ name: view.name + suffix, view }));
  return [
    {
      open: {},
      scenes: [...all(), ...acts.map(([name, id, act, after]) => ({ name, view: of(id), act, after }))],
    },
    { open: { make: ["--kind", "odd", "--days", "2"] }, scenes: all("-etrange") },
    { open: { make: ["--days", "730"] }, scenes: [{ name: "periode-annee", view: of("period"), act: year }] },
    { open: { make: ["--blocks", "400"] }, scenes: [{ name: "jour-400", view: of("day") }] },
    { open: { make: ["--kind", "empty"] }, scenes: all("-vide") },
    { open: { blind: true }, scenes: [{ name: "jour-sans-titres", view: of("day") }] },
    {
      open: { make: ["--kind", "new"] },
      scenes: ["accueil", "accueil-bureau", "accueil-projet"].map((name, count) => ({
        name,
        act: steps(count),
      })),
    },
  ];
}

// What would be in front, if a desktop showed windows here.
const current = {
  app: "Firefox",
  title: "<dialog> : l’élément boîte de dialogue - HTML (HyperText Markup Language) | MDN",
  domain: "developer.mozilla.org",
  duration: 754,
  idle: false,
};

// The program tells the page of a window in front.
function inFront(program) {
  if (program.inFront) return;
  const ask = program.ask.bind(program);
  program.inFront = true;
  program.ask = async (path, body) => {
    const answer = await ask(path, body);
    return path === "status" ? { ...answer, current } : answer;
  };
}

/** Shows a scene from the page's beginning. */
export async function show(page, { view, act }) {
  inFront(page.program);
  await page.evaluate(() => localStorage.clear());
  for (const key of Object.keys(await page.program.ask("page.marks")))
    await page.program.ask("page.mark", { key, value: null });
  await page.reload();
  await page.waitForSelector(view ? "[data-view]" : "h1");
  await settled(page);
  if (view && view.id !== "day") await page.keyboard.press(view.key);
  await settled(page);
  await act?.(page);
  await page.mouse.move(0, 0);
  await settled(page);
}
