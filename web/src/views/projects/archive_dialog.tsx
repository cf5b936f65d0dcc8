import { useState } from "preact/hooks";
import type { ProjectRow, Step } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { amount, sinceWhen } from "../../model/effect";
import { isolated } from "../../model/time";
import { Confirm } from "../../ui/dialog";
import { EffectPreview } from "../../ui/effect/effect_preview";
import { Said } from "../../ui/said";
import { useUndoable } from "../../ui/toast";

interface Props {
  project: ProjectRow;
  onClose: () => void;
}

/** Asks before a project is put away, which takes from it what its keywords gave, unless it is kept. */
export function ArchiveProject({ project: { id, name, keywords }, onClose }: Props) {
  const client = useClient();
  const undoable = useUndoable();
  const [keep, setKeep] = useState(true);
  const { answer: lost, error } = useAnswer("changes.preview", {
    path: "projects.archive",
    body: { id, keep: false },
  });
  const given = -(lost?.projects.find((one) => one.id === id)?.seconds ?? 0);
  const gives = lost !== undefined && given > 0;
  // What cannot be measured is kept as well.
  const kept = keep && (gives || error !== undefined);
  return (
    <Confirm
      title={`Archiver « ${isolated(name, 60)} » ?`}
      action="Archiver"
      disabled={!lost && !error}
      onClose={onClose}
      onConfirm={() =>
        undoable(
          () => client.call("projects.archive", { id, keep: kept }),
          () => ({ text: `« ${isolated(name, 60)} » est archivé.` }),
        )
      }
    >
      <p>
        Il n’apparaît plus dans les listes{keywords && ", et ses mots-clés ne lui donnent plus rien"}.
      </p>
      <Said text={lost ? (gives ? "gives" : "nothing") : error}>
        {!lost ? (
          error
        ) : gives ? (
          <p>
            Jusqu’ici, ces mots-clés lui ont donné <b>{amount(given)}</b>, {sinceWhen(lost)}.
          </p>
        ) : (
          <p>Le temps qui lui a été attribué lui reste : vous pouvez l’archiver sans rien perdre.</p>
        )}
      </Said>
      {(gives || error) && (
        <label class="check">
          <input
            type="checkbox"
            checked={keep}
            onChange={(event) => setKeep(event.currentTarget.checked)}
          />
          Garder ce temps au projet
        </label>
      )}
      <EffectPreview
        steps={lost ? [{ path: "projects.archive", body: { id, keep: kept } }] : null}
        hint="Calcul…"
        none={gives ? "Rien ne change dans le passé : son temps lui reste." : undefined}
      />
    </Confirm>
  );
}

export function ReactivateProject({ project, onClose }: Props) {
  const client = useClient();
  const undoable = useUndoable();
  const { id, name, color, category, keywords } = project;
  const body = {
    id,
    name,
    color: color ?? "",
    category: category ?? "",
    keywords: keywords ?? "",
    archived: 0 as const,
  };
  const steps: Step[] = [{ path: "projects.save", body }];
  return (
    <Confirm
      title={`Réactiver « ${isolated(name, 60)} » ?`}
      action="Réactiver"
      onClose={onClose}
      onConfirm={() =>
        undoable(
          () => client.call("projects.save", body),
          () => ({ text: `« ${isolated(name, 60)} » est de nouveau actif.` }),
        )
      }
    >
      <p>Il revient dans les listes, et ses mots-clés lui donnent de nouveau du temps.</p>
      <EffectPreview steps={steps} />
    </Confirm>
  );
}
