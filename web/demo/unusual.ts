// Data that no person makes and every page must bear.
import type { Canned } from "./canned";
import type { Span } from "./person";
import type { StoreTrouble } from "../src/bridge/store";
import { people } from "./seeds";

const texts = [
  "<script>hit=1</script>",
  "<img src=x onerror=hit=1>",
  '"><b onclick="hit=1">clic</b>',
  "\u202eessoper ed etxet\u202c \u2067مرحبا\u2069",
  "👩‍👩‍👧".repeat(200),
  "x".repeat(10_000),
  "javascript:hit=1//%00\u0000\u0007",
  "{{constructor.constructor('hit=1')()}}",
];

/** Puts hostile text wherever text from the outside can come from. */
export function attack(canned: Canned): void {
  canned.spans.forEach((span, index) => {
    const text = texts[index % texts.length] ?? "";
    Object.assign(span, { title: text });
    if (index % 3 === 0) span.app = text;
    if (index % 5 === 0 && span.domain !== null) span.domain = text;
  });
  canned.projects = people.map((project, index) => ({
    ...project,
    name: `${texts[index]}${index}`,
    color: index % 2 === 0 ? "red;background:url(x)" : project.color,
    keywords: `${texts[index + 2]}, ${project.keywords}`,
  }));
}

/** A day of `count` blocks, each another application than the one before, instead of the last one. */
export function restless(now: number, count: number, spans: readonly Span[]): Span[] {
  const midnight = new Date(now * 1000).setHours(0, 0, 0, 0) / 1000;
  const before = spans.filter(({ end }) => end < midnight);
  const length = Math.floor((now - midnight) / count) - 0.5;
  if (length < 20) throw new Error("too many blocks for this time of the day");
  const apps = ["Code", "Firefox", "Slack", "Steam", "Thunderbird", "Calculatrice", "Inkscape"];
  const day = Array.from({ length: count }, (_, index): Span => {
    const start = midnight + index * (length + 0.5);
    return {
      id: 100_000 + index,
      start,
      end: start + length,
      app: apps[index % apps.length] ?? "Code",
      title: `Fenêtre nº ${index} — un titre assez long pour être coupé dans la plupart des listes`,
      domain: null,
      idle: false,
      category: null,
      projectId: null,
    };
  });
  return [...before, ...day];
}

/** All that can be wrong with a store, told somewhat as the program does. */
export const troubles: Omit<StoreTrouble, "since">[] = [
  { state: "full", message: "Le disque est plein : rien ne peut plus être enregistré." },
  { state: "readonly", message: "Le fichier des données ne peut pas être modifié." },
  {
    state: "locked",
    message: "Un autre programme tient le fichier des données : Orvanta attend qu’il le rende.",
  },
  { state: "damaged", message: "Le fichier des données est abîmé : une partie ne peut pas être lue." },
  { state: "absent", message: "Le fichier des données n’est plus à sa place." },
];

export const repaired =
  "Le fichier était abîmé : 12 804 activités sur 12 811 ont été relues, les règles et les projets sont entiers.";
