import { categoryClass, categoryLabel } from "../model/categories";

// Drawn on a grid of 16, strokes of 1.5.
const shapes = {
  day: "M2.5 4.5h11v9h-11zM2.5 7h11M5.5 2.5v2M10.5 2.5v2",
  week: "M3 13.5V8M6.3 13.5V5M9.6 13.5V9.5M13 13.5V3",
  recap: "M2.5 11.5 6 8l2.5 2.5 5-6M10 4.5h3.5V8",
  projects: "M2.5 4.5h4l1.5 2h5.5v7h-11z",
  rules: "M2.5 4.5h6M11.5 4.5h2M2.5 11.5h2M7.5 11.5h6M10 3v3M6 10v3",
  settings:
    "M8 5.8A2.2 2.2 0 1 1 8 10.200A2.2 2.2 0 0 1 8 5.800M8 2v1.800M8 12.200V14M2 8h1.800M12.200 8H14M3.800 3.800l1.200 1.200M11 11l1.200 1.200M12.200 3.800 11 5M5 11l-1.200 1.200",
  left: "M10 3 5 8l5 5",
  right: "M6 3l5 5-5 5",
  pause: "M5.500 3.500v9M10.500 3.500v9",
  play: "M5 3.200v9.600L12.500 8z",
  close: "M3.500 3.500l9 9M12.500 3.500l-9 9",
  plus: "M8 3v10M3 8h10",
  minus: "M3 8h10",
  search: "M7 2.500a4.500 4.500 0 1 1 0 9a4.500 4.500 0 0 1 0-9M10.300 10.300l3.200 3.200",
  person:
    "M8 2.500a2.700 2.700 0 1 1 0 5.400a2.700 2.700 0 0 1 0-5.400M3 13.500c.3-2.900 2.200-4.300 5-4.300s4.700 1.400 5 4.300",
  edit: "M3 13l.6-2.800 7.200-7.200 2.200 2.200-7.200 7.200zM9.400 4.400l2.200 2.200",
  trash: "M3 4.500h10M6 4.500v-2h4v2M4.300 4.500l.6 9h6.200l.6-9M6.800 7v4M9.200 7v4",
  archive: "M2.500 3h11v3h-11zM3.500 6v7h9V6M6.500 8.500h3",
  warning: "M8 2.500 14 13H2zM8 6.500v3M8 11.200v.2",
  check: "M3 8.500 6.500 12 13 4.500",
  keyboard: "M1.500 4h13v8.500h-13zM4 6.500h.1M6.700 6.500h.1M9.300 6.500h.1M12 6.500h.1M4.500 10h7",
  external: "M6.500 3.500h-3v9h9v-3M9 3h4v4M13 3 7.500 8.500",
  activity: "M2.500 8h3l2-4 2.500 8 1.500-4h2",
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
  travail: "M6 1.500a4.500 4.500 0 1 1 0 9a4.500 4.500 0 0 1 0-9z",
  loisir: "M6 .6 11.400 6 6 11.400.6 6z",
  autre: "M6 1.200 11.400 10.600H.6z",
  nonclasse: "M6 2.200a3.800 3.800 0 1 1 0 7.600a3.800 3.800 0 0 1 0-7.600z",
  inactif: "M1.500 6h9",
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
