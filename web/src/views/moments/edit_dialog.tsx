import { useState } from "preact/hooks";
import type { KeptMoment } from "../../bridge/moments";
import type { Block } from "../../bridge/routes";
import { errorText, useAnswer, useClient } from "../../client";
import { clip, clock, dayOf, duration } from "../../model/time";
import { Dialog, EditorFoot, Form } from "../../ui/dialog";
import { Select } from "../../ui/parts";
import { useUndoable } from "../../ui/toast";
import { TimeField, wanted } from "./moment_dialog";

/** The moments added by hand that a block shows; none of any other block. */
export function useMoments(block: Block | undefined): readonly KeptMoment[] {
  const mayBe = block !== undefined && !block.idle && block.app === "Hors écran";
  return useAnswer("moments.get", mayBe ? { ids: block.ids } : null).answer?.moments ?? [];
}

interface Props {
  /** One at least. */
  moments: readonly KeptMoment[];
  onDone: () => void;
  onClose: () => void;
}

const times = ({ from, to }: KeptMoment) => `${clock(from)} – ${clock(to)}`;

/** Changes the note and the hours of a moment that was added by hand. */
export function EditMomentDialog({ moments, onDone, onClose }: Props) {
  const [at, setAt] = useState(0);
  const moment = moments[at];
  const names = moments.map((one, index): [string, string] => [
    String(index),
    one.title ? `${times(one)}\u00a0: ${clip(one.title, 60)}` : times(one),
  ]);
  return (
    <Dialog title="Modifier ce moment" onClose={onClose}>
      {moments.length > 1 && (
        <div class="dialog-body">
          <label class="field">
            <span>Moment</span>
            <Select value={String(at)} options={names} onChange={(index) => setAt(Number(index))} />
          </label>
        </div>
      )}
      {moment && <Fields key={at} {...{ moment, onDone, onClose }} />}
    </Dialog>
  );
}

function Fields({ moment, onDone, onClose }: Omit<Props, "moments"> & { moment: KeptMoment }) {
  const client = useClient();
  const undoable = useUndoable();
  const day = dayOf(moment.from);
  const [note, setNote] = useState(moment.title ?? "");
  const [from, setFrom] = useState(clock(moment.from));
  const [to, setTo] = useState(clock(moment.to));
  const [error, setError] = useState("");
  // What was wrong may be so no more.
  const into = (set: (text: string) => void) => (text: string) => (set(text), setError(""));
  const save = async () => {
    const asked = wanted(day, { from, to }, { start: moment.from, end: moment.to });
    if (typeof asked === "string") return setError(asked);
    const change = { ids: moment.ids, title: note.trim(), from: asked.start, to: asked.end };
    try {
      await undoable(
        () => client.call("moments.edit", change),
        ({ answer: { taken } }) => ({
          text: `Moment modifié\u00a0: ${clock(asked.start)} – ${clock(asked.end)}.${keptText(taken)}`,
        }),
      );
      onDone();
      onClose();
    } catch (failure) {
      setError(errorText(failure));
    }
  };
  return (
    <Form onSubmit={save}>
      <div class="dialog-body form moment">
        <label class="field">
          <span>Note</span>
          <input
            class="input"
            autoFocus
            maxLength={300}
            placeholder="Réunion, appel, visite…"
            value={note}
            onInput={(event) => into(setNote)(event.currentTarget.value)}
          />
        </label>
        <div class="moment-when">
          <p>de</p>
          <TimeField label="Début" text={from} onChange={into(setFrom)} />
          <p>à</p>
          <TimeField label="Fin" text={to} onChange={into(setTo)} />
        </div>
      </div>
      <EditorFoot error={error} action="Enregistrer" />
    </Form>
  );
}

function keptText(taken: number): string {
  return taken >= 1 ? ` ${duration(taken)} déjà enregistrées restent comme elles sont.` : "";
}
