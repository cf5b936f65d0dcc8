import { useState } from "preact/hooks";
import { errorText } from "../client";

interface Task {
  busy: boolean;
  error: string;
  setError: (text: string) => void;
  /** Yields when it has ended, however it went. */
  run: (action: () => Promise<void> | void) => Promise<void>;
}

/** An action that takes its time: whether it is going on, and what went wrong with it. */
export function useTask(): Task {
  const [busy, setBusy] = useState(false);
  const [error, setError] = useState("");
  const run = async (action: () => Promise<void> | void) => {
    setBusy(true);
    setError("");
    try {
      await action();
    } catch (failure) {
      setError(errorText(failure));
    }
    setBusy(false);
  };
  return { busy, error, setError, run };
}
