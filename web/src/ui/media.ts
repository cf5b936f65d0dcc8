import { useEffect, useMemo, useState } from "preact/hooks";

/** Below which rows take two lines; the style sheets' limit. */
export const smallWindow = "(max-width: 700px)";

/** Whether a media query holds, now and later. */
export function useMedia(query: string): boolean {
  const list = useMemo(() => matchMedia(query), [query]);
  const [matches, setMatches] = useState(list.matches);
  useEffect(() => {
    const follow = () => setMatches(list.matches);
    follow();
    list.addEventListener("change", follow);
    return () => list.removeEventListener("change", follow);
  }, [list]);
  return matches;
}

/**
 * Marks the page for `styles/contrast.css` while the browser wants high contrast. The program's own window
 * knows it from the desktop and sets the same mark.
 */
export function followContrast(): void {
  const root = document.documentElement;
  const queries = ["(prefers-contrast: more)", "(forced-colors: active)"].map((query) => matchMedia(query));
  const mark = () => {
    if (queries.some(({ matches }) => matches)) root.dataset.contrast = "more";
    else delete root.dataset.contrast;
  };
  if (queries.some(({ matches }) => matches)) mark();
  for (const query of queries) query.addEventListener("change", mark);
}
