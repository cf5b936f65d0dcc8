import { categoryClass, categoryLabel } from "../model/categories";

// Drawn on a grid of 16, strokes of 1.5.
const shapes = {
  day: "M2.5 4.5h11v9h-11zM2.5 7h11M5.5 2.5v2M10.5 2.5v2",
  week: "M3 13.5V8M6.3 13.5V5M9.6 13.5V9.5M13 13.5V3",
  recap: "M2.5 11.5 6 8l2.5 2.5 5-6M10 4.5h3.5V8",
  period: "M2 13.5h12M3.5 11.5v-3M6.5 11.5v-6M9.5 11.5v-4M12.5 11.5v-8.5",
  sheet: "M3.5 2h9v12h-9zM5.5 5h5M5.5 8h2M9.5 8h1M5.5 11h2M9.5 11h1",
  print: "M4.5 6V2.5h7V6M4.5 11h-2V6h11v5h-2M4.5 9.5h7v4h-7z",
  freeze: "M3.5 7.5h9v6h-9zM5.5 7.5v-2a2.5 2.5 0 0 1 5 0v2",
  farLeft: "M8 3 3 8l5 5M13 3 8 8l5 5",
  farRight: "M3 3l5 5-5 5M8 3l5 5-5 5",
  projects: "M2.5 4.5h4l1.5 2h5.5v7h-11z",
  rules: "M2.5 4.5h6M11.5 4.5h2M2.5 11.5h2M7.5 11.5h6M10 3v3M6 10v3",
  history: "M2.5 8a5.5 5.5 0 1 1 1.6 3.9M2.5 12.5v-4h4M8 5v3.2l2.2 1.4",
  settings:
    "M8 5.8A2.2 2.2 0 1 1 8 10.2A2.2 2.2 0 0 1 8 5.8M8 2v1.8M8 12.2V14M2 8h1.8M12.2 8H14M3.8 3.8l1.2 1.2M11 11l1.2 1.2M12.2 3.8 11 5M5 11l-1.2 1.2",
  left: "M10 3 5 8l5 5",
  right: "M6 3l5 5-5 5",
  down: "M4 6l4 4 4-4",
  pause: "M5.5 3.5v9M10.5 3.5v9",
  play: "M5 3.2v9.6L12.5 8z",
  close: "M3.5 3.5l9 9M12.5 3.5l-9 9",
  plus: "M8 3v10M3 8h10",
  minus: "M3 8h10",
  search: "M7 2.5a4.5 4.5 0 1 1 0 9a4.5 4.5 0 0 1 0-9M10.3 10.3l3.2 3.2",
  person:
    "M8 2.5a2.7 2.7 0 1 1 0 5.4a2.7 2.7 0 0 1 0-5.4M3 13.5c.3-2.9 2.2-4.3 5-4.3s4.7 1.4 5 4.3",
  edit: "M3 13l.6-2.8 7.2-7.2 2.2 2.2-7.2 7.2zM9.4 4.4l2.2 2.2",
  trash: "M3 4.5h10M6 4.5v-2h4v2M4.3 4.5l.6 9h6.2l.6-9M6.8 7v4M9.2 7v4",
  archive: "M2.5 3h11v3h-11zM3.5 6v7h9V6M6.5 8.5h3",
  restore: "M2.5 3h11v3h-11zM3.5 6v7h9V6M8 11.5v-4M6 9.2l2-2 2 2",
  warning: "M8 2.5 14 13H2zM8 6.5v3M8 11.2v.2",
  copy: "M5.5 5.5h8v8h-8zM10.5 5.5v-3h-8v8h3",
  check: "M3 8.5 6.5 12 13 4.5",
  keyboard: "M1.5 4h13v8.5h-13zM4 6.5h.1M6.7 6.5h.1M9.3 6.5h.1M12 6.5h.1M4.5 10h7",
  external: "M6.5 3.5h-3v9h9v-3M9 3h4v4M13 3 7.5 8.5",
  activity: "M2.5 8h3l2-4 2.5 8 1.5-4h2",
} as const;

export type IconName = keyof typeof shapes;

export function Icon({ name }: { name: IconName }) {
  return (
    <svg class="icon" viewBox="0 0 16 16" aria-hidden="true">
      <path d={shapes[name]} />
    </svg>
  );
}

const marks: Record<string, string> = {
  travail: "M6 1.5a4.5 4.5 0 1 1 0 9a4.5 4.5 0 0 1 0-9z",
  loisir: "M6 .6 11.4 6 6 11.4.6 6z",
  autre: "M6 1.2 11.4 10.6H.6z",
  nonclasse: "M6 2.2a3.8 3.8 0 1 1 0 7.6a3.8 3.8 0 0 1 0-7.6z",
  inactif: "M1.5 6h9",
};

/** A category's sign: a shape of its own, so that it is told apart without its colour. */
export function CategoryMark({ cat }: { cat: string }) {
  return (
    <svg class={`mark ${categoryClass(cat)}`} viewBox="0 0 12 12" aria-hidden="true">
      <path d={marks[cat] ?? marks["nonclasse"]} />
    </svg>
  );
}

export function CategoryName({ cat }: { cat: string }) {
  return (
    <span class="category">
      <CategoryMark cat={cat} />
      {categoryLabel(cat)}
    </span>
  );
}

/** A project's colour; grey when the text is no hexadecimal colour. */
export function projectColor(color: string | null): string {
  return color && /^#[0-9a-f]{3,8}$/i.test(color) ? color : "#8a8f98";
}

export function ProjectDot({ color }: { color: string | null }) {
  return <span class="dot" style={{ backgroundColor: projectColor(color) }} aria-hidden="true" />;
}
