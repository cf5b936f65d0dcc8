import type { RefObject } from "preact";
import { useLayoutEffect, useRef, useState } from "preact/hooks";
import type { Origin, ProjectRow, RuleRow } from "../../bridge/routes";
import { originOf, type Origins } from "../../model/rules";
import { clip } from "../../model/time";
import { CategoryName } from "../../ui/icons";
import { smallWindow, useMedia } from "../../ui/media";
import { Foreign, IconButton, ProjectName } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { useWindowed } from "../../ui/windowed";
import { fieldLabel } from "./labels";

// Pixels; the second where a rule takes two lines.
const rowHeights = [40, 64] as const;
const originNames: Record<Origin, string> = {
  user: "Personnelle",
  learned: "Apprise",
  builtin: "Intégrée",
  app: "D’après l’application",
};

interface Actions {
  onEdit: (rule: RuleRow) => void;
  onDelete: (rule: RuleRow) => void;
}

interface Props extends Actions {
  rules: readonly RuleRow[];
  origins: Origins;
  project: (id: number | null) => ProjectRow | undefined;
}

export function RuleTable({ rules, origins, project, ...actions }: Props) {
  const body = useRoving<HTMLDivElement>("grid");
  const rowHeight = rowHeights[useMedia(smallWindow) ? 1 : 0];
  const { first, end } = useWindowed(body, rules.length, rowHeight);
  const { held, ...handlers } = useHeldRow(body, rules.length);
  // With the neighbours of the row that the keyboard is on: it may go there before the list is measured.
  const isNear = (index: number) => Math.abs(index - held) < 2;
  const drawn = [...rules.keys()].filter((index) => (index >= first && index < end) || isNear(index));
  return (
    <div class="table" role="table" aria-label="Règles" aria-rowcount={rules.length + 1}>
      <div role="rowgroup">
        <div class="rule-row head" role="row" aria-rowindex={1}>
          <span role="columnheader">Champ</span>
          <span role="columnheader">Contient</span>
          <span role="columnheader">Catégorie</span>
          <span role="columnheader">Projet</span>
          <span role="columnheader">Origine</span>
          <span role="columnheader" class="sr-only">
            Actions
          </span>
        </div>
      </div>
      <div
        class="windowed"
        role="rowgroup"
        ref={body}
        style={{ height: `${rules.length * rowHeight}px` }}
        {...handlers}
      >
        {drawn.map((index) => {
          const rule = rules[index]!;
          return (
            <div
              key={rule.id}
              class="rule-row"
              role="row"
              aria-rowindex={index + 2}
              style={{ transform: `translateY(${index * rowHeight}px)` }}
            >
              <Cells
                rule={rule}
                origin={originNames[originOf(rule, origins)]}
                to={project(rule.project_id)}
                {...actions}
              />
            </div>
          );
        })}
      </div>
    </div>
  );
}

/** The row that the keyboard is on, or was: it exists wherever the list has been scrolled to. */
function useHeldRow(body: RefObject<HTMLDivElement | null>, count: number) {
  const [row, setRow] = useState(0);
  const going = useRef(false);
  const held = Math.min(row, count - 1);
  const button = () => body.current?.querySelector<HTMLElement>(`[aria-rowindex="${held + 2}"] button`);
  useLayoutEffect(() => {
    if (going.current) button()?.focus();
    going.current = false;
  });
  return {
    held,
    onFocusIn: ({ target }: FocusEvent) => {
      const index = (target as Element).closest("[aria-rowindex]")?.getAttribute("aria-rowindex");
      setRow(Number(index) - 2);
    },
    // Of the whole list, of which only the rows in sight are there to be gone to.
    onKeyDown: (event: KeyboardEvent) => {
      if (event.key !== "Home" && event.key !== "End") return;
      event.preventDefault();
      going.current = true;
      setRow(event.key === "Home" ? 0 : count - 1);
    },
  };
}

interface CellsProps extends Actions {
  rule: RuleRow;
  origin: string;
  to: ProjectRow | undefined;
}

function Cells({ rule, origin, to, onEdit, onDelete }: CellsProps) {
  const name = clip(rule.pattern, 60);
  return (
    <>
      <span role="cell" class="quiet">
        {fieldLabel(rule.field)}
      </span>
      <b role="cell" title={clip(rule.pattern, 500)}>
        <Foreign text={rule.pattern} length={120} />
      </b>
      <span role="cell">
        {rule.category ? <CategoryName cat={rule.category} /> : <span class="quiet">–</span>}
      </span>
      <span role="cell">{to && <ProjectName project={to} />}</span>
      <span role="cell" class="quiet">
        {origin}
      </span>
      <span role="cell" class="row-actions">
        <IconButton icon="edit" label={`Modifier la règle ${name}`} onClick={() => onEdit(rule)} />
        <IconButton icon="trash" label={`Supprimer la règle ${name}`} onClick={() => onDelete(rule)} />
      </span>
    </>
  );
}
