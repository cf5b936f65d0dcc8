import type { ProjectHours, ProjectRow, ProjectTerms, Seconds } from "../../bridge/routes";
import { byClient } from "../../model/clients";
import { clip, duration } from "../../model/time";
import { CategoryName, type IconName, ProjectDot } from "../../ui/icons";
import { Foreign, IconButton } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { Budget } from "./budget";

export type Actions = Record<"onEdit" | "onArchive" | "onDelete", (project: ProjectRow) => void>;

interface Props {
  title: string;
  rows: readonly ProjectRow[];
  /** What each took, and what is agreed for it; undefined until that is counted. */
  hours: readonly ProjectHours[] | undefined;
  terms: readonly ProjectTerms[] | undefined;
  actions: Actions;
}

/** Projects under their clients, how much of this month and of the one before was theirs, what is left. */
export function ProjectList({ title, rows, hours, terms, actions }: Props) {
  const groups = byClient(rows);
  return (
    <section class="project-list">
      <h2>
        {title} <span class="quiet">{rows.length}</span>
      </h2>
      <div class="project-row head" aria-hidden="true">
        <span>Nom</span>
        <span>Catégorie</span>
        <span class="number">Ce mois-ci</span>
        <span class="number">Mois dernier</span>
        <span>Budget</span>
        <span />
      </div>
      {groups.map(({ client, rows: own }) => (
        <Group
          key={client}
          heading={groups.length > 1 || client !== "" ? client || "Sans client" : null}
          rows={own}
          {...{ hours, terms, actions }}
        />
      ))}
    </section>
  );
}

function Group({ heading, rows, hours, terms, actions }: Omit<Props, "title"> & { heading: string | null }) {
  const list = useRoving<HTMLUListElement>("grid");
  return (
    <>
      {heading !== null && (
        <h3 class="project-client">
          <Foreign text={heading} length={120} />
        </h3>
      )}
      <ul role="list" ref={list}>
        {rows.map((project) => {
          const own = hours?.find(({ project_id }) => project_id === project.id);
          return (
            <li key={project.id} class="project-row">
              <Name {...project} rate={terms?.find(({ project_id }) => project_id === project.id)} />
              <CategoryName cat={project.category ?? "travail"} />
              <span class="number">
                <span class="sr-only">Ce mois-ci </span>
                <Time seconds={own?.this_month} />
              </span>
              <span class="number quiet">
                <span class="sr-only">le mois dernier </span>
                <Time seconds={own?.last_month} />
              </span>
              <Budget hours={own} />
              <RowActions project={project} {...actions} />
            </li>
          );
        })}
      </ul>
    </>
  );
}

// Whose it is its heading says.
function Name({ color, name, keywords, rate }: ProjectRow & { rate: ProjectTerms | undefined }) {
  const cost = rate?.billable === false ? "non facturable" : rate?.rate_text;
  const notes = [cost, keywords].filter((note) => note?.trim());
  return (
    <span class="project-name">
      <ProjectDot color={color} />
      <span>
        <b>
          <Foreign text={name} length={120} />
        </b>
        {notes.length > 0 && (
          <span class="quiet keywords" title={clip(notes.join(" · "), 500)}>
            <Foreign text={notes.join(" · ")} />
          </span>
        )}
      </span>
    </span>
  );
}

function Time({ seconds }: { seconds: Seconds | undefined }) {
  if (seconds === undefined) return null;
  return seconds > 0 ? <>{duration(seconds)}</> : <span class="quiet">–</span>;
}

function RowActions({ project, onEdit, onArchive, onDelete }: { project: ProjectRow } & Actions) {
  const away = project.archived === 1;
  const action = (icon: IconName, title: string, act: (project: ProjectRow) => void) => (
    <IconButton
      icon={icon}
      // Under another client or name it is the same.
      id={`${icon}-${project.id}`}
      label={`${title} ${clip(project.name, 60)}`}
      title={title}
      onClick={() => act(project)}
    />
  );
  return (
    <span class="row-actions">
      {action("edit", "Modifier", onEdit)}
      {action(away ? "restore" : "archive", away ? "Réactiver" : "Archiver", onArchive)}
      {action("trash", "Supprimer", onDelete)}
    </span>
  );
}
