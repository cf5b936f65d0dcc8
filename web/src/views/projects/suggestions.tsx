import { useState } from "preact/hooks";
import type { RuleRow, Suggestion } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { fingerprint } from "../../model/fingerprint";
import { load, save } from "../../model/stored";
import { clip, count, duration, isolated } from "../../model/time";
import { Confirm } from "../../ui/dialog";
import { EffectPreview } from "../../ui/effect/effect_preview";
import { Button, Foreign, ProjectName } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { useUndoable } from "../../ui/toast";
import { fieldLabel } from "../rules/labels";

const key = "ignoredSuggestions";
const most = 8;
// Not what it is about: a site that is erased everywhere would be kept here.
const id = ({ field, name, project_id }: Suggestion) => fingerprint(`${field}|${name}|${project_id}`);

// An earlier version kept them as they are.
function ignored(): string[] {
  const all = load<unknown[]>(key, [], Array.isArray);
  return all.map((one) => (String(one).includes("|") ? fingerprint(String(one)) : String(one)));
}

/** Time of the last two weeks that looks as if it belonged to a project. */
export function Suggestions() {
  const { answer } = useAnswer("suggestions", {});
  const [hidden, setHidden] = useState(ignored);
  const [accepting, setAccepting] = useState<readonly Suggestion[] | null>(null);
  const shown = (answer ?? []).filter((suggestion) => !hidden.includes(id(suggestion))).slice(0, most);
  const ignore = (suggestion: Suggestion) => {
    const all = [...hidden, id(suggestion)].slice(-200);
    save(key, all);
    setHidden(all);
  };
  return (
    <>
      {shown.length > 0 && (
        <section class="suggestions" aria-label="Suggestions">
          <div class="suggestions-head">
            <h2>Suggestions</h2>
            <p class="quiet">
              Du temps sans projet, ces quatorze derniers jours, qui semble relever de l’un des vôtres.
            </p>
            {shown.length > 1 && (
              <Button kind="small" onClick={() => setAccepting(shown)}>
                Tout accepter…
              </Button>
            )}
          </div>
          <Offers suggestions={shown} onIgnore={ignore} onAccept={(one) => setAccepting([one])} />
        </section>
      )}
      {accepting && <Accept suggestions={accepting} onClose={() => setAccepting(null)} />}
    </>
  );
}

interface AcceptProps {
  suggestions: readonly Suggestion[];
  onClose: () => void;
}

/** Asks before suggestions become rules, which hold for the whole past. */
function Accept({ suggestions, onClose }: AcceptProps) {
  const client = useClient();
  const undoable = useUndoable();
  const rules = useAnswer("rules.list", {}).answer;
  const bodies = rules && suggestions.map((one) => ruleOf(one, rules));
  const accept = () =>
    undoable(
      async () => {
        for (const body of bodies ?? []) await client.call("rules.save", body);
      },
      () => ({ text: accepted(suggestions) }),
    );
  return (
    <Confirm
      title={suggestions.length === 1 ? "Accepter la suggestion ?" : "Accepter toutes les suggestions ?"}
      action="Accepter"
      disabled={!bodies}
      onClose={onClose}
      onConfirm={accept}
    >
      <ul role="list" class="accepted">
        {suggestions.map((one) => (
          <li key={id(one)}>
            <span class="quiet">{fieldLabel(one.field)}</span>
            <b>
              <Foreign text={one.name} length={60} />
            </b>
            <span aria-hidden="true">→</span>
            <ProjectName project={{ name: one.project, color: one.color }} length={60} />
          </li>
        ))}
      </ul>
      <EffectPreview steps={bodies ? bodies.map((body) => ({ path: "rules.save" as const, body })) : null} />
    </Confirm>
  );
}

function accepted(suggestions: readonly Suggestion[]): string {
  const [one] = suggestions;
  return one && suggestions.length === 1
    ? `${isolated(one.name, 60)} va désormais à ${isolated(one.project, 60)}.`
    : `${count(suggestions.length, "règle créée", "règles créées")}.`;
}

// Saving replaces a rule on the same text; its category stays.
function ruleOf({ field, name: pattern, project_id }: Suggestion, rules: readonly RuleRow[]) {
  const same = (rule: RuleRow) =>
    rule.field === field && rule.pattern.toLowerCase() === pattern.toLowerCase();
  return { field, pattern, category: rules.find(same)?.category ?? null, project_id };
}

interface OffersProps {
  suggestions: readonly Suggestion[];
  onIgnore: (suggestion: Suggestion) => void;
  onAccept: (suggestion: Suggestion) => void;
}

function Offers({ suggestions, onIgnore, onAccept }: OffersProps) {
  const list = useRoving<HTMLUListElement>("grid");
  return (
    <ul role="list" ref={list}>
      {suggestions.map((suggestion) => (
        <li key={id(suggestion)}>
          <b>
            <Foreign text={suggestion.name} length={60} />
          </b>
          <span class="quiet">{duration(suggestion.duration)}</span>
          <span aria-hidden="true">→</span>
          <ProjectName project={{ name: suggestion.project, color: suggestion.color }} length={60} />
          <Button
            kind="small"
            onClick={() => onIgnore(suggestion)}
            aria-label={`Ignorer ${clip(suggestion.name, 60)}`}
          >
            Ignorer
          </Button>
          <Button
            kind="soft small"
            onClick={() => onAccept(suggestion)}
            aria-label={`Accepter ${clip(suggestion.name, 60)} pour ${clip(suggestion.project, 60)}`}
          >
            Accepter…
          </Button>
        </li>
      ))}
    </ul>
  );
}
