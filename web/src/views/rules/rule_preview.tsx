import { useState } from "preact/hooks";
import type { Answer, Body } from "../../bridge/routes";
import type { TextShare } from "../../bridge/rules";
import { useAnswer } from "../../client";
import { count, duration } from "../../model/time";
import { Icon } from "../../ui/icons";
import { Foreign, Incomplete, Segmented } from "../../ui/parts";
import { Said } from "../../ui/said";
import { useSettled } from "../../ui/settled";
import type { RuleDraft } from "./draft";

const periods = [
  { value: false, label: "30 derniers jours", words: "ces 30 derniers jours" },
  { value: true, label: "Tout", words: "depuis le début" },
];

/** What the rule catches, whoever decides about it in the end; asked while it is being written. */
export function RulePreview({ rule: draft }: { rule: RuleDraft }) {
  const [all, setAll] = useState(false);
  const { field, category, projectId, replaces } = draft;
  const pattern = draft.pattern.trim();
  const rule = useSettled({ field, pattern, category, project_id: projectId, replaces, all });
  if (rule.pattern === "" || pattern === "") return null;
  return (
    <section class="preview" aria-label="Ce que la règle attrape">
      <div class="preview-head">
        <h3>Ce que la règle attrape</h3>
        <Segmented legend="Période" small choices={periods} value={all} onChange={setAll} />
      </div>
      <Caught rule={rule} />
    </section>
  );
}

function Caught({ rule }: { rule: Body<"rules.preview"> }) {
  const { answer, error } = useAnswer("rules.preview", rule);
  const told = answer && [answer.from, answer.spans, answer.seconds].join();
  return (
    <>
      <Said role="alert" class="field-error" text={error} />
      <Said text={!error && told}>{answer && <Summary answer={answer} />}</Said>
      {!error && !answer && <p class="quiet">Calcul…</p>}
      {!error &&
        answer?.examples.map((example) => (
          <Example key={example.text} {...{ example }} field={rule.field} />
        ))}
    </>
  );
}

type Preview = Answer<"rules.preview">;

function Summary({ answer }: { answer: Preview }) {
  const { words } = periods[answer.from === null ? 1 : 0]!;
  const { spans, seconds, kept } = answer;
  return (
    <>
      <p>
        {spans === 0 ? <b>Rien {words}.</b> : <b>{`${count(spans, "activité")}, ${duration(seconds)}`}</b>}
        {spans > 0 && ` ${words}.`}
        {kept.spans > 0 && (
          <span class="quiet">
            {` Attribué à la main, resterait tel quel\u00a0: ${duration(kept.seconds)}.`}
          </span>
        )}
      </p>
      <Incomplete text={answer.incomplete} />
    </>
  );
}

interface ExampleProps {
  example: Preview["examples"][number];
  field: RuleDraft["field"];
}

// A text that the rule catches, and in it what was seen there: the titles and addresses that it hides.
function Example({ example, field }: ExampleProps) {
  const inside = [...(field === "title" ? [] : example.titles), ...(field === "url" ? [] : example.urls)];
  if (inside.length === 0)
    return (
      <div class="preview-example">
        <Share {...example} />
      </div>
    );
  return (
    <details>
      <summary>
        <Icon name="right" />
        <Share {...example} />
      </summary>
      <ul role="list">
        {inside.map((share) => (
          <li key={share.text} class="quiet">
            <Share {...share} />
          </li>
        ))}
      </ul>
    </details>
  );
}

function Share({ text, seconds }: TextShare) {
  return (
    <>
      <span>
        <Foreign text={text} length={120} />
      </span>
      <b>{duration(seconds)}</b>
    </>
  );
}
