import { useState } from "preact/hooks";
import type { Answer, Body, ProjectRow } from "../../bridge/routes";
import type { TextShare } from "../../bridge/rules";
import { useAnswer } from "../../client";
import { count, duration } from "../../model/time";
import { CategoryName, Icon } from "../../ui/icons";
import { Foreign, Incomplete, ProjectName, Segmented } from "../../ui/parts";
import { Said } from "../../ui/said";
import { useSettled } from "../../ui/settled";
import type { RuleDraft } from "./draft";

const periods = [
  { value: false, label: "30 derniers jours", words: "ces 30 derniers jours" },
  { value: true, label: "Tout", words: "depuis le début" },
];

interface Props {
  rule: RuleDraft;
  /** Undefined until they have been read. */
  projects: readonly ProjectRow[] | undefined;
}

/** What the rule would catch and change, asked while it is being written. */
export function RulePreview({ rule: draft, projects }: Props) {
  const [all, setAll] = useState(false);
  const { field, category, projectId, replaces } = draft;
  const pattern = draft.pattern.trim();
  const rule = useSettled({ field, pattern, category, project_id: projectId, replaces, all });
  return (
    <section class="preview" aria-label="Aperçu">
      <Segmented legend="Période de l’aperçu" small choices={periods} value={all} onChange={setAll} />
      {rule.pattern === "" || pattern === "" ? (
        <p class="quiet">Ce que la règle attrape apparaîtra ici.</p>
      ) : (
        <Caught rule={rule} projects={projects} />
      )}
    </section>
  );
}

interface CaughtProps {
  rule: Body<"rules.preview">;
  projects: readonly ProjectRow[] | undefined;
}

function Caught({ rule, projects }: CaughtProps) {
  const { answer, error } = useAnswer("rules.preview", rule);
  const told = answer && [answer.from, answer.spans, answer.seconds, answer.changed.seconds].join();
  return (
    <>
      <Said role="alert" class="field-error" text={error} />
      <Said text={!error && told}>{answer && <Summary answer={answer} />}</Said>
      {!error && !(answer && projects) && <p class="quiet">Calcul…</p>}
      {answer && projects && !error && <Details {...{ answer, projects }} field={rule.field} />}
    </>
  );
}

interface DetailsProps {
  answer: Preview;
  projects: readonly ProjectRow[];
  field: RuleDraft["field"];
}

function Details({ answer, projects, field }: DetailsProps) {
  return (
    <>
      {answer.changes.length > 0 && (
        <ul role="list" class="preview-changes" aria-label="Ce qui changerait">
          {answer.changes.map((change, index) => (
            <li key={index}>
              <Becomes change={change} projects={projects} />
              <b>{duration(change.seconds)}</b>
            </li>
          ))}
        </ul>
      )}
      {answer.examples.map((example) => (
        <Example key={example.text} {...{ example }} field={field} />
      ))}
    </>
  );
}

type Preview = Answer<"rules.preview">;

function Summary({ answer }: { answer: Preview }) {
  const { words } = periods[answer.from === null ? 1 : 0]!;
  const { spans, seconds, changed, kept } = answer;
  return (
    <>
      {spans === 0 ? (
        <p>
          <b>Rien {words}.</b> La règle s’appliquera à la suite.
        </p>
      ) : (
        <p>
          <b>
            {count(spans, "activité")}, {duration(seconds)}
          </b>{" "}
          {words}.
        </p>
      )}
      {(spans > 0 || changed.spans > 0) && (
        <p class="quiet">
          {changed.spans > 0
            ? `Ce qui changerait\u00a0: ${duration(changed.seconds)}.`
            : "Rien ne changerait."}
          {kept.spans > 0 && ` Attribué à la main, resterait tel quel\u00a0: ${duration(kept.seconds)}.`}
        </p>
      )}
      <Incomplete text={answer.incomplete} />
    </>
  );
}

interface BecomesProps {
  change: Preview["changes"][number];
  projects: readonly ProjectRow[];
}

// Only what differs.
function Becomes({ change, projects }: BecomesProps) {
  const project = (id: number | null) => {
    const known = projects.find((one) => one.id === id);
    if (known) return <ProjectName project={known} />;
    return <span class="quiet">{id === null ? "sans projet" : "projet supprimé"}</span>;
  };
  return (
    <span class="becomes">
      {change.from_category !== change.to_category && (
        <span>
          <CategoryName cat={change.from_category} />
          <Arrow />
          <CategoryName cat={change.to_category} />
        </span>
      )}
      {change.from_project !== change.to_project && (
        <span>
          {project(change.from_project)}
          <Arrow />
          {project(change.to_project)}
        </span>
      )}
    </span>
  );
}

function Arrow() {
  return (
    <>
      <span aria-hidden="true">→</span>
      <span class="sr-only">devient</span>
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
