import type { Effect } from "../../bridge/routes";
import { amount, categoryNets, type Net, projectNets, signed, sinceWhen } from "../../model/effect";
import { Icon } from "../icons";
import { EffectStrip, NetName } from "./effect_strip";

// Of projects and of categories.
const shown = 2;

/** An effect in a line, which unfolds to all that is known of it. */
export function EffectLine({ effect }: { effect: Effect }) {
  if (effect.spans === 0 && !effect.incomplete)
    return <p class="effect-line quiet">Rien ne change dans le passé.</p>;
  const [projects, categories] = [projectNets(effect), categoryNets(effect)];
  const nets = [...projects.slice(0, shown), ...categories.slice(0, shown)];
  return (
    <details class="effect-fold">
      <summary>
        <Icon name="right" />
        <span class="effect-line">
          {nets.map((net) => (
            <Figure key={net.key} net={net} />
          ))}
          {nets.length === 0 && `${amount(effect.seconds)} changent, `}
          {projects.length + categories.length > nets.length && "… "}
          <span class="quiet">{sinceWhen(effect)}</span>
        </span>
      </summary>
      <div class="effect">
        <EffectStrip effect={effect} />
      </div>
    </details>
  );
}

function Figure({ net }: { net: Net }) {
  return (
    <>
      <span class="figure">
        <b>{signed(net.seconds)}</b>
        <NetName net={net} />,
      </span>{" "}
    </>
  );
}
