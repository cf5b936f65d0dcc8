import { useState } from "preact/hooks";
import type { RuleRow, Suggestion } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { load, save } from "../../model/stored";
import { clip, duration, isolated } from "../../model/time";
import { Button, Foreign, ProjectName } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { useAttempt, useUndoable } from "../../ui/toast";
import { fieldLabel } from "../rules/labels";

const key = "ignoredSuggestions";
const id = ({ field, name, project_id }: Suggestion) => `${field}|${name}|${project_id}`;

function ignored(): string[] {
  return load<string[]>(key, [], Array.isArray);
}

/** Time of the last two weeks that looks as if it belonged to a project. */
export function Suggestions() {
  const client = useClient();
  const attempt = useAttempt();
  const undoable = useUndoable();
  const { answer } = useAnswer("suggestions", {});
  const [hidden, setHidden] = useState(ignored);
  const shown = (answer ?? []).filter((suggestion) => !hidden.includes(id(suggestion)));
  const accept = (suggestion: Suggestion) =>
    attempt(async () => {
      const { field, name: pattern, project_id, project } = suggestion;
      // Saving replaces a rule on the same text; its category stays.
      const rules = await client.call("rules.list", {});
      const same = (rule: RuleRow) =>
        rule.field === field && rule.pattern.toLowerCase() === pattern.toLowerCase();
      const category = rules.find(same)?.category ?? null;
      await undoable(
        () => client.call("rules.save", { field, pattern, category, project_id }),
        () => ({
          text: `${isolated(pattern, 60)} va désormais à ${isolated(project, 60)}.`,
          details: [
            `Règle créée : ${fieldLabel(field).toLowerCase()} contient « ${isolated(pattern, 60)} ».`,
          ],
        }),
      );
    });
  const ignore = (suggestion: Suggestion) => {
    const all = [...hidden, id(suggestion)].slice(-200);
    save(key, all);
    setHidden(all);
  };
  if (shown.length === 0) return null;
  return (
    <section class="suggestions" aria-label="Suggestions">
      <h2>Suggestions</h2>
      <p class="quiet">
        Du temps sans projet, ces quatorze derniers jours, qui semble relever de l’un des vôtres.
      </p>
      <Offers suggestions={shown.slice(0, 8)} onIgnore={ignore} onAccept={(one) => void accept(one)} />
    </section>
  );
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
            Accepter
          </Button>
        </li>
      ))}
    </ul>
  );
}
