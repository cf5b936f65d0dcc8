import { useEffect, useState } from "preact/hooks";
import type { Block, Day, Project, RuleRow, Seconds } from "../../bridge/routes";
import { assignable, categoryLabel, isAssignable } from "../../model/categories";
import type { Target } from "../../model/changes";
import { patternOf, type Pattern, type Reason } from "../../model/matching";
import { clip, clock, count, duration, instant, readClock } from "../../model/time";
import { CategoryMark, Icon } from "../../ui/icons";
import { Foreign } from "../../ui/parts";
import { fieldLabel } from "../rules/labels";
import type { Range } from "./drawing";

interface Props {
  day: Day;
  /** The selected blocks, or those that the range touches. */
  blocks: readonly Block[];
  /** Their activity, within the range. */
  time: Seconds;
  range: Range | null;
  projects: readonly Project[];
  why: Reason | null;
  onAssign: (target: Target) => void;
  onRange: (range: Range) => void;
  /** How many listed blocks the range touches. */
  whole: number;
  /** These blocks instead of the range: they teach rules, a range does not. */
  onWhole: () => void;
  onRule: (pattern: Pattern) => void;
  onEditRule: (rule: RuleRow) => void;
  onDelete: () => void;
  onClose: () => void;
}

/** What to make of the selected blocks, or of the range dragged over the timeline. */
export function AssignBar({
  day,
  blocks,
  time,
  range,
  projects,
  why,
  onAssign,
  onRange,
  whole,
  onWhole,
  onRule,
  onEditRule,
  onDelete,
  onClose,
}: Props) {
  const [category, setCategory] = useState<string | null>(null);
  const [projectId, setProjectId] = useState<number | null>(null);
  const what = range ? `${range.start}` : blocks.map((block) => block.ids[0]).join(",");

  useEffect(() => {
    const [first] = blocks;
    const same =
      first &&
      !range &&
      blocks.every((block) => block.cat === first.cat && block.pid === first.pid && block.manual);
    setCategory(same && isAssignable(first.cat) ? first.cat : null);
    setProjectId(same ? first.pid : null);
  }, [what]);

  const one = !range && blocks.length === 1 ? blocks[0] : undefined;
  const toAutomatic = category === null && projectId === null;
  const isAutomatic = blocks.every((block) => !block.manual);
  const open = projects.filter((project) => !project.archived || project.id === projectId);

  const chooseProject = (id: number | null) => {
    setProjectId(id);
    // A project's time counts as the project's category, unless another was chosen.
    const project = projects.find((candidate) => candidate.id === id);
    if (project && category === null && isAssignable(project.category)) setCategory(project.category);
  };

  return (
    <form
      class={one || range ? "assign tall" : "assign"}
      aria-label="Assigner la sélection"
      onSubmit={(event) => {
        event.preventDefault();
        onAssign({ category, projectId });
      }}
      onKeyDown={(event) => {
        if (event.key === "Escape") onClose();
      }}
    >
      <div class="assign-what">
        {range ? (
          <RangeFields day={day} range={range} onRange={onRange} />
        ) : (
          <b>{one ? <Foreign text={one.domain ?? one.app} length={40} /> : count(blocks.length, "bloc")}</b>
        )}
        <span class="quiet">{time > 0 ? duration(time) : "aucune activité"}</span>
        {whole > 0 && (
          <button type="button" class="link" onClick={onWhole}>
            {whole === 1 ? "Plutôt le bloc entier" : `Plutôt les ${count(whole, "bloc")} entiers`}
          </button>
        )}
        {one?.title && (
          <span class="assign-title">
            <Foreign text={one.title} />
          </span>
        )}
        {one && why && <Why block={one} why={why} onEditRule={onEditRule} />}
      </div>
      <div class="assign-end">
        <button type="button" class="button danger small" title="Suppr" onClick={onDelete}>
          Supprimer…
        </button>
        <button
          type="button"
          class="button ghost square"
          aria-label="Ne rien sélectionner"
          title="Échap"
          onClick={onClose}
        >
          <Icon name="close" />
        </button>
      </div>
      <div class="assign-how">
        <fieldset class="segmented">
          <legend class="sr-only">Catégorie</legend>
          <label title="Selon les règles (0)">
            <input
              type="radio"
              name="category"
              checked={category === null}
              onChange={() => setCategory(null)}
            />
            <span>Auto</span>
          </label>
          {assignable.map((cat, index) => (
            <label key={cat} title={`${categoryLabel(cat)} (${index + 1})`}>
              <input
                type="radio"
                name="category"
                checked={category === cat}
                onChange={() => setCategory(cat)}
              />
              <span>
                <CategoryMark cat={cat} />
                {categoryLabel(cat)}
              </span>
            </label>
          ))}
        </fieldset>
        <select
          class="select"
          aria-label="Projet"
          value={projectId === null ? "" : String(projectId)}
          onChange={(event) =>
            chooseProject(event.currentTarget.value ? Number(event.currentTarget.value) : null)
          }
        >
          <option value="">Sans projet</option>
          {open.map(({ id, name }) => (
            <option key={id} value={String(id)}>
              {clip(name, 60)}
            </option>
          ))}
        </select>
        <button type="submit" class="button primary" disabled={time === 0 || (toAutomatic && isAutomatic)}>
          {toAutomatic && !isAutomatic ? "Rendre automatique" : "Assigner"}
        </button>
        {one && (
          <button type="button" class="button" onClick={() => onRule(patternOf(one))}>
            Créer une règle…
          </button>
        )}
      </div>
    </form>
  );
}

interface WhyProps {
  block: Block;
  why: Reason;
  onEditRule: (rule: RuleRow) => void;
}

function Why({ block, why, onEditRule }: WhyProps) {
  if (why.kind === "manual") return <span class="quiet">assigné à la main</span>;
  if (why.kind === "keyword")
    return (
      <span class="quiet">
        {"par le mot-clé «\u00a0"}
        <Foreign text={why.keyword} length={30} />
        {"\u00a0»"}
      </span>
    );
  if (why.kind === "none") {
    const free = block.cat === "nonclasse" && block.pid === null;
    return (
      <span class="quiet">{free ? "aucune règle" : "par une règle sur l’adresse ou un autre titre"}</span>
    );
  }
  const { rule } = why;
  return (
    <button type="button" class="link" onClick={() => onEditRule(rule)}>
      {`par la règle\u00a0: ${fieldLabel(rule.field).toLowerCase()} contient «\u00a0`}
      <Foreign text={rule.pattern} length={30} />
      {"\u00a0»"}
    </button>
  );
}

interface RangeFieldsProps {
  day: Day;
  range: Range;
  onRange: (range: Range) => void;
}

function RangeFields({ day, range, onRange }: RangeFieldsProps) {
  const [texts, setTexts] = useState({ start: clock(range.start), end: clock(range.end) });
  const [wrong, setWrong] = useState("");
  // Each on its own: leaving one field must not take back what is being typed in the other.
  useEffect(() => setTexts((old) => ({ ...old, start: clock(range.start) })), [range.start]);
  useEffect(() => setTexts((old) => ({ ...old, end: clock(range.end) })), [range.end]);

  // An end that was not typed over keeps its seconds.
  const read = (text: string, was: number) => {
    if (text === clock(was)) return was;
    const time = readClock(text);
    return time && instant(day, time.hours, time.minutes);
  };
  const commit = () => {
    const start = read(texts.start, range.start);
    const end = read(texts.end, range.end);
    if (start === null || end === null) setWrong("Une heure s’écrit 09:30.");
    else if (end <= start) setWrong("La fin doit suivre le début.");
    else {
      setWrong("");
      if (start !== range.start || end !== range.end) onRange({ start, end });
    }
  };
  const field = (name: "start" | "end", label: string) => (
    <input
      class="input clock"
      aria-label={label}
      inputMode="numeric"
      value={texts[name]}
      aria-invalid={wrong !== ""}
      onInput={(event) => setTexts({ ...texts, [name]: event.currentTarget.value })}
      onBlur={commit}
      onKeyDown={(event) => {
        if (event.key !== "Enter") return;
        event.preventDefault();
        commit();
      }}
    />
  );
  return (
    <span class="range-fields">
      <span>De</span>
      {field("start", "Début de la plage")}
      <span>à</span>
      {field("end", "Fin de la plage")}
      {wrong && (
        <span class="field-error" role="alert">
          {wrong}
        </span>
      )}
    </span>
  );
}
