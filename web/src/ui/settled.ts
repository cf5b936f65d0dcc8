import { useEffect, useState } from "preact/hooks";

/** The value once it has been the same for a moment, so that not every key that is pressed asks anew. */
export function useSettled<T>(value: T, milliseconds = 150): T {
  const [settled, settle] = useState(value);
  useEffect(() => {
    const timer = setTimeout(() => settle(value), milliseconds);
    return () => clearTimeout(timer);
  }, [JSON.stringify(value)]);
  return settled;
}
