import { useState } from "preact/hooks";
import type { ProjectRow, ProjectTerms, Step } from "../../bridge/routes";
import { errorText, useClient } from "../../client";
import { categoryOptions, isAssignable } from "../../model/categories";
import { clientOf, clientsOf } from "../../model/clients";
import { readTerms, termsText } from "../../model/terms";
import { isolated } from "../../model/time";
import { Dialog, EditorFoot, Form } from "../../ui/dialog";
import { EffectPreview } from "../../ui/effect/effect_preview";
import { Select } from "../../ui/parts";
import { Said } from "../../ui/said";
import { useUndoable } from "../../ui/toast";
import { ClientField, TermsFields } from "./terms_fields";

/** Told apart by most people with a colour vision deficiency too, and dark enough for either theme. */
const palette: [string, string][] = [
  ["#3b82f6", "Bleu"],
  ["#0e9aa7", "Turquoise"],
  ["#3f9142", "Vert"],
  ["#8a9a1f", "Olive"],
  ["#d08c10", "Ocre"],
  ["#d9622b", "Orange"],
  ["#c8415b", "Rouge"],
  ["#c254a5", "Rose"],
  ["#8b5fd6", "Violet"],
  ["#7a6a5a", "Brun"],
  ["#64748b", "Ardoise"],
];

/** What the program makes of a keyword field: shorter words are ignored. */
function tooShort(keywords: string): string[] {
  return keywords
    .split(",")
    .map((word) => word.trim())
    .filter((word) => word !== "" && [...word].length < 3);
}

export interface Fields {
  name: string;
  color: string;
  category: string;
  keywords: string;
}

/** A new project where there are `others` already: the next colour in turn. */
export function blankProject(others: number): Fields {
  const color = palette[others % palette.length]?.[0] ?? "#3b82f6";
  return { name: "", color, category: "travail", keywords: "" };
}

type FieldsProps = Fields & { onChange: (part: Partial<Fields>) => void };

export function ProjectFields({ name, color, category, keywords, onChange }: FieldsProps) {
  const short = tooShort(keywords);
  const colors = palette.some(([value]) => value === color)
    ? palette
    : [...palette, [color, "Couleur actuelle"] as const];
  return (
    <>
      <label class="field">
        <span>Nom</span>
        <input
          class="input"
          maxLength={200}
          autoFocus
          value={name}
          onInput={(event) => onChange({ name: event.currentTarget.value })}
        />
      </label>
      <fieldset class="field swatches">
        <legend>Couleur</legend>
        {colors.map(([value, label]) => (
          <label key={value} title={label}>
            <input
              type="radio"
              name="color"
              aria-label={label}
              checked={value === color}
              onChange={() => onChange({ color: value })}
            />
            <span style={{ backgroundColor: value }} />
          </label>
        ))}
      </fieldset>
      <label class="field">
        <span>Catégorie</span>
        <Select
          value={category}
          options={categoryOptions}
          onChange={(value) => onChange({ category: value })}
        />
        <small>Catégorie de son temps quand aucune règle n’en décide autrement.</small>
      </label>
      <label class="field">
        <span>Mots-clés</span>
        <input
          class="input"
          maxLength={1000}
          value={keywords}
          onInput={(event) => onChange({ keywords: event.currentTarget.value })}
        />
        <small>
          Séparés par des virgules, de trois lettres au moins. Une activité qui en contient un est attribuée
          au projet.
        </small>
      </label>
      <Said class="field-error" text={short.length > 0 && `Trop court, sera ignoré : ${short.join(", ")}`} />
    </>
  );
}

const unnamed = "Nouveau projet…";

interface Props {
  /** Absent for a new one. */
  project?: ProjectRow | undefined;
  others: readonly ProjectRow[];
  /** What is agreed for each; undefined where that is not known, and so stays as it is. */
  terms?: readonly ProjectTerms[] | undefined;
  onClose: () => void;
}

// What is agreed for a project, as it is being typed; nothing, where nobody knows it.
function useTerms({ project, terms }: Pick<Props, "project" | "terms">) {
  const known = terms?.find(({ project_id }) => project_id === project?.id);
  const [text, setText] = useState(project && !known ? null : termsText(known));
  return [text, setText] as const;
}

export function ProjectEditor({ project, others, terms, onClose }: Props) {
  const client = useClient();
  const undoable = useUndoable();
  const blank = blankProject(others.length);
  const [fields, setFields] = useState<Fields>({
    name: project?.name ?? "",
    color: project?.color ?? blank.color,
    category: isAssignable(project?.category) ? project.category : blank.category,
    keywords: project?.keywords ?? "",
  });
  const [whose, setWhose] = useState(project ? clientOf(project) : "");
  const [agreed, setAgreed] = useTerms({ project, terms });
  const [error, setError] = useState("");

  const name = fields.name.trim();
  const isTaken = others.some((other) => other.id !== project?.id && other.name === name);
  const archived = project?.archived === 1 ? 1 : 0;
  const body = {
    ...fields,
    name,
    keywords: fields.keywords.trim(),
    ...(project && { id: project.id, archived: archived as 0 | 1 }),
  };
  // Under a name that nobody has, as long as the one that is written cannot be given.
  const free = name === "" || isTaken ? (project?.name ?? unnamed) : name;
  const steps: Step[] = [{ path: "projects.save", body: { ...body, name: free } }];

  const save = async () => {
    if (name === "") return setError("Donnez un nom au projet.");
    if (isTaken) return setError("Un projet porte déjà ce nom.");
    const read = agreed && readTerms(agreed);
    if (typeof read === "string") return setError(read);
    try {
      await undoable(
        () => client.call("projects.save", { ...body, client: whose.trim(), ...(read && { terms: read }) }),
        () => ({ text: `« ${isolated(name, 60)} » est enregistré.` }),
      );
      onClose();
    } catch (failure) {
      setError(errorText(failure));
    }
  };

  return (
    <Dialog title={project ? "Modifier le projet" : "Nouveau projet"} onClose={onClose} wide>
      <Form onSubmit={save}>
        <div class="dialog-body form split">
          <div>
            <ProjectFields
              {...fields}
              onChange={(part) => {
                setFields({ ...fields, ...part });
                setError("");
              }}
            />
            <ClientField client={whose} clients={clientsOf(others)} onChange={setWhose} />
            {agreed && (
              <TermsFields
                terms={agreed}
                onChange={(part) => {
                  setAgreed({ ...agreed, ...part });
                  setError("");
                }}
              />
            )}
          </div>
          <EffectPreview
            steps={project || body.keywords !== "" ? steps : null}
            hint="Ce que ses mots-clés lui donnent apparaîtra ici."
          />
        </div>
        <EditorFoot error={error} />
      </Form>
    </Dialog>
  );
}
