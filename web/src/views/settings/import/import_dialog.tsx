import { useRef, useState } from "preact/hooks";
import type { DateRange, ImportMapping, ImportMonth, ImportPreview, ImportQuestion } from "../../../bridge/routes";
import { useAnswer, useClient } from "../../../client";
import { kindText, rejectedText } from "../../../model/imports";
import { clip, count, duration, typeset } from "../../../model/time";
import { Confirm } from "../../../ui/dialog";
import { Icon } from "../../../ui/icons";
import { Foreign } from "../../../ui/parts";
import { Said } from "../../../ui/said";
import { useUndoable } from "../../../ui/toast";
import { MappingFields } from "./mapping_fields";
import { MonthChoice } from "./month_choice";
import { MonthTable } from "./month_table";

export interface ImportFile {
  name: string;
  text: string;
}

interface Props {
  file: ImportFile;
  onClose: () => void;
}

/** What is in a file, how it is read, and what of it would be stored, before it is. */
export function ImportDialog({ file, onClose }: Props) {
  const client = useClient();
  const undoable = useUndoable();
  const [mapping, setMapping] = useState<ImportMapping | null>(null);
  const [monthFirst, setMonthFirst] = useState<boolean | null>(null);
  const [projects, setProjects] = useState(true);
  const [days, setDays] = useState<DateRange | null>(null);
  const question: ImportQuestion = {
    ...file,
    ...(mapping && { mapping }),
    ...(monthFirst !== null && { month_first: monthFirst }),
    ...days,
  };
  const { answer: preview, error } = useAnswer("import.preview", question);
  // Of the whole file, whichever of them are chosen.
  const all = useRef<readonly ImportMonth[]>([]);
  if (preview && days === null) all.current = preview.months;
  const run = () =>
    undoable(
      () => client.call("import.run", { ...question, create_projects: projects }),
      ({ answer }) => ({
        text: `Importé\u00a0: ${count(answer.spans, "activité")} (${duration(answer.seconds)}).`,
        details: answer.rejected?.map((one) => typeset(rejectedText(one))) ?? [],
      }),
    );
  return (
    <Confirm
      title={`Importer « ${clip(file.name, 60)} »`}
      action="Importer"
      wide
      disabled={!preview || error !== undefined || preview.problem !== null || preview.spans === 0}
      onClose={onClose}
      onConfirm={run}
    >
      <Said class={error ? "field-error" : ""} text={error ?? (preview ? false : "Lecture du fichier…")} />
      {preview && (
        <div class="import">
          <p>{kindText(preview)}.</p>
          <Outcome preview={preview} />
          <MonthTable months={preview.months} />
          {all.current.length > 1 && <MonthChoice months={all.current} {...{ days }} onDays={setDays} />}
          {preview.new_projects.length > 0 && (
            <label class="check">
              <input
                type="checkbox"
                checked={projects}
                onChange={(event) => setProjects(event.currentTarget.checked)}
              />
              <NewProjects names={preview.new_projects} />
            </label>
          )}
          <RejectedList preview={preview} />
          {preview.columns.length > 0 && (
            <MappingFields
              preview={{ ...preview, ...(mapping && { mapping }) }} // also before it is answered
              onMapping={(next) => {
                setMapping(next);
                setDays(null);
              }}
              onMonthFirst={(next) => {
                setMonthFirst(next);
                setDays(null);
              }}
            />
          )}
        </div>
      )}
    </Confirm>
  );
}

function Outcome({ preview }: { preview: ImportPreview }) {
  const { problem, spans, fills, events, seconds } = preview;
  const there = Math.max(seconds - fills, 0);
  const text =
    problem !== null
      ? typeset(problem)
      : spans > 0
        ? `${count(spans, "activité")} (${duration(fills)}) à importer.`
        : events > 0
          ? "Rien à importer : ce temps est déjà enregistré."
          : "Rien à importer dans ce fichier.";
  return (
    <div role="status" class="import-outcome">
      <div key={text}>
        <p class={problem === null ? "" : "state bad"}>
          {problem !== null && <Icon name="warning" />}
          <b>{text}</b>
        </p>
        {spans > 0 && there >= 60 && (
          <p>{`Laissé de côté\u00a0: ${duration(there)} de temps déjà rempli, ou pas encore passé.`}</p>
        )}
      </div>
    </div>
  );
}

const named = 8;

function NewProjects({ names }: { names: readonly string[] }) {
  const more = names.length - named;
  return (
    <span>
      Créer {names.length === 1 ? "le projet" : "les projets"}{" "}
      {names.slice(0, named).map((name, index) => (
        <>
          {index > 0 && ", "}
          <Foreign key={name} text={name} length={40} />
        </>
      ))}
      {more > 0 && ` et ${count(more, "autre")}`}
    </span>
  );
}

function RejectedList({ preview: { rejected } }: { preview: ImportPreview }) {
  if (rejected.length === 0) return null;
  return (
    <section class="rejected" aria-labelledby="rejected">
      <h3 id="rejected">
        <Icon name="warning" />
        Ce qui ne peut pas être lu
      </h3>
      <ul role="list">
        {rejected.map((one) => (
          <li key={one.reason}>{typeset(rejectedText(one))}</li>
        ))}
      </ul>
    </section>
  );
}
