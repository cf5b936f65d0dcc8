import { useState } from "preact/hooks";
import type { ProjectRow } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { isolated } from "../../model/time";
import { Confirm } from "../../ui/dialog";
import { EffectPreview } from "../../ui/effect/effect_preview";
import { Icon } from "../../ui/icons";
import { Button, Empty, Failure, ViewTitle } from "../../ui/parts";
import { useShortcuts } from "../../ui/shortcuts";
import { useUndoable } from "../../ui/toast";
import { ArchiveProject, ReactivateProject } from "./archive_dialog";
import { ProjectEditor } from "./project_editor";
import { type Actions, ProjectList } from "./project_list";
import { Suggestions } from "./suggestions";

export function ProjectsView() {
  const { answer: projects, error, reload } = useAnswer("projects.list", {});
  const { answer: terms } = useAnswer("projects.terms", {});
  // The last, because it may have to count all that was ever recorded.
  const { answer: hours } = useAnswer("projects.hours", {});
  const [editing, setEditing] = useState<ProjectRow | "new" | null>(null);
  const [deleting, setDeleting] = useState<ProjectRow | null>(null);
  const [moving, setMoving] = useState<ProjectRow | null>(null);
  const startNew = () => setEditing("new");
  useShortcuts({ n: startNew });
  const actions: Actions = { onEdit: setEditing, onArchive: setMoving, onDelete: setDeleting };
  const listed = (title: string, archived: boolean) => {
    const rows = (projects ?? []).filter((project) => (project.archived === 1) === archived);
    return rows.length > 0 && <ProjectList {...{ title, rows, hours, terms, actions }} />;
  };
  return (
    <div class="view listing">
      <div class="view-head">
        <ViewTitle text="Projets" />
        <span class="spacer" />
        <Button kind="primary" title="N" onClick={startNew}>
          <Icon name="plus" />
          Nouveau projet
        </Button>
      </div>
      {error && <Failure text={error} retry={reload} />}
      <Suggestions />
      {projects?.length === 0 && (
        <Empty title="Pas encore de projet.">
          <p>Un projet rassemble le temps d’un client, d’un cours, d’un chantier.</p>
          <Button kind="primary" onClick={startNew}>
            Créer le premier
          </Button>
        </Empty>
      )}
      {listed("Actifs", false)}
      {listed("Archivés", true)}
      {editing && (
        <ProjectEditor
          project={editing === "new" ? undefined : editing}
          others={projects ?? []}
          terms={terms}
          onClose={() => setEditing(null)}
        />
      )}
      {moving?.archived === 1 && <ReactivateProject project={moving} onClose={() => setMoving(null)} />}
      {moving && moving.archived !== 1 && <ArchiveProject project={moving} onClose={() => setMoving(null)} />}
      {deleting && <DeleteProject project={deleting} onClose={() => setDeleting(null)} />}
    </div>
  );
}

function DeleteProject({ project: { id, name }, onClose }: { project: ProjectRow; onClose: () => void }) {
  const client = useClient();
  const undoable = useUndoable();
  return (
    <Confirm
      title={`Supprimer « ${isolated(name, 60)} » ?`}
      action="Supprimer"
      danger
      onClose={onClose}
      onConfirm={() =>
        undoable(
          () => client.call("projects.delete", { id }),
          () => ({ text: `« ${isolated(name, 60)} » est supprimé.` }),
        )
      }
    >
      <p>
        Le temps enregistré reste, mais ce qui était attribué à ce projet ne l’est plus et ses règles ne mènent
        plus à aucun projet. L’historique garde 90 jours de quoi l’annuler. Pour le retirer des listes en lui
        gardant son temps, archivez-le.
      </p>
      <EffectPreview steps={[{ path: "projects.delete", body: { id } }]} />
    </Confirm>
  );
}
