import type { ProjectRow, RecapReport, Seconds } from "../../bridge/routes";
import { clip, duration } from "../../model/time";
import { CategoryName, type IconName, ProjectDot } from "../../ui/icons";
import { Foreign, IconButton } from "../../ui/parts";
import { useRoving } from "../../ui/roving";

export type Actions = Record<"onEdit" | "onArchive" | "onDelete", (project: ProjectRow) => void>;

interface Props {
  title: string;
  rows: readonly ProjectRow[];
  recap: RecapReport | undefined;
  actions: Actions;
}

/** Projects, and how much of this week and of the one before was theirs. */
export function ProjectList({ title, rows, recap, actions }: Props) {
  const time = (id: number, week: "current" | "previous") =>
    recap?.[week].by_project.find((project) => project.id === id)?.duration ?? 0;
  const list = useRoving<HTMLUListElement>("grid");
  return (
    <section class="project-list">
      <h2>
        {title} <span class="quiet">{rows.length}</span>
      </h2>
      <div class="project-row head" aria-hidden="true">
        <span>Nom</span>
        <span>Catégorie</span>
        <span class="number">Cette semaine</span>
        <span class="number">La précédente</span>
        <span />
      </div>
      <ul role="list" ref={list}>
        {rows.map((project) => (
          <li key={project.id} class="project-row">
            <Name {...project} />
            <CategoryName cat={project.category ?? "travail"} />
            <span class="number">
              <span class="sr-only">Cette semaine </span>
              <Time seconds={time(project.id, "current")} />
            </span>
            <span class="number quiet">
              <span class="sr-only">la précédente </span>
              <Time seconds={time(project.id, "previous")} />
            </span>
            <RowActions project={project} {...actions} />
          </li>
        ))}
      </ul>
    </section>
  );
}

function Name({ color, name, keywords }: ProjectRow) {
  return (
    <span class="project-name">
      <ProjectDot color={color} />
      <span>
        <b>
          <Foreign text={name} length={120} />
        </b>
        {keywords && (
          <span class="quiet keywords" title={clip(keywords, 500)}>
            <Foreign text={keywords} />
          </span>
        )}
      </span>
    </span>
  );
}

function Time({ seconds }: { seconds: Seconds }) {
  return seconds > 0 ? <>{duration(seconds)}</> : <span class="quiet">–</span>;
}

function RowActions({ project, onEdit, onArchive, onDelete }: { project: ProjectRow } & Actions) {
  const away = project.archived === 1;
  const action = (icon: IconName, title: string, act: (project: ProjectRow) => void) => (
    <IconButton
      icon={icon}
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
