import type { AppTime, Totals } from "../../bridge/routes";
import type { Filter } from "../../model/filter";
import { plainDomain } from "../../model/time";
import { projectRows, ShareList, type ShareRow } from "../../ui/parts";
import { ExcludeLink } from "../exclude/exclude_link";

type Narrowing = "project" | "app" | "domain";

interface Props {
  totals: Totals;
  filter: Filter;
  /** Narrows the list to the entry, or widens it again. */
  onFlip: <K extends Narrowing>(name: K, value: Filter[K]) => void;
}

function rows(times: readonly AppTime[]): ShareRow[] {
  return times.map(({ name, duration, cats }) => ({
    key: name,
    name: plainDomain(name),
    duration,
    parts: cats,
  }));
}

const named = [
  ["app", "apps", "Applications", "Aucune application."],
  ["domain", "domains", "Sites", "Aucun site visité."],
] as const;

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
      {named.map(([name, times, title, empty]) => (
        <div key={name}>
          <ShareList
            title={title}
            rows={rows(totals[times])}
            total={totals.active}
            empty={empty}
            chosen={filter[name]}
            onChoose={(one) => onFlip(name, one)}
          />
          {filter[name] !== null && (
            <ExcludeLink
              subject={name === "domain" ? { site: filter[name] } : { app: filter[name] }}
              onDone={() => onFlip(name, null)}
            />
          )}
        </div>
      ))}
    </div>
  );
}
