import { useId, useState } from "preact/hooks";
import type { GoalBound, GoalFacts, GoalPeriod, GoalSubject, GoalWish } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { categories, categoryLabel } from "../../model/categories";
import { boundNames, lengthError, periodNames, readLength, subjectNames } from "../../model/goals";
import { addDays, clip, dayOf, plainDomain, typeset } from "../../model/time";
import { Dialog, EditorFoot, Form } from "../../ui/dialog";
import { ProjectSelect, Segmented, Select } from "../../ui/parts";
import { useTask } from "../../ui/task";
import { useUndoable } from "../../ui/toast";

interface Draft {
  subject: GoalSubject;
  category: string;
  project: number | null;
  /** Of a site or an application. */
  name: string;
  bound: GoalBound;
  hours: string;
  minutes: string;
  period: GoalPeriod;
}

function draftOf(goal: GoalFacts | undefined): Draft {
  const { subject = "category", value = null, seconds = 6 * 3600 } = goal ?? {};
  return {
    subject,
    category: subject === "category" ? (value ?? "travail") : "travail",
    project: goal?.project_id ?? null,
    name: subject === "site" || subject === "app" ? (value ?? "") : "",
    bound: goal?.bound ?? "least",
    hours: String(Math.floor(seconds / 3600)),
    minutes: String(Math.floor((seconds % 3600) / 60)),
    period: goal?.period ?? "day",
  };
}

// What is to be sent, or what is wrong with it in French.
function wishOf(draft: Draft, id: number | undefined): GoalWish | string {
  const { subject, bound, period, project } = draft;
  const seconds = readLength(draft.hours, draft.minutes);
  const wrong = lengthError(seconds, period);
  if (subject === "project" && project === null) return "Choisissez un projet.";
  const value = subject === "category" ? draft.category : draft.name.trim();
  if (value === "" && subject === "site") return "Un site s’écrit exemple.fr.";
  if (value === "" && subject === "app") return "Donnez le nom de l’application.";
  if (seconds === null || wrong) return wrong;
  const about = subject === "project" ? { project_id: project ?? 0 } : { value };
  return { subject, bound, period, seconds, ...about, ...(id !== undefined && { id }) };
}

interface Props {
  /** Absent for a new one. */
  goal?: GoalFacts | undefined;
  onClose: () => void;
}

/** A goal or a limit to write. */
export function GoalEditor({ goal, onClose }: Props) {
  const client = useClient();
  const undoable = useUndoable();
  const { error, setError, run } = useTask();
  const [draft, setDraft] = useState(() => draftOf(goal));
  const change = (part: Partial<Draft>) => {
    setDraft({ ...draft, ...part });
    setError("");
  };
  const save = () => {
    const wish = wishOf(draft, goal?.id);
    if (typeof wish === "string") return setError(wish);
    return run(async () => {
      await undoable(
        () => client.call("goals.save", wish),
        ({ changes }) => ({ text: typeset(changes[0]?.label ?? "Objectif enregistré.") }),
      );
      onClose();
    });
  };
  return (
    <Dialog title={goal ? "Modifier l’objectif ou la limite" : "Nouvel objectif ou nouvelle limite"} onClose={onClose}>
      <Form onSubmit={save}>
        <div class="dialog-body form goal-form">
          <Segmented
            legend="Ce que cela concerne"
            choices={(Object.keys(subjectNames) as GoalSubject[]).map((value) => ({ value, label: subjectNames[value] }))}
            value={draft.subject}
            onChange={(subject) => change({ subject, name: "" })}
          />
          <SubjectField draft={draft} onChange={change} />
          <LengthFields draft={draft} onChange={change} />
        </div>
        <EditorFoot error={error} />
      </Form>
    </Dialog>
  );
}

interface FieldsProps {
  draft: Draft;
  onChange: (part: Partial<Draft>) => void;
}

function SubjectField({ draft, onChange }: FieldsProps) {
  const projects = useAnswer("projects.list", {}).answer ?? [];
  if (draft.subject === "category")
    return (
      <label class="field">
        <span>Catégorie</span>
        <Select
          value={draft.category}
          options={categories.map((cat) => [cat, categoryLabel(cat)] as const)}
          onChange={(category) => onChange({ category })}
        />
      </label>
    );
  if (draft.subject === "project")
    return (
      <label class="field">
        <span>Projet</span>
        <ProjectSelect
          none="Choisir…"
          projects={projects}
          value={draft.project}
          onChange={(project) => onChange({ project })}
        />
      </label>
    );
  return <NameField key={draft.subject} {...{ draft, onChange }} />;
}

/** How many names are offered. */
const offered = 60;

// What was seen of late is offered.
function NameField({ draft, onChange }: FieldsProps) {
  const id = useId();
  const today = dayOf(Date.now() / 1000);
  const { answer } = useAnswer("period", { from: addDays(today, -30), to: today, compare: false });
  const site = draft.subject === "site";
  const names = (site ? answer?.domains : answer?.apps)?.slice(0, offered).map(({ name }) => name) ?? [];
  return (
    <label class="field">
      <span>{subjectNames[draft.subject]}</span>
      <input
        class="input"
        autoFocus
        maxLength={300}
        list={id}
        placeholder={site ? "exemple.fr" : "Firefox"}
        value={draft.name}
        onInput={(event) => onChange({ name: event.currentTarget.value })}
      />
      <datalist id={id}>
        {names.map((name) => (
          <option key={name} value={site ? plainDomain(name) : name}>
            {clip(name, 60)}
          </option>
        ))}
      </datalist>
    </label>
  );
}

function LengthFields({ draft, onChange }: FieldsProps) {
  return (
    <div class="field-row wrap">
      <Segmented
        legend="Objectif ou limite"
        choices={(["least", "most"] as const).map((value) => ({ value, label: boundNames[value] }))}
        value={draft.bound}
        onChange={(bound) => onChange({ bound })}
      />
      <div class="with-unit">
        <input
          class="input number"
          inputMode="numeric"
          aria-label="Heures"
          value={draft.hours}
          onInput={(event) => onChange({ hours: event.currentTarget.value })}
        />
        <p>h</p>
        <input
          class="input number"
          inputMode="numeric"
          aria-label="Minutes"
          value={draft.minutes}
          onInput={(event) => onChange({ minutes: event.currentTarget.value })}
        />
        <p>min</p>
      </div>
      <Segmented
        legend="Par jour ou par semaine"
        choices={(["day", "week"] as const).map((value) => ({ value, label: periodNames[value] }))}
        value={draft.period}
        onChange={(period) => onChange({ period })}
      />
    </div>
  );
}
