import { useLayoutEffect, useState } from "preact/hooks";
import { useClient } from "../../client";
import { momentRange } from "../../model/away";
import { assignable, isAssignable } from "../../model/categories";
import { addMoment, assignIds, assignRange, type Target } from "../../model/changes";
import { duration } from "../../model/time";
import { useShortcuts } from "../../ui/shortcuts";
import { useAttempt, useUndoable } from "../../ui/toast";
import type { Picked } from "./use_picked";

/** What is to be made of what is picked. */
export interface Choice extends Target {
  /** The note of what becomes a moment. */
  note: string;
  /** A range's time away is given, too; null as long as nobody said. */
  filling: boolean | null;
}

const blank: Choice = { category: null, projectId: null, note: "", filling: null };
/** Seconds: a range with less time away has none that anybody would fill. */
const shortestAway = 60;

/** At first what all the blocks have been given by hand already. */
export function useChoice({ blocks, range, selected }: Picked): [Choice, (part: Partial<Choice>) => void] {
  const [choice, setChoice] = useState(blank);
  const what = range ? `${range.start}` : selected.map((block) => block.ids[0]).join(",");
  useLayoutEffect(() => {
    const [first] = blocks;
    const same =
      first &&
      !range &&
      blocks.every((block) => block.cat === first.cat && block.pid === first.pid && block.manual);
    const category = same && isAssignable(first.cat) ? first.cat : null;
    setChoice({ ...blank, category, projectId: same ? first.pid : null });
  }, [what]);
  return [choice, (part) => setChoice((old) => ({ ...old, ...part }))];
}

/** Whether a range holds both activity and time away, so that the latter may be meant or not. */
export function isMixed({ range, time, awayTime }: Picked): boolean {
  return range !== null && time > 0 && awayTime >= shortestAway;
}

/** Whether time away is given, too: of a range with more activity only when somebody says so. */
export function isFilling(picked: Picked, { filling }: Choice): boolean {
  const { range, time, away, awayTime } = picked;
  if (isMixed(picked)) return filling ?? awayTime > time;
  return range ? time === 0 && awayTime >= 1 : away.length > 0;
}

/** Gives what is picked, named `what`, a category and a project; the digits do as well. */
export function useAssign(picked: Picked, choice: Choice, what: string, onDone: () => void) {
  const { range, blocks, time, away } = picked;
  const client = useClient();
  const attempt = useAttempt();
  const undoable = useUndoable();
  const ids = blocks.flatMap((block) => block.ids);
  const fills = isFilling(picked, choice);
  const assign = (target: Target) =>
    void attempt(async () => {
      const automatic = target.category === null && target.projectId === null;
      const adds = fills && !(automatic && choice.note.trim() === "");
      const assigns = time > 0 && !(automatic && blocks.every((block) => !block.manual));
      await undoable(
        async () => {
          if (assigns) await (range ? assignRange(client, range, target) : assignIds(client, ids, target));
          return adds ? addMoment(client, away.map(momentRange), choice.note, target) : null;
        },
        ({ answer }) => ({ text: said(what, assigns ? time : 0, answer?.added ?? 0, automatic) }),
      );
      onDone();
    });
  // One key gives a category and leaves the project that was given by hand.
  const quick = (category: string | null) => () => {
    if (time === 0 && !(fills && category !== null)) return false;
    const [first] = blocks;
    const keep =
      category !== null && first && blocks.every((block) => block.manual && block.pid === first.pid);
    assign({ category, projectId: keep ? first.pid : null });
    return true;
  };
  useShortcuts({
    ...Object.fromEntries(assignable.map((cat, index) => [String(index + 1), quick(cat)])),
    "0": quick(null),
  });
  return assign;
}

function said(what: string, assigned: number, added: number, automatic: boolean): string {
  if (assigned === 0) return `Ajouté : ${what} (${duration(added)}).`;
  const more = added > 0 ? `, ${duration(added)} d’absence ajoutées` : "";
  return `${automatic ? "De nouveau automatique" : "Attribué"} : ${what} (${duration(assigned)}${more}).`;
}
