// Everything that the page can show, so that pictures and tests of its layout miss none of it.

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
  ["jour-calendrier", "day", (page) => page.keyboard.press("c")],
  [
    "jour-supprimer",
    "day",
    async (page) => {
      await block(page, 1);
      await page.keyboard.press("Delete");
    },
  ],
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
  ["raccourcis", "day", (page) => page.keyboard.press("?")],
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

// The program of a page, told of as if a window were in front; it counts what it has not answered yet.
function watched(program) {
  if (program.unanswered !== undefined) return program;
  const ask = program.ask.bind(program);
  program.unanswered = 0;
  program.ask = async (path, body) => {
    program.unanswered++;
    const answer = await ask(path, body);
    program.unanswered--;
    return path === "status" ? { ...answer, current } : answer;
  };
  return program;
}

/** Until the page has all that it asked for, and has drawn it. */
async function settled(page) {
  const program = watched(page.program);
  for (let calm = 0, waited = 0; calm < 3 && waited < 200; waited++) {
    await page.waitForTimeout(50);
    calm = program.unanswered === 0 ? calm + 1 : 0;
  }
}

/** Shows a scene from the page's beginning. */
export async function show(page, { view, act }) {
  watched(page.program);
  await page.evaluate(() => localStorage.clear());
  await page.reload();
  await page.waitForSelector(view ? "[data-view]" : "h1");
  await settled(page);
  if (view && view.id !== "day") await page.keyboard.press(view.key);
  await settled(page);
  await act?.(page);
  await page.mouse.move(0, 0);
  await settled(page);
}
