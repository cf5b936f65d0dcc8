import type { ComponentChildren } from "preact";
import { useLayoutEffect, useRef } from "preact/hooks";
import type { Step } from "../../bridge/routes";
import { effectText } from "../../model/effect";
import { Said } from "../said";
import { EffectStrip } from "./effect_strip";
import { usePreview } from "./use_preview";

interface Props {
  /** What would be sent; null while it is not whole. */
  steps: readonly Step[] | null;
  /** Said instead of figures while it is not. */
  hint?: string;
  none?: ComponentChildren;
}

/** The effect of a change before it is made. It keeps its height: nothing below moves while somebody types. */
export function EffectPreview({ steps, hint = "", none }: Props) {
  const preview = usePreview(steps);
  const { effect, error } = preview;
  const stale = steps !== null && preview.stale;
  const box = useRef<HTMLElement>(null);
  useKeptHeight(box);
  return (
    <section class="effect kept" aria-label="Effet sur le passé" aria-busy={stale} ref={box}>
      <Said class="sr-only" text={steps && !stale && !error && effect && effectText(effect)} />
      {steps === null ? (
        <p class="effect-none quiet">{hint}</p>
      ) : error && !stale ? (
        <p class="effect-none" role="alert">
          {error}
        </p>
      ) : effect ? (
        <div class={stale ? "effect-now dimmed" : "effect-now"}>
          <EffectStrip effect={effect} {...(none === undefined ? {} : { none })} />
        </div>
      ) : (
        <p class="effect-none quiet">Calcul…</p>
      )}
    </section>
  );
}

// As high as it ever was, until its width changes or it is folded.
function useKeptHeight(box: { current: HTMLElement | null }): void {
  const kept = useRef({ width: 0, height: 0 });
  const keep = () => {
    const own = box.current;
    if (!own) return;
    const width = own.offsetWidth;
    if (width !== kept.current.width) {
      kept.current = { width, height: 0 };
      own.style.minHeight = "";
    }
    kept.current.height = Math.max(kept.current.height, own.offsetHeight);
    own.style.minHeight = `${kept.current.height}px`;
  };
  useLayoutEffect(keep);
  useLayoutEffect(() => {
    const own = box.current;
    if (!own) return;
    const fold = () => {
      kept.current.width = 0;
      keep();
    };
    own.addEventListener("toggle", fold, true);
    // Not at once: what is observed would change while it is looked at.
    let frame = 0;
    const resized = new ResizeObserver(() => {
      cancelAnimationFrame(frame);
      frame = requestAnimationFrame(keep);
    });
    resized.observe(own);
    return () => {
      cancelAnimationFrame(frame);
      own.removeEventListener("toggle", fold, true);
      resized.disconnect();
    };
  }, []);
}
