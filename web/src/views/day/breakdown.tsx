import type { AppTime, Totals } from "../../bridge/routes";
import type { Filter } from "../../model/filter";
import { projectRows, ShareList, type ShareRow } from "../../ui/parts";

type Narrowing = "project" | "app" | "domain";

interface Props {
  totals: Totals;
  filter: Filter;
  /** Narrows the list to the entry, or widens it again. */
  onFlip: <K extends Narrowing>(name: K, value: Filter[K]) => void;
}

function rows(times: readonly AppTime[]): ShareRow[] {
  return times.map(({ name, duration, cats }) => ({ key: name, name, duration, parts: cats }));
}

/** Who had how much of the day: projects, applications, sites. */
export function Breakdown({ totals, filter, onFlip }: Props) {
  return (
    <div class="breakdown">
      <ShareList
        title="Projets"
        rows={projectRows(totals.by_project)}
        total={totals.active}
        empty="Aucun temps sur un projet."
        chosen={filter.project === null ? null : String(filter.project)}
        onChoose={(id) => onFlip("project", Number(id))}
      />
      <ShareList
        title="Applications"
        rows={rows(totals.apps)}
        total={totals.active}
        empty="Aucune application."
        chosen={filter.app}
        onChoose={(name) => onFlip("app", name)}
      />
      <ShareList
        title="Sites"
        rows={rows(totals.domains)}
        total={totals.active}
        empty="Aucun site visité."
        chosen={filter.domain}
        onChoose={(name) => onFlip("domain", name)}
      />
    </div>
  );
}
