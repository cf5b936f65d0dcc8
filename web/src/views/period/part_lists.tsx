import type { AppTime, PeriodReport, Seconds } from "../../bridge/routes";
import {
  type Behind,
  behindApp,
  behindCategory,
  behindClient,
  behindProject,
  behindSite,
} from "../../model/period";
import { categoryLabel } from "../../model/categories";
import { count, durationChange, plainDomain } from "../../model/time";
import { ShareList, type ShareRow } from "../../ui/parts";

interface Props {
  report: PeriodReport;
  onBehind: (behind: Behind) => void;
}

interface List {
  title: string;
  empty: string;
  rows: ShareRow[];
  behind: (row: ShareRow) => Behind;
}


function shareRows(times: readonly AppTime[], rest: PeriodReport["apps_rest"], others: string): ShareRow[] {
  const rows: ShareRow[] = times.map(({ name, duration, cats }) => ({
    key: name,
    name: plainDomain(name),
    duration,
    parts: cats,
  }));
  if (rest.count > 0)
    rows.push({
      key: "",
      name: count(rest.count, `autre ${others}`, `autres ${others}s`),
      duration: rest.duration,
      closed: true,
    });
  return rows;
}

// What only the range before had comes with nothing.
function listsOf(report: PeriodReport): List[] {
  const { categories, by_project, by_client, without_project, before } = report;
  const change = (seconds: Seconds | null) =>
    before && before.active > 0 && seconds !== null ? durationChange(seconds) : undefined;
  const projects: ShareRow[] = by_project.map((one) => ({
    key: String(one.id),
    name: one.name,
    color: one.color,
    duration: one.duration,
    change: change(one.change),
  }));
  if (without_project >= 1) {
    const had = by_project.reduce((sum, one) => sum + one.duration - (one.change ?? 0), 0);
    projects.push({
      key: "",
      name: "Sans projet",
      duration: without_project,
      change: change(before && without_project - (before.active - had)),
    });
  }
  return [
    {
      title: "Catégories",
      empty: "Aucun temps actif.",
      rows: [...categories]
        .sort((one, other) => other.duration - one.duration)
        .map((one) => ({
          key: one.category,
          cat: one.category,
          name: categoryLabel(one.category),
          duration: one.duration,
          change: change(one.change),
        })),
      behind: ({ key }) => behindCategory(key),
    },
    {
      title: "Projets",
      empty: "Aucun temps sur un projet.",
      rows: projects,
      behind: ({ key, name }) => behindProject(key === "" ? null : Number(key), name),
    },
    {
      title: "Clients",
      empty: "Aucun projet de ces jours n’a de client.",
      rows: by_client.map((one) => ({
        key: one.client,
        name: one.client,
        duration: one.duration,
        change: change(one.change),
      })),
      behind: ({ key }) => behindClient(key),
    },
    {
      title: "Applications",
      empty: "Aucune application.",
      rows: shareRows(report.apps, report.apps_rest, "application"),
      behind: ({ key }) => behindApp(key),
    },
    {
      title: "Sites",
      empty: "Aucun site visité.",
      rows: shareRows(report.domains, report.domains_rest, "site"),
      behind: ({ key }) => behindSite(key),
    },
  ];
}

/** Who had how much of the period, each beside what it had before. */
export function PartLists({ report, onBehind }: Props) {
  return (
    <div class="period-lists">
      {listsOf(report).map(({ title, rows, empty, behind }) => (
        <ShareList
          key={title}
          {...{ title, rows, empty }}
          total={report.active}
          shown={8}
          onOpen={(row) => onBehind(behind(row))}
        />
      ))}
    </div>
  );
}
