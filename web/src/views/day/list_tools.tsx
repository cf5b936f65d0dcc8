import type { Block, Project, Totals } from "../../bridge/routes";
import { categoryLabel } from "../../model/categories";
import { type Filter, isFiltering, noProject, toFile } from "../../model/filter";
import { clip, count, duration, hourName, plainDomain } from "../../model/time";
import { Icon } from "../../ui/icons";
import { Button } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { Said } from "../../ui/said";

/** Why there is more in a day than the list shows. */
export const briefReason = "Plus brefs que le réglage « Bloc le plus court »";

interface Props {
  filter: Filter;
  projects: readonly Project[];
  /** Those that are listed. */
  blocks: readonly Block[];
  /** Of the whole day, as long as nothing narrows the list. */
  whole: Totals | null;
  onChange: (part: Partial<Filter>) => void;
  onReset: () => void;
  /** Adds a moment that was not recorded. */
  onAdd: () => void;
}

function sumOf(blocks: readonly Block[]): number {
  return blocks.reduce((sum, block) => sum + block.duration, 0);
}

function projectLabel(wanted: number, projects: readonly Project[]): string {
  if (wanted === noProject) return "Sans projet";
  if (wanted === toFile) return "Sans projet, à ranger";
  return projects.find(({ id }) => id === wanted)?.name ?? "Projet supprimé";
}

/** Search, and what the list is narrowed to. */
export function ListTools({ filter, projects, blocks, whole, onChange, onReset, onAdd }: Props) {
  const active = blocks.filter(({ idle }) => !idle);
  const narrowed: [string | null | undefined, Partial<Filter>][] = [
    [filter.cat && categoryLabel(filter.cat), { cat: null }],
    [filter.project === null ? null : projectLabel(filter.project, projects), { project: null }],
    [filter.app, { app: null }],
    [filter.domain && plainDomain(filter.domain), { domain: null }],
    [filter.client?.name, { client: null }],
    [filter.hour === null ? null : hourName(filter.hour), { hour: null }],
  ];
  const tools = useRoving<HTMLDivElement>("row");
  return (
    <div class="list-tools" ref={tools}>
      <h2>
        {count(active.length, "bloc")}{" "}
        <span class="quiet">{duration(whole?.active ?? sumOf(active))}</span>
      </h2>
      <Said class="sr-only" text={isFiltering(filter) && count(active.length, "bloc")} />
      {narrowed.map(
        ([label, without]) =>
          label && (
            <button
              type="button"
              key={label}
              class="chip on"
              aria-label={`Retirer le filtre ${clip(label, 60)}`}
              onClick={() => onChange(without)}
            >
              <bdi>{clip(label, 28)}</bdi>
              <Icon name="close" />
            </button>
          ),
      )}
      {isFiltering(filter) && (
        <button type="button" class="link" onClick={onReset}>
          Tout montrer
        </button>
      )}
      <span class="spacer" />
      <Button kind="small" title="Ajouter un moment (N)" onClick={onAdd}>
        Ajouter un moment…
      </Button>
      <label class="check">
        <input
          type="checkbox"
          checked={filter.idle}
          onChange={(event) => onChange({ idle: event.currentTarget.checked })}
        />
        Inactivité
      </label>
      <label class="search">
        <Icon name="search" />
        <input
          id="search"
          class="input"
          type="search"
          placeholder="Filtrer"
          aria-label="Filtrer les blocs"
          title="Filtrer (/)"
          value={filter.text}
          onInput={(event) => onChange({ text: event.currentTarget.value })}
          onKeyDown={(event) => {
            if (event.key === "Escape") onChange({ text: "" });
          }}
        />
      </label>
    </div>
  );
}
