import type { Project, ProjectRow } from "../bridge/routes";
import { categoryOptions, isAssignable } from "../model/categories";
import type { Target } from "../model/changes";
import { CategoryMark } from "./icons";
import { ProjectSelect, Segmented, Select } from "./parts";

const choices = [
  { value: null, label: "Auto", title: "Selon les règles (0)" },
  ...categoryOptions.map(([cat, label], index) => ({
    value: cat,
    label: (
      <>
        <CategoryMark cat={cat} />
        {label}
      </>
    ),
    title: `${label} (${index + 1})`,
  })),
];

interface Props {
  target: Target;
  projects: readonly (Project | ProjectRow)[];
  onChange: (target: Target) => void;
}

/** A project's time counts as the project's category, unless another was chosen. */
export function towards(
  project: { id: number; category: string | null } | undefined,
  category: string | null = null,
): Target {
  const usual = project?.category;
  return { category: category ?? (isAssignable(usual) ? usual : null), projectId: project?.id ?? null };
}

/** The choice of a category and a project. */
export function TargetFields({ target, projects, onChange }: Props) {
  const { category, projectId } = target;
  return (
    <>
      <Segmented
        legend="Catégorie"
        choices={choices}
        value={category}
        onChange={(cat) => onChange({ category: cat, projectId })}
      />
      <ProjectSelect
        label="Projet"
        none="Sans projet"
        projects={projects}
        value={projectId}
        onChange={(id) => onChange(towards(projects.find((project) => project.id === id), category))}
      />
    </>
  );
}

/** The same as two fields of a form; without a category it is the project's. */
export function TargetSelects({ target, projects, onChange }: Props) {
  return (
    <div class="field-row">
      <label class="field grow">
        <span>Catégorie</span>
        <Select
          value={target.category ?? ""}
          options={[["", "Celle du projet"], ...categoryOptions]}
          onChange={(category) => onChange({ ...target, category: category || null })}
        />
      </label>
      <label class="field grow">
        <span>Projet</span>
        <ProjectSelect
          none="Sans projet"
          projects={projects}
          value={target.projectId}
          onChange={(projectId) => onChange({ ...target, projectId })}
        />
      </label>
    </div>
  );
}
