import { useEffect, useState } from "preact/hooks";
import type { PendingRule } from "../../bridge/routes";
import { useAnswer } from "../../client";
import { load, save } from "../../model/stored";
import { count } from "../../model/time";

const key = "putOff";
// Not what the first picture waits for.
const milliseconds = 1000;
const nameOf = ({ id, at }: PendingRule) => `${id} ${at}`;

interface Pending {
  pending: readonly PendingRule[];
  /** Those that nobody has put off. */
  shown: readonly PendingRule[];
  putOff: () => void;
}

/** The learnt rules that wait for an answer, also those of another day. */
export function usePending(): Pending {
  const [awake, wake] = useState(false);
  useEffect(() => {
    const timer = setTimeout(() => wake(true), milliseconds);
    return () => clearTimeout(timer);
  }, []);
  const pending = useAnswer("rules.pending", awake ? {} : null).answer ?? [];
  const [off, setOff] = useState(() => load<string[]>(key, [], Array.isArray));
  return {
    pending,
    shown: pending.filter((rule) => !off.includes(nameOf(rule))),
    putOff: () => {
      const all = pending.map(nameOf);
      save(key, all);
      setOff(all);
    },
  };
}

export function learntSentence(number: number): string {
  return `${count(number, "règle apprise attend", "règles apprises attendent")} votre réponse. F6 y mène.`;
}
