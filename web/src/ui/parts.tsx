// Small pieces that several views share.
import type { ButtonHTMLAttributes, ComponentChildren } from "preact";
import { useMemo, useState } from "preact/hooks";
import type { ByCategory, ProjectTime, Seconds } from "../bridge/routes";
import { activeTime, categories, categoryClass, categoryLabel } from "../model/categories";
import { shares } from "../model/shares";
import { clip, duration, typeset } from "../model/time";
import { CategoryMark, Icon, type IconName, ProjectDot } from "./icons";
import { useRoving } from "./roving";
import { Said } from "./said";

/** Text from the outside: titles, names, addresses. Kept apart from the direction of what surrounds it. */
export function Foreign({ text, length = 300 }: { text: string; length?: number }) {
  return <bdi>{clip(text, length)}</bdi>;
}

/** Names the view, and so the region that it fills. */
export const titleId = "view-title";

/** Told when it changes, as when a key leads to another day. */
export function ViewTitle({ text }: { text: string }) {
  return (
    <h1 id={titleId} aria-live="polite">
      <span key={text}>{text}</span>
    </h1>
  );
}

interface ProjectNameProps {
  project: { name: string; color: string | null };
  length?: number;
  kind?: string;
}

export function ProjectName({ project, length = 40, kind = "project" }: ProjectNameProps) {
  return (
    <span class={kind}>
      <ProjectDot color={project.color} />
      <Foreign text={project.name} length={length} />
    </span>
  );
}

interface ButtonProps extends Omit<ButtonHTMLAttributes<HTMLButtonElement>, "class"> {
  /** How it looks: the style sheet's names, "primary small". */
  kind?: string;
}

export function Button({ kind, ...rest }: ButtonProps) {
  return <button type="button" class={kind ? `button ${kind}` : "button"} {...rest} />;
}

interface IconButtonProps {
  icon: IconName;
  label: string;
  id?: string;
  title?: string;
  kind?: string;
  disabled?: boolean;
  onClick: () => void;
}

/** A button that shows its icon alone. */
export function IconButton({ icon, label, kind = "ghost square small", ...rest }: IconButtonProps) {
  return (
    <Button kind={kind} aria-label={label} {...rest}>
      <Icon name={icon} />
    </Button>
  );
}

interface EmptyProps {
  title: string;
  children?: ComponentChildren;
}

export function Empty({ title, children }: EmptyProps) {
  return (
    <div class="empty">
      <span class="empty-sign">
        <Icon name="activity" />
      </span>
      <p class="empty-title">{title}</p>
      {children}
    </div>
  );
}

export function Failure({ text, retry }: { text: string; retry: () => void }) {
  return (
    <div class="banner failed" role="alert">
      <Icon name="warning" />
      <p key={text}>{typeset(text)}</p>
      <Button kind="small" onClick={retry}>
        Réessayer
      </Button>
    </div>
  );
}

/** Above a report: why it is not whole. */
export function Incomplete({ text }: { text: string | undefined }) {
  return (
    <Said text={text}>
      <div class="banner warn">
        <Icon name="warning" />
        <p>{typeset(text ?? "")}</p>
      </div>
    </Said>
  );
}

/** Active time as one bar; its legend beneath names and counts every part. */
export function CategoryBar({ byCategory }: { byCategory: ByCategory }) {
  const total = activeTime(byCategory);
  const label = categories.map((cat) => `${categoryLabel(cat)} ${duration(byCategory[cat] ?? 0)}`).join(", ");
  return (
    <div class="stack" role="img" aria-label={label}>
      {categories.map((cat) => {
        const seconds = byCategory[cat] ?? 0;
        return (
          seconds > 0 && (
            <span
              key={cat}
              class={`fill ${categoryClass(cat)}`}
              style={{ flexGrow: String(seconds / total) }}
            />
          )
        );
      })}
    </div>
  );
}

interface LegendProps {
  byCategory: ByCategory;
  /** Makes the entries switches that show one category alone. */
  chosen?: string | null;
  onChoose?: (cat: string) => void;
}

export function CategoryLegend({ byCategory, chosen, onChoose }: LegendProps) {
  const list = useRoving<HTMLUListElement>("row");
  const parts = shares(
    categories.map((cat) => byCategory[cat] ?? 0),
    activeTime(byCategory),
  );
  return (
    <ul role="list" class="legend" ref={list}>
      {categories.map((cat, index) => {
        const seconds = byCategory[cat] ?? 0;
        if (seconds === 0 && chosen !== cat) return null;
        const content = (
          <>
            <CategoryMark cat={cat} />
            <span>{categoryLabel(cat)}</span>
            <b>{duration(seconds)}</b>
            <span class="quiet">{parts[index]}</span>
          </>
        );
        return (
          <li key={cat}>
            {onChoose ? (
              <button type="button" class="chip" aria-pressed={chosen === cat} onClick={() => onChoose(cat)}>
                {content}
              </button>
            ) : (
              <span class="chip still">{content}</span>
            )}
          </li>
        );
      })}
    </ul>
  );
}

export interface ShareRow {
  key: string;
  name: string;
  duration: Seconds;
  color?: string;
  parts?: [string, Seconds][];
  /** Of a row of categories. */
  cat?: string;
  /** Beside the time that it took before, "+ 1 h 02". */
  change?: string | undefined;
  /** Nothing stands behind it that could be shown. */
  closed?: boolean;
}

export function projectRows(projects: readonly ProjectTime[]): ShareRow[] {
  return projects.map(({ id, name, color, duration: seconds }) => ({
    key: String(id),
    name,
    color,
    duration: seconds,
  }));
}

interface ShareListProps {
  title: string;
  rows: readonly ShareRow[];
  total: Seconds;
  empty: string;
  shown?: number;
  chosen?: string | null;
  onChoose?: (key: string) => void;
  /** Opens what is behind a row, instead of choosing it. */
  onOpen?: (row: ShareRow) => void;
}

const narrow = matchMedia("(max-width: 1020px)");

/** How many entries a list shows before it is opened: fewer where three lists stand side by side. */
export function shownEntries(): number {
  return narrow.matches ? 3 : 6;
}

/** Who had how much of the time, longest first, each with a bar as long as its share of the longest. */
export function ShareList({
  title,
  rows,
  total,
  empty,
  shown = shownEntries(),
  chosen,
  onChoose,
  onOpen,
}: ShareListProps) {
  const [all, setAll] = useState(false);
  const list = useRoving<HTMLElement>("column");
  const longest = Math.max(...rows.map((row) => row.duration), 0);
  const parts = useMemo(
    () =>
      shares(
        rows.map((row) => row.duration),
        total,
      ),
    [rows, total],
  );
  const visible = all ? rows.slice(0, 500) : rows.slice(0, shown);
  return (
    <section class="shares" aria-label={title} ref={list}>
      <h2>{title}</h2>
      {rows.length === 0 && <p class="quiet">{empty}</p>}
      <ul role="list">
        {visible.map((row, index) => {
          const content = (
            <>
              <span class="share-name">
                {row.cat !== undefined && <CategoryMark cat={row.cat} />}
                {row.color !== undefined && <ProjectDot color={row.color} />}
                <Foreign text={row.name} length={80} />
              </span>
              {row.change && <span class="quiet share-change">{row.change}</span>}
              <b>{duration(row.duration)}</b>
              {!row.change && <span class="quiet share-part">{parts[index]}</span>}
              <span class="share-bar" aria-hidden="true">
                <ShareBar row={row} width={longest > 0 ? row.duration / longest : 0} />
              </span>
            </>
          );
          return (
            <li key={row.key}>
              {(onChoose || onOpen) && !row.closed ? (
                <button
                  type="button"
                  class="share"
                  aria-pressed={onChoose && chosen === row.key}
                  aria-haspopup={onOpen && "dialog"}
                  onClick={() => (onOpen ? onOpen(row) : onChoose?.(row.key))}
                >
                  {content}
                </button>
              ) : (
                <div class="share">{content}</div>
              )}
            </li>
          );
        })}
      </ul>
      {rows.length > shown && (
        <button type="button" class="link" aria-expanded={all} onClick={() => setAll(!all)}>
          {all ? "Réduire" : `Tout afficher (${rows.length})`}
        </button>
      )}
    </section>
  );
}

function ShareBar({ row, width }: { row: ShareRow; width: number }) {
  const style = { width: `${width * 100}%` };
  if (!row.parts) return <span class="share-fill" style={style} />;
  return (
    <span class="share-fill parts" style={style}>
      {row.parts.map(([cat, seconds]) => (
        <span key={cat} class={`fill ${categoryClass(cat)}`} style={{ flexGrow: String(seconds) }} />
      ))}
    </span>
  );
}

interface ProjectSelectProps {
  label?: string;
  title?: string;
  /** What it says while none is chosen. */
  none: string;
  /** Of the archived ones only the chosen one is listed. */
  projects: readonly { id: number; name: string; archived: boolean | number | null }[];
  value: number | null;
  onChange: (id: number | null) => void;
}

export function ProjectSelect({ label, title, none, projects, value, onChange }: ProjectSelectProps) {
  const listed = projects.filter(({ id, archived }) => Number(archived) !== 1 || id === value);
  return (
    <Select
      label={label}
      title={title}
      value={value === null ? "" : String(value)}
      options={[["", none], ...listed.map(({ id, name }) => [String(id), clip(name, 60)] as const)]}
      onChange={(id) => onChange(id ? Number(id) : null)}
    />
  );
}

interface SelectProps {
  id?: string;
  label?: string | undefined;
  title?: string | undefined;
  value: string;
  /** What each is worth and what it says. */
  options: readonly (readonly [string, string])[];
  onChange: (value: string) => void;
}

export function Select({ id, label, title, value, options, onChange }: SelectProps) {
  return (
    <select
      id={id}
      class="select"
      aria-label={label}
      title={title}
      value={value}
      onChange={(event) => onChange(event.currentTarget.value)}
    >
      {options.map(([name, text]) => (
        <option key={name} value={name}>
          {text}
        </option>
      ))}
    </select>
  );
}

interface SegmentedProps<T> {
  legend: string;
  small?: boolean;
  choices: readonly { value: T; label: ComponentChildren; title?: string }[];
  value: T;
  onChange: (value: T) => void;
}

/** One of a few, side by side. */
export function Segmented<T>({ legend, small, choices, value, onChange }: SegmentedProps<T>) {
  return (
    <fieldset class={small ? "segmented small" : "segmented"}>
      <legend class="sr-only">{legend}</legend>
      {choices.map((choice) => (
        <label key={choice.value}>
          <input
            type="radio"
            name={legend}
            checked={value === choice.value}
            onChange={() => onChange(choice.value)}
          />
          <span title={choice.title}>{choice.label}</span>
        </label>
      ))}
    </fieldset>
  );
}
