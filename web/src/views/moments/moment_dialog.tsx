import { useState } from "preact/hooks";
import type { Day, Segment, UnixTime } from "../../bridge/routes";
import { errorText, useAnswer, useClient } from "../../client";
import { type Filling, filling, momentRange, readMoment } from "../../model/away";
import { addMoment, assignRange, type Target } from "../../model/changes";
import { addDays, capitalize, clock, dayOf, duration, longDay, plainDay } from "../../model/time";
import { DayButton } from "../../ui/calendar";
import { Dialog, EditorFoot, Form } from "../../ui/dialog";
import { Said } from "../../ui/said";
import { TargetFields } from "../../ui/target_fields";
import { useUndoable } from "../../ui/toast";

interface Props {
  day: Day;
  today: Day;
  now: UnixTime;
  /** The times that are offered. */
  range: { start: UnixTime; end: UnixTime };
  onClose: () => void;
}

/** Adds a moment that was not recorded to any day: a meeting, a call, a site visit. */
export function MomentDialog({ day: first, today, now, range, onClose }: Props) {
  const client = useClient();
  const undoable = useUndoable();
  const projects = useAnswer("projects.list", {}).answer ?? [];
  const [day, setDay] = useState(first);
  const [times, setTimes] = useState({ from: clock(range.start), to: clock(range.end) });
  const [title, setTitle] = useState("");
  const [target, setTarget] = useState<Target>({ category: null, projectId: null });
  const [taking, setTaking] = useState(false);
  const [error, setError] = useState("");
  const asked = wanted(day, times, range);
  const fill = useFilling(day, asked, now);

  const save = async () => {
    if (typeof asked === "string") return setError(asked);
    const gives = target.category !== null || target.projectId !== null;
    if (!gives && title.trim() === "") return setError("Donnez une note, une catégorie ou un projet.");
    const takes = taking && gives && (fill?.taken ?? 0) > 0;
    if (fill && fill.added < 1 && !takes)
      return setError(fill.taken > 0 ? "Tout ce temps est déjà enregistré." : "Ce temps est encore à venir.");
    try {
      await undoable(
        async () => {
          if (takes) await assignRange(client, asked, target);
          return addMoment(client, [momentRange(asked)], title, target);
        },
        ({ answer }) => ({
          text: `Ajouté\u00a0: ${plainDay(day)}, ${clock(asked.start)} – ${clock(asked.end)} (${duration(answer.added)}).`,
        }),
      );
      onClose();
    } catch (failure) {
      setError(errorText(failure));
    }
  };
  // What was wrong may be so no more.
  const into =
    <T,>(set: (value: T) => void) =>
    (value: T) => (set(value), setError(""));
  const change = into((part: Partial<typeof times>) => setTimes({ ...times, ...part }));
  return (
    <Dialog title="Ajouter un moment" onClose={onClose}>
      <Form onSubmit={save}>
        <div class="dialog-body form moment">
          <div class="moment-when">
            <DayButton label="Jour" text={capitalize(longDay(day))} {...{ day, today }} onPick={into(setDay)} />
            <p>de</p>
            <TimeField label="Début" text={times.from} onChange={(from) => change({ from })} autoFocus />
            <p>à</p>
            <TimeField label="Fin" text={times.to} onChange={(to) => change({ to })} />
          </div>
          <label class="field">
            <span>Note</span>
            <input
              class="input"
              maxLength={300}
              placeholder="Réunion, appel, visite…"
              value={title}
              onInput={(event) => into(setTitle)(event.currentTarget.value)}
            />
          </label>
          <div class="moment-target">
            <TargetFields {...{ target, projects }} onChange={into(setTarget)} />
          </div>
          <Effect {...{ asked, fill, day }} told={error !== ""} taking={taking} onTaking={into(setTaking)} />
        </div>
        <EditorFoot error={error} action="Ajouter" />
      </Form>
    </Dialog>
  );
}

interface TimeFieldProps {
  label: string;
  text: string;
  autoFocus?: boolean;
  onChange: (text: string) => void;
}

export function TimeField({ label, onChange, text, autoFocus }: TimeFieldProps) {
  return (
    <input
      class="input clock"
      aria-label={label}
      inputMode="numeric"
      autoFocus={autoFocus}
      value={text}
      onInput={(event) => onChange(event.currentTarget.value)}
    />
  );
}

type Asked = ReturnType<typeof readMoment>;

// Times that nobody typed over keep their seconds.
export function wanted(day: Day, times: { from: string; to: string }, range: Props["range"]): Asked {
  const asked = readMoment(day, times.from, times.to);
  if (typeof asked === "string" || dayOf(range.start) !== day) return asked;
  const exact = (read: UnixTime, was: UnixTime) => (Math.floor(was / 60) * 60 === read ? was : read);
  const [start, end] = [exact(asked.start, range.start), exact(asked.end, range.end)];
  return end > start ? { start, end } : asked;
}

// What the days that it touches say; a moment may end after midnight.
function useFilling(day: Day, asked: Asked, now: UnixTime): Filling | undefined {
  const next = addDays(day, 1);
  const crosses = typeof asked !== "string" && dayOf(asked.end - 1) === next;
  const one = useAnswer("day", { date: day }).answer;
  const other = useAnswer("day", crosses ? { date: next } : null).answer;
  if (typeof asked === "string" || one?.date !== day || (crosses && other?.date !== next)) return undefined;
  const segments: Segment[] = [...one.segments, ...(crosses && other ? other.segments : [])];
  return filling(segments, asked, now);
}

interface EffectProps {
  asked: Asked;
  fill: Filling | undefined;
  day: Day;
  /** What is wrong is told elsewhere. */
  told: boolean;
  taking: boolean;
  onTaking: (taking: boolean) => void;
}

function Effect({ asked, fill, day, told, taking, onTaking }: EffectProps) {
  const overnight = typeof asked !== "string" && dayOf(asked.end - 1) !== day;
  const lines = fill && [
    fill.added >= 1 ? `Ajoute ${duration(fill.added)}${overnight ? ", jusqu’au lendemain" : ""}.` : "N’ajoute rien.",
    fill.taken >= 1 && !taking && `${duration(fill.taken)} déjà enregistrées restent comme elles sont.`,
    fill.future >= 1 && `${duration(fill.future)} encore à venir ne comptent pas.`,
  ];
  const text = typeof asked === "string" ? !told && asked : (lines || []).filter(Boolean).join(" ");
  return (
    <div class="moment-effect">
      <Said text={text} />
      {fill && fill.taken >= 1 && (
        <label class="check">
          <input type="checkbox" checked={taking} onChange={(event) => onTaking(event.currentTarget.checked)} />
          {`Attribuer aussi ce qui est déjà enregistré (${duration(fill.taken)})`}
        </label>
      )}
    </div>
  );
}
