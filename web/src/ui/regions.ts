import { useLayoutEffect } from "preact/hooks";

const stops = ':is(button, input, select):enabled:not([tabindex="-1"])';

// The region itself, where it can have the focus, else what is chosen in it, else its first control.
function wayInto(region: HTMLElement): HTMLElement | null {
  if (region.hasAttribute("tabindex")) return region;
  return region.querySelector<HTMLElement>("input:checked") ?? region.querySelector<HTMLElement>(stops);
}

/** F6 goes from one part of the page to the next, also out of a field; with Shift to the one before. */
export function useRegions(): void {
  useLayoutEffect(() => {
    const onKey = (event: KeyboardEvent) => {
      if (event.key !== "F6" || event.ctrlKey || event.altKey || document.querySelector("dialog")) return;
      const all = [...document.querySelectorAll<HTMLElement>("[data-region]")].filter(wayInto);
      // One may lie in another.
      const at = all.map((region) => region.contains(document.activeElement)).lastIndexOf(true);
      const next = event.shiftKey ? (at < 0 ? -1 : at - 1) : at + 1;
      const region = all[(next + all.length) % all.length];
      if (!region) return;
      event.preventDefault();
      wayInto(region)?.focus();
    };
    window.addEventListener("keydown", onKey);
    return () => window.removeEventListener("keydown", onKey);
  }, []);
}
