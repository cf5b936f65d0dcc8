import { useAnswer, useClient } from "../../client";
import type { Answer } from "../../bridge/routes";
import { moment } from "../../model/search";
import { clip, count, duration, typeset } from "../../model/time";
import { Confirm } from "../../ui/dialog";
import { Said } from "../../ui/said";
import { useNotice } from "../../ui/toast";

interface Props {
  text: string;
  onClose: () => void;
}

/** Asks before all that has these words is erased for good, and says how much that is and since when. */
export function EraseDialog({ text, onClose }: Props) {
  const client = useClient();
  const notify = useNotice();
  const { answer, error } = useAnswer("search.erase", { text, preview: true });
  return (
    <Confirm
      title="Effacer tout ce qui a été trouvé ?"
      action="Effacer tout pour de bon"
      danger
      disabled={!answer || answer.spans === 0}
      onClose={onClose}
      onConfirm={async () => {
        const { spans, seconds, message } = await client.call("search.erase", { text });
        const told = `Effacé pour de bon\u00a0: ${count(spans, "activité")} (${duration(seconds)}).`;
        notify(message ? { text: typeset(message), failed: true } : { text: told });
      }}
    >
      <Said text={error ?? (answer ? foundText(answer) : "Calcul de ce qui serait effacé…")}>
        {answer && !error ? <b>{foundText(answer)}</b> : undefined}
      </Said>
      <p>
        Tout ce qui a été trouvé avec «{"\u00a0"}
        <bdi>{clip(text, 60)}</bdi>
        {"\u00a0"}» : applications, titres, adresses et durées.
      </p>
      <p>
        <b>C’est définitif.</b> Rien n’en reste, ni dans le fichier, ni dans l’historique, ni dans les sauvegardes.
      </p>
    </Confirm>
  );
}

function foundText({ spans, seconds, first, last }: Answer<"search.erase">): string {
  if (first === null || last === null) return "Il n’y a rien à effacer.";
  return `${duration(seconds)} (${count(spans, "activité")}), du ${moment(first)} au ${moment(last)}.`;
}
