import { useState } from "preact/hooks";
import type { Day, Project } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { assignable } from "../../model/categories";
import { assignIds, assignRange, type Target } from "../../model/changes";
import { clock, count, duration, isolated, plainDomain } from "../../model/time";
import { useShortcuts } from "../../ui/shortcuts";
import { useAttempt, useUndoable } from "../../ui/toast";
import { ProjectEditor } from "../projects/project_editor";
import { draftFrom, draftOf, type RuleDraft } from "../rules/draft";
import { RuleEditor } from "../rules/rule_editor";
import { AssignBar } from "./assign_bar";
import { DeleteDialog, type Deletion } from "./delete_dialog";
import type { Bar } from "./use_bar";
import type { Picked } from "./use_picked";

interface Props {
  day: Day;
  projects: readonly Project[];
  picked: Picked;
  bar: Bar;
}

/** What can be done with what is picked: by the bar, by single keys, in dialogues. */
export function PickedBar({ day, projects, picked, bar }: Props) {
  const [deleting, setDeleting] = useState<Deletion | null>(null);
  const [draft, setDraft] = useState<RuleDraft | null>(null);
  const [project, setProject] = useState<number | null>(null);
  const { range, selected } = picked;
  const what = range ? `${clock(range.start)} – ${clock(range.end)}` : count(selected.length, "bloc");
  const ids = selected.flatMap((block) => block.ids);
  const assign = useAssign(picked, what, ids, bar.leave);
  const remove = () => {
    const one = selected.length === 1 ? selected[0] : undefined;
    const name = one && `${isolated(plainDomain(one.domain ?? one.app), 40)}, ${clock(one.start)} – ${clock(one.end)}`;
    setDeleting({ what: name ?? what, spans: range ? { ...range } : { ids } });
  };
  useShortcuts({
    Delete: () => !picked.isNothing && (remove(), true),
    Escape: () => !picked.isNothing && (picked.clear(), true),
  });
  return (
    <>
      {!picked.isNothing && (
        <AssignBar
          {...{ day, picked, projects }}
          onAssign={assign}
          onNewRule={(block) => setDraft(draftFrom(block))}
          onEditRule={(rule) => setDraft(draftOf(rule))}
          onEditProject={setProject}
          onChoose={bar.enter}
          onDelete={remove}
          onClose={bar.leave}
        />
      )}
      {deleting && (
        <DeleteDialog
          {...deleting}
          onDeleted={bar.leave}
          onClose={() => {
            setDeleting(null);
            // What was asked from is gone with the selection.
            requestAnimationFrame(() => {
              if (document.activeElement === document.body) bar.focusList();
            });
          }}
        />
      )}
      {draft && <RuleEditor draft={draft} onClose={() => setDraft(null)} />}
      {project !== null && <KnownProject id={project} onClose={() => setProject(null)} />}
    </>
  );
}

function KnownProject({ id, onClose }: { id: number; onClose: () => void }) {
  const { answer } = useAnswer("projects.list", {});
  const project = answer?.find((one) => one.id === id);
  return project ? <ProjectEditor project={project} others={answer ?? []} onClose={onClose} /> : null;
}

// Gives what is picked, named `what`, a category and a project; the digits do as well.
function useAssign({ range, blocks, time }: Picked, what: string, ids: number[], onDone: () => void) {
  const client = useClient();
  const attempt = useAttempt();
  const undoable = useUndoable();
  const assign = (target: Target) =>
    void attempt(async () => {
      const automatic = target.category === null && target.projectId === null;
      await undoable(
        () => (range ? assignRange(client, range, target) : assignIds(client, ids, target)),
        () => ({ text: `${automatic ? "De nouveau automatique" : "Attribué"} : ${what} (${duration(time)}).` }),
      );
      onDone();
    });
  // One key gives a category and leaves the project that was given by hand.
  const quick = (category: string | null) => () => {
    if (time === 0) return false;
    const [first] = blocks;
    const keep =
      category !== null && first && blocks.every((block) => block.manual && block.pid === first.pid);
    assign({ category, projectId: keep ? first.pid : null });
    return true;
  };
  useShortcuts({
    ...Object.fromEntries(assignable.map((cat, index) => [String(index + 1), quick(cat)])),
    "0": quick(null),
  });
  return assign;
}
