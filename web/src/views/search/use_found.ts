import { useLayoutEffect, useState } from "preact/hooks";
import type { Found, FoundDay } from "../../bridge/routes";
import { errorText, useAnswer, useClient } from "../../client";
import { useSettled } from "../../ui/settled";

export interface FoundPages {
  /** Of the text as it was a moment ago; undefined until it is known. */
  found: Found | undefined;
  /** Those of the first answer and what was fetched since. */
  days: readonly FoundDay[];
  /** Fetches earlier days, where there may be some. */
  fetchMore: (() => void) | undefined;
  error: string | undefined;
  reload: () => void;
}

interface Earlier {
  days: readonly FoundDay[];
  more: boolean;
}

/** What is found of a text while it is typed. Nothing typed asks too: the next answer comes sooner then. */
export function useFound(typed: string): FoundPages {
  const client = useClient();
  const text = useSettled(typed.trim(), 40);
  const [building, setBuilding] = useState(false);
  const { answer, error, reload } = useAnswer("search.find", { text, days: 6 }, building ? 2 : 0);
  const [earlier, setEarlier] = useState<Earlier | null>(null);
  const [failed, setFailed] = useState<string>();
  useLayoutEffect(() => {
    setBuilding(answer?.building === true);
    setEarlier(null); // a new answer has days of its own
    setFailed(undefined);
  }, [answer]);
  const days = [...(answer?.days ?? []), ...(earlier?.days ?? [])];
  const last = days[days.length - 1]?.date;
  const fetchMore = async () => {
    try {
      const next = await client.read("search.find", { text, before: last!, days: 30 });
      // Only where it is still what is asked.
      setEarlier((old) =>
        next.text === answer?.text && old === earlier
          ? { days: [...(old?.days ?? []), ...next.days], more: next.more }
          : old,
      );
    } catch (problem) {
      setFailed(errorText(problem));
    }
  };
  const more = last !== undefined && (earlier?.more ?? answer?.more) === true;
  return {
    found: answer,
    days,
    fetchMore: more ? () => void fetchMore() : undefined,
    error: error ?? failed,
    reload,
  };
}
