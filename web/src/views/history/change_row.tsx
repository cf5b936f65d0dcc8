import type { Change } from "../../bridge/store";
import { amount } from "../../model/effect";
import { clip, clock, count, typeset } from "../../model/time";
import { EffectLine } from "../../ui/effect/effect_line";
import { Icon, type IconName } from "../../ui/icons";
import { Button, Foreign } from "../../ui/parts";
import { Said } from "../../ui/said";
import { useTask } from "../../ui/task";
import { useTurn } from "../../ui/toast";
import { learnedText } from "../rules/learned_text";

// By how the kind begins.
const kinds: [string, IconName, string][] = [
  ["assign", "person", "Attribution"],
  ["rule", "rules", "Règle"],
  ["project", "projects", "Projet"],
  ["setting", "settings", "Réglage"],
  ["goal", "activity", "Objectif"],
  ["import", "restore", "Import"],
  ["erase", "trash", "Suppression"],
  ["moments.", "plus", "Moment"],
];

/** A change, and the way back from it or to it again. */
export function ChangeRow({ change }: { change: Change }) {
  const { busy, error, run } = useTask();
  const turn = useTurn();
  const { kind, label, at, learned, undone, undoable } = change;
  const [, icon, name] = kinds.find(([start]) => kind.startsWith(start)) ?? ["", "edit" as const, "Changement"];
  const action = undone ? "Rétablir" : "Annuler";
  const words = typeset(label);
  return (
    <li class={undone ? "change-row undone" : "change-row"}>
      <span class="quiet change-time">{clock(at)}</span>
      <span class="change-kind" title={name}>
        <Icon name={icon} />
        <span class="sr-only">{`${name}\u00a0:`}</span>
      </span>
      <div class="change-what">
        <p>
          <b>
            <Foreign text={words} length={200} />
          </b>
          {undone && <span class="tag">Annulé</span>}
        </p>
        {(undone ? [] : learned).map((rule, index) => (
          <p key={index} class="quiet">
            {learnedText(rule)}
          </p>
        ))}
        <What change={change} />
        <Said role="alert" class="field-error" text={error} />
      </div>
      {undoable ? (
        <Button
          kind="small"
          disabled={busy}
          aria-label={`${action} ${clip(words, 80)}`}
          onClick={() => run(() => turn(undone ? "redo" : "undo", [change]))}
        >
          {action}
        </Button>
      ) : (
        <span class="quiet change-final">Définitif</span>
      )}
    </li>
  );
}

// A new colour or name is not expected to move time, a rule is.
function What({ change: { kind, effect, spans, seconds } }: { change: Change }) {
  if (effect && (effect.spans > 0 || kind.startsWith("rule"))) return <EffectLine effect={effect} />;
  if (spans === 0) return null;
  return <p class="quiet">{`${count(spans, "activité")}, ${amount(seconds)}`}</p>;
}
