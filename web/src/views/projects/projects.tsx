import { useState } from "preact/hooks";
import type { ProjectRow, Seconds } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { clip, duration, isolated } from "../../model/time";
import { Confirm } from "../../ui/dialog";
import { CategoryName, Icon, ProjectDot } from "../../ui/icons";
import { Empty, Failure, Foreign } from "../../ui/parts";
import { useShortcuts } from "../../ui/shortcuts";
import { useAttempt, useUndoable } from "../../ui/toast";
import { ProjectEditor } from "./project_editor";
import { Suggestions } from "./suggestions";

function Time({ seconds }: { seconds: Seconds }) {
  return seconds > 0 ? <>{duration(seconds)}</> : <span class="quiet">–</span>;
}

export function ProjectsView() {
  const client = useClient();
  const attempt = useAttempt();
  const undoable = useUndoable();
  const { answer: projects, error, reload } = useAnswer("projects.list", {});
  const recap = useAnswer("recap", {});
  const [editing, setEditing] = useState<ProjectRow | "new" | null>(null);
  const [deleting, setDeleting] = useState<ProjectRow | null>(null);
  useShortcuts({ n: () => setEditing("new") });

  const time = (id: number, week: "current" | "previous") =>
    recap.answer?.[week].by_project.find((project) => project.id === id)?.duration ?? 0;
  const archive = (project: ProjectRow, archived: 0 | 1) =>
    attempt(() =>
      undoable(
        () =>
          client.call("projects.save", {
            id: project.id,
            name: project.name,
            color: project.color ?? "",
            category: project.category ?? "",
            keywords: project.keywords ?? "",
            archived,
          }),
        () => ({
          text: archived
            ? `« ${isolated(project.name, 60)} » est archivé.`
            : `« ${isolated(project.name, 60)} » est de nouveau actif.`,
        }),
      ),
    );

  const groups = [
    { title: "Actifs", rows: (projects ?? []).filter(({ archived }) => archived !== 1) },
    { title: "Archivés", rows: (projects ?? []).filter(({ archived }) => archived === 1) },
  ];
  return (
    <div class="view">
      <div class="view-head">
        <h1>Projets</h1>
        <span class="spacer" />
        <button type="button" class="button primary" title="N" onClick={() => setEditing("new")}>
          <Icon name="plus" />
          Nouveau projet
        </button>
      </div>
      {error && <Failure text={error} retry={reload} />}
      <Suggestions />
      {projects?.length === 0 && (
        <Empty title="Pas encore de projet.">
          <p>Un projet rassemble le temps d’un client, d’un cours, d’un chantier.</p>
          <button type="button" class="button primary" onClick={() => setEditing("new")}>
            Créer le premier
          </button>
        </Empty>
      )}
      {groups.map(
        ({ title, rows }) =>
          rows.length > 0 && (
            <section key={title} class="project-list">
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
              <ul>
                {rows.map((project) => (
                  <li key={project.id} class="project-row">
                    <span class="project-name">
                      <ProjectDot color={project.color} />
                      <span>
                        <b>
                          <Foreign text={project.name} length={120} />
                        </b>
                        {project.keywords && (
                          <span class="quiet keywords" title={clip(project.keywords, 500)}>
                            <Foreign text={project.keywords} />
                          </span>
                        )}
                      </span>
                    </span>
                    <CategoryName cat={project.category ?? "travail"} />
                    <span class="number">
                      <span class="sr-only">Cette semaine </span>
                      <Time seconds={time(project.id, "current")} />
                    </span>
                    <span class="number quiet">
                      <span class="sr-only">la précédente </span>
                      <Time seconds={time(project.id, "previous")} />
                    </span>
                    <span class="row-actions">
                      <button
                        type="button"
                        class="button ghost square small"
                        aria-label={`Modifier ${clip(project.name, 60)}`}
                        title="Modifier"
                        onClick={() => setEditing(project)}
                      >
                        <Icon name="edit" />
                      </button>
                      <button
                        type="button"
                        class="button ghost square small"
                        aria-label={`${project.archived === 1 ? "Réactiver" : "Archiver"} ${clip(project.name, 60)}`}
                        title={project.archived === 1 ? "Réactiver" : "Archiver"}
                        onClick={() => void archive(project, project.archived === 1 ? 0 : 1)}
                      >
                        <Icon name={project.archived === 1 ? "play" : "archive"} />
                      </button>
                      <button
                        type="button"
                        class="button ghost square small"
                        aria-label={`Supprimer ${clip(project.name, 60)}`}
                        title="Supprimer"
                        onClick={() => setDeleting(project)}
                      >
                        <Icon name="trash" />
                      </button>
                    </span>
                  </li>
                ))}
              </ul>
            </section>
          ),
      )}
      {editing && (
        <ProjectEditor
          project={editing === "new" ? undefined : editing}
          others={projects ?? []}
          onClose={() => setEditing(null)}
        />
      )}
      {deleting && (
        <Confirm
          title={`Supprimer « ${isolated(deleting.name, 60)} » ?`}
          action="Supprimer"
          danger
          onClose={() => setDeleting(null)}
          onConfirm={() =>
            undoable(
              () => client.call("projects.delete", { id: deleting.id }),
              () => ({ text: `« ${isolated(deleting.name, 60)} » est supprimé.` }),
            )
          }
        >
          <p>
            Le temps enregistré reste, mais ses assignations à ce projet sont effacées et ses règles ne mènent
            plus à aucun projet. Le message qui suit permet de l’annuler.
          </p>
          <p>Pour le retirer des listes sans rien perdre, archivez-le.</p>
        </Confirm>
      )}
    </div>
  );
}
