import type { Body } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { count, duration } from "../../model/time";
import { Confirm } from "../../ui/dialog";
import { Said } from "../../ui/said";
import { useNotice } from "../../ui/toast";

export interface Deletion {
  /** The selection's name: its clock times and what it is, or how many blocks. */
  what: string;
  spans: { start: number; end: number } | { ids: number[] };
}

interface Props extends Deletion {
  onDeleted: () => void;
  onClose: () => void;
}

/** Asks before recorded time is erased for good, and says how much of it. */
export function DeleteDialog({ what, spans, onDeleted, onClose }: Props) {
  const client = useClient();
  const notify = useNotice();
  const body: Body<"events.delete"> = spans;
  const { answer, error } = useAnswer("events.delete", { ...body, preview: true });
  const size = (deleted: number, seconds: number) => `${count(deleted, "activité")} (${duration(seconds)})`;
  return (
    <Confirm
      title={`Supprimer ${what} ?`}
      action="Supprimer pour de bon"
      danger
      disabled={!answer || answer.deleted === 0}
      onClose={onClose}
      onConfirm={async () => {
        const { deleted, seconds, message } = await client.call("events.delete", body);
        notify(message ? { text: message, failed: true } : { text: `Supprimé : ${size(deleted, seconds)}.` });
        onDeleted();
      }}
    >
      <Said
        text={
          error ??
            (!answer
              ? "Calcul de ce qui serait supprimé…"
              : answer.deleted === 0
                ? "Il n’y a rien à supprimer ici."
                : `${size(answer.deleted, answer.seconds)} : application, titre, adresse et durée.`)
        }
      />
      <p>
        <b>C’est définitif.</b> Ce temps disparaît du fichier et de toutes les sauvegardes ; rien ne permet de
        l’annuler.
      </p>
    </Confirm>
  );
}
