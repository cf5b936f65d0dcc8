import type { Block, RuleFacts, RuleField, Step } from "../../bridge/routes";
import { useClient } from "../../client";
import { isAssignable } from "../../model/categories";
import { isolated } from "../../model/time";
import { useUndoable } from "../../ui/toast";

/** A rule that is being written. */
export interface RuleDraft {
  field: RuleField;
  pattern: string;
  category: string | null;
  projectId: number | null;
  /** The rule that this one is an edition of. */
  replaces?: number;
}

export const blankRule: RuleDraft = { field: "domain", pattern: "", category: "travail", projectId: null };

export function draftOf({ id, field, pattern, category, project_id }: RuleFacts): RuleDraft {
  return { field, pattern, category: given(category), projectId: project_id, replaces: id };
}

/** The rule that a block suggests: its site, or else its application. */
export function draftFrom({ app, domain, cat, pid }: Block): RuleDraft {
  const what = domain
    ? { field: "domain" as const, pattern: domain }
    : { field: "app" as const, pattern: app };
  return { ...what, category: given(cat), projectId: pid };
}

function given(category: string | null): string | null {
  return isAssignable(category) ? category : null;
}

/** What saving the draft does, where it is whole. */
export function stepsOf({ field, pattern, category, projectId, replaces }: RuleDraft): Step[] | null {
  const text = pattern.trim();
  if (text === "" || (category === null && projectId === null)) return null;
  const body = { field, pattern: text, category, project_id: projectId };
  const save: Step = { path: "rules.save", body };
  return replaces === undefined ? [save] : [{ path: "rules.delete", body: { id: replaces } }, save];
}

/** Saves a draft, in the place of the rule that it is an edition of; throws what is to be told. */
export function useSaveRule(): (draft: RuleDraft) => Promise<void> {
  const client = useClient();
  const undoable = useUndoable();
  return async ({ field, category, projectId, replaces, ...draft }) => {
    const pattern = draft.pattern.trim();
    if (pattern === "") throw new Error("Indiquez le texte à chercher.");
    if (category === null && projectId === null) throw new Error("Choisissez une catégorie ou un projet.");
    await undoable(
      async () => {
        const { id } = await client.call("rules.save", { field, pattern, category, project_id: projectId });
        // The program itself replaces a rule of the same field and text.
        if (replaces !== undefined && replaces !== id) await client.call("rules.delete", { id: replaces });
      },
      () => ({ text: `Règle enregistrée : ${isolated(pattern, 60)}.` }),
    );
  };
}
