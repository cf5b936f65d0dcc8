import { useEffect, useMemo, useState } from "preact/hooks";
import type { Block, Day, RuleField, RuleRow } from "../../bridge/routes";
import { errorText, useAnswer, useClient } from "../../client";
import { assignable, categoryLabel, isAssignable } from "../../model/categories";
import { learnedRules } from "../../model/learned";
import { preview } from "../../model/matching";
import { changedBy } from "../../model/rules";
import { addDays, clip, count, duration, isolated } from "../../model/time";
import { Dialog, EditorFoot } from "../../ui/dialog";
import { Foreign } from "../../ui/parts";
import { useUndoable } from "../../ui/toast";
import { fieldLabel, fields } from "./labels";

export interface RuleDraft {
  field: RuleField;
  pattern: string;
  category: string | null;
  projectId: number | null;
  /** The rule that this one is an edition of. */
  replaces?: RuleRow;
}

export const blankRule: RuleDraft = { field: "domain", pattern: "", category: "travail", projectId: null };

interface Props {
  draft: RuleDraft;
  today: Day;
  onClose: () => void;
}

/** A rule to write, beside what it would have caught during the last week. */
export function RuleEditor({ draft, today, onClose }: Props) {
  const client = useClient();
  const undoable = useUndoable();
  const projects = useAnswer("projects.list", {});
  const [field, setField] = useState<RuleField>(draft.field);
  const [pattern, setPattern] = useState(draft.pattern);
  const [category, setCategory] = useState<string | null>(
    isAssignable(draft.category) ? draft.category : null,
  );
  const [projectId, setProjectId] = useState(draft.projectId);
  const [error, setError] = useState("");

  const save = async () => {
    const trimmed = pattern.trim();
    if (trimmed === "") return setError("Écrivez le texte à chercher.");
    if (category === null && projectId === null) return setError("Choisissez une catégorie ou un projet.");
    try {
      await undoable(
        async () => {
          const { id } = await client.call("rules.save", {
            field,
            pattern: trimmed,
            category,
            project_id: projectId,
          });
          const old = draft.replaces;
          // The program itself replaces a rule of the same field and text.
          if (old && old.id !== id) await client.call("rules.delete", { id: old.id });
          learnedRules.remove([id, ...(old ? [old.id] : [])]);
        },
        () => ({ text: `Règle enregistrée : ${isolated(trimmed, 60)}.` }),
      );
      onClose();
    } catch (failure) {
      setError(errorText(failure));
    }
  };

  return (
    <Dialog title={draft.replaces ? "Modifier la règle" : "Nouvelle règle"} onClose={onClose}>
      <form
        noValidate
        onSubmit={(event) => {
          event.preventDefault();
          void save();
        }}
      >
        <div class="dialog-body form">
          <div class="field-row">
            <label class="field">
              <span>Quand</span>
              <select
                class="select"
                value={field}
                onChange={(event) => setField(event.currentTarget.value as RuleField)}
              >
                {fields.map((name) => (
                  <option key={name} value={name}>
                    {fieldLabel(name)}
                  </option>
                ))}
              </select>
            </label>
            <label class="field grow">
              <span>contient</span>
              <input
                class="input"
                autoFocus
                maxLength={500}
                value={pattern}
                onInput={(event) => {
                  setPattern(event.currentTarget.value);
                  setError("");
                }}
              />
            </label>
          </div>
          <div class="field-row">
            <label class="field grow">
              <span>Catégorie</span>
              <select
                class="select"
                value={category ?? ""}
                onChange={(event) => setCategory(event.currentTarget.value || null)}
              >
                <option value="">Celle du projet</option>
                {assignable.map((cat) => (
                  <option key={cat} value={cat}>
                    {categoryLabel(cat)}
                  </option>
                ))}
              </select>
            </label>
            <label class="field grow">
              <span>Projet</span>
              <select
                class="select"
                value={projectId === null ? "" : String(projectId)}
                onChange={(event) =>
                  setProjectId(event.currentTarget.value ? Number(event.currentTarget.value) : null)
                }
              >
                <option value="">Sans projet</option>
                {(projects.answer ?? [])
                  .filter(({ archived, id }) => archived !== 1 || id === projectId)
                  .map(({ id, name }) => (
                    <option key={id} value={String(id)}>
                      {clip(name, 60)}
                    </option>
                  ))}
              </select>
            </label>
          </div>
          <RulePreview field={field} pattern={pattern.trim()} category={category} today={today} />
        </div>
        <EditorFoot error={error} onClose={onClose} />
      </form>
    </Dialog>
  );
}

/** The blocks of the last seven days; null until all are there. */
function useLastWeek(today: Day): Block[] | null {
  const client = useClient();
  const [blocks, setBlocks] = useState<Block[] | null>(null);
  useEffect(() => {
    let wanted = true;
    const days = [6, 5, 4, 3, 2, 1, 0].map((ago) => client.call("day", { date: addDays(today, -ago) }));
    Promise.all(days)
      .then((reports) => wanted && setBlocks(reports.flatMap((report) => report.blocks)))
      .catch(() => wanted && setBlocks([]));
    return () => {
      wanted = false;
    };
  }, [client, today]);
  return blocks;
}

interface PreviewProps {
  field: RuleField;
  pattern: string;
  category: string | null;
  today: Day;
}

function RulePreview({ field, pattern, category, today }: PreviewProps) {
  const week = useLastWeek(today);
  const rules = useAnswer("rules.list", {});
  const caught = useMemo(() => preview({ field, pattern }, week ?? []), [field, pattern, week]);
  const changed = useMemo(
    () => changedBy({ field, pattern }, category, week ?? [], rules.answer ?? []),
    [field, pattern, category, week, rules.answer],
  );
  if (field === "url") {
    return (
      <p class="preview quiet">
        Cherche dans l’adresse complète de la page. Les adresses restent dans le programme : pas d’aperçu ici.
      </p>
    );
  }
  return (
    <div class="preview" role="status">
      {pattern === "" && <p class="quiet">L’aperçu sur les sept derniers jours apparaîtra ici.</p>}
      {pattern !== "" && week === null && <p class="quiet">Lecture des sept derniers jours…</p>}
      {pattern !== "" && week !== null && caught.spans === 0 && (
        <p>
          <b>Rien ces sept derniers jours.</b> La règle vaudra pour la suite.
        </p>
      )}
      {pattern !== "" && caught.spans > 0 && (
        <>
          <p>
            <b>
              {count(caught.spans, "activité")}, {duration(caught.duration)}
            </b>{" "}
            ces sept derniers jours.
          </p>
          <p class="quiet">
            {category !== null &&
              (changed > 0
                ? `${duration(changed)} changeraient de catégorie. `
                : "Aucune ne changerait de catégorie. ")}
            {caught.manual > 0 && `${duration(caught.manual)} assignées à la main resteront telles quelles.`}
            {field === "title" && " Compté sur le titre le plus vu de chaque bloc."}
          </p>
          <ul>
            {caught.examples.map(({ text, duration: time }) => (
              <li key={text}>
                <span>
                  <Foreign text={text} length={70} />
                </span>
                <b>{duration(time)}</b>
              </li>
            ))}
          </ul>
        </>
      )}
    </div>
  );
}
