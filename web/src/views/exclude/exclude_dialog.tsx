import { useState } from "preact/hooks";
import type { ExclusionPreview, ExclusionSubject, PastWish } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { count, dateOnly, dayOf, duration, isolated, plainDomain, typeset } from "../../model/time";
import { Confirm } from "../../ui/dialog";
import { Said } from "../../ui/said";
import { useNotice, useUndoable } from "../../ui/toast";

/** What an exclusion is about, and what it is called. */
export function subjectOf({ domain, app }: { domain: string | null; app: string }): ExclusionSubject {
  return domain ? { site: domain } : { app };
}
function nameOf(subject: ExclusionSubject): string {
  return isolated("site" in subject ? plainDomain(subject.site) : subject.app, 60);
}

const actions: Record<PastWish, string> = {
  keep: "Exclure",
  blank: "Exclure et effacer les titres",
  erase: "Exclure et effacer le temps",
};

interface Props {
  subject: ExclusionSubject;
  onDone?: (() => void) | undefined;
  onClose: () => void;
}

/** Asks what becomes of the past of a site or an application that is recorded no more. */
export function ExcludeDialog({ subject, onDone, onClose }: Props) {
  const client = useClient();
  const notify = useNotice();
  const undoable = useUndoable();
  const { answer, error } = useAnswer("exclusions.preview", subject);
  const [wish, setWish] = useState<PastWish>("keep");
  const name = nameOf(subject);
  const exclude = async () => {
    if (wish === "keep") {
      await undoable(
        () => client.call("exclusions.add", { ...subject, past: wish }),
        () => ({ text: `Exclu\u00a0: ${name}.` }),
      );
    } else {
      const { spans, seconds, message } = await client.call("exclusions.add", { ...subject, past: wish });
      const size = wish === "erase" ? ` (${duration(seconds)})` : "";
      const text = `Exclu\u00a0: ${name}. Effacé pour de bon\u00a0: ${count(spans, "activité")}${size}.`;
      notify(message ? { text: typeset(message), failed: true } : { text });
    }
    onDone?.();
  };
  return (
    <Confirm
      title={answer?.excluded ? `Effacer le passé de ${name} ?` : `Exclure ${name} ?`}
      action={actions[wish]}
      danger={wish !== "keep"}
      disabled={!answer || (answer.excluded && wish === "keep")}
      onClose={onClose}
      onConfirm={exclude}
    >
      <Said text={error ?? (answer ? knownText(answer) : "Calcul de ce qui est déjà enregistré…")}>
        {answer && !error ? <b>{knownText(answer)}</b> : undefined}
      </Said>
      <p>{promise(subject)}</p>
      {answer && answer.spans > 0 && <Wishes {...{ answer, subject, wish }} onChange={setWish} />}
      {wish !== "keep" && (
        <p>
          <b>C’est définitif.</b> Rien n’en reste, ni dans le fichier, ni dans l’historique, ni dans les sauvegardes.
        </p>
      )}
    </Confirm>
  );
}

function knownText({ spans, seconds, first }: ExclusionPreview): string {
  if (spans === 0 || first === null) return "Rien n’en est encore enregistré.";
  const since = dateOnly(dayOf(first));
  return `Déjà enregistré\u00a0: ${count(spans, "activité")} (${duration(seconds)}), depuis le ${since}.`;
}

function promise(subject: ExclusionSubject): string {
  return "site" in subject
    ? "Désormais, son nom, ses adresses et ses titres ne sont plus enregistrés, sous-domaines compris. Le temps compte pour le navigateur."
    : "Désormais, ses titres, ses sites et ses adresses ne sont plus enregistrés. Le temps compte pour l’application.";
}

interface WishesProps {
  answer: ExclusionPreview;
  subject: ExclusionSubject;
  wish: PastWish;
  onChange: (wish: PastWish) => void;
}

function Wishes({ answer: { spans, seconds, shown }, subject, wish, onChange }: WishesProps) {
  const what = "site" in subject ? "son nom, ses titres et ses adresses" : "ses titres, ses sites et ses adresses";
  const wishes: [PastWish, string, string][] = [
    ["keep", "Garder ce qui est enregistré", "L’exclusion vaut à partir de maintenant."],
    ["blank", `Effacer aussi ${what}`, `De ${count(shown, "activité")}\u00a0; le temps reste compté.`],
    ["erase", "Effacer aussi tout son temps", `${count(spans, "activité")}, ${duration(seconds)} en moins.`],
  ];
  return (
    <fieldset class="choices wishes">
      <legend>Et ce qui est déjà enregistré ?</legend>
      {wishes.map(([value, label, help]) => (
        <label key={value} class="check">
          <input
            type="radio"
            name="past"
            checked={wish === value}
            disabled={value === "blank" && shown === 0}
            onChange={() => onChange(value)}
          />
          <span>
            {label}
            <small>{help}</small>
          </span>
        </label>
      ))}
    </fieldset>
  );
}
