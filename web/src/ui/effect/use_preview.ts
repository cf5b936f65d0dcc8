import { useEffect, useLayoutEffect, useRef, useState } from "preact/hooks";
import type { Answer, Step } from "../../bridge/routes";
import { errorText, useClient } from "../../client";

type Measured = Answer<"changes.preview">;

interface Preview {
  /** The last one; while another change is being measured, still the one before. */
  effect: Measured | undefined;
  error: string | undefined;
  /** It is not what is known of the change as it is now. */
  stale: boolean;
}

const milliseconds = 80;

/**
 * What changes would do, measured while they are being written; null while there is nothing to measure. The
 * program has one such question at a time: what is written meanwhile is asked when it has answered.
 */
export function usePreview(steps: readonly Step[] | null): Preview {
  const client = useClient();
  const key = steps && JSON.stringify(steps);
  const [state, setState] = useState<{ key: string | null; effect?: Measured | undefined; error?: string }>({
    key: null,
  });
  const wanted = useRef(key);
  const asking = useRef(false);
  wanted.current = key;

  const ask = async () => {
    const asked = wanted.current;
    if (asking.current || asked === null) return;
    asking.current = true;
    try {
      const effect = await client.read("changes.preview", { steps: JSON.parse(asked) as Step[] });
      setState({ key: asked, effect });
    } catch (error) {
      const text = errorText(error);
      setState((old) => ({ key: asked, effect: old.effect, error: text }));
    }
    asking.current = false;
    if (wanted.current !== asked) void ask();
  };
  // At once when it is opened, and then when a moment has passed without a key.
  const opened = useRef(false);
  useEffect(() => {
    const timer = setTimeout(() => void ask(), opened.current ? milliseconds : 0);
    opened.current = true;
    return () => clearTimeout(timer);
  }, [key]);
  useLayoutEffect(
    () => () => {
      wanted.current = null;
    },
    [],
  );
  const { effect, error } = state;
  return { effect, error, stale: state.key !== key };
}
