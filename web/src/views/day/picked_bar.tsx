import { useState } from "preact/hooks";
import type { KeptMoment } from "../../bridge/moments";
import type { Day, ExclusionSubject, Project } from "../../bridge/routes";
import { useAnswer } from "../../client";
import { clock, count, isolated, plainDomain } from "../../model/time";
import { useShortcuts } from "../../ui/shortcuts";
import { ExcludeDialog, subjectOf } from "../exclude/exclude_dialog";
import { EditMomentDialog } from "../moments/edit_dialog";
import { ProjectEditor } from "../projects/project_editor";
import { draftFrom, draftOf, type RuleDraft } from "../rules/draft";
import { RuleEditor } from "../rules/rule_editor";
import { AssignBar } from "./assign_bar";
import { DeleteDialog, type Deletion } from "./delete_dialog";
import { useAssign, useChoice } from "./use_assign";
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
  const [excluded, setExcluded] = useState<ExclusionSubject | null>(null);
  const [moments, setMoments] = useState<readonly KeptMoment[] | null>(null);
  const [draft, setDraft] = useState<RuleDraft | null>(null);
  const [project, setProject] = useState<number | null>(null);
  const { range, blocks } = picked;
  const what = nameOf(picked);
  const ids = blocks.flatMap((block) => block.ids);
  const [choice, setChoice] = useChoice(picked);
  const assign = useAssign(picked, choice, what, bar.leave);
  const canDelete = range !== null || ids.length > 0;
  const remove = () => {
    const one = !range && blocks.length === 1 ? blocks[0] : undefined;
    const name = one && `${isolated(plainDomain(one.domain ?? one.app), 40)}, ${clock(one.start)} – ${clock(one.end)}`;
    setDeleting({ what: name ?? (range ? what : count(blocks.length, "bloc")), spans: range ? { ...range } : { ids } });
  };
  useShortcuts({
    Delete: () => canDelete && (remove(), true),
    Escape: () => !picked.isNothing && (picked.clear(), true),
  });
  return (
    <>
      {!picked.isNothing && (
        <AssignBar
          {...{ day, picked, projects, choice }}
          onChange={setChoice}
          onAssign={assign}
          onNewRule={(block) => setDraft(draftFrom(block))}
          onEditRule={(rule) => setDraft(draftOf(rule))}
          onEditProject={setProject}
          onChoose={bar.enter}
          onExclude={(block) => setExcluded(subjectOf(block))}
          onEditMoment={setMoments}
          onDelete={canDelete ? remove : undefined}
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
            queueMicrotask(() => {
              if (document.activeElement === document.body) bar.focusList();
            });
          }}
        />
      )}
      {excluded && (
        <ExcludeDialog subject={excluded} onDone={bar.leave} onClose={() => setExcluded(null)} />
      )}
      {moments && <EditMomentDialog moments={moments} onDone={bar.leave} onClose={() => setMoments(null)} />}
      {draft && <RuleEditor draft={draft} onClose={() => setDraft(null)} />}
      {project !== null && <KnownProject id={project} onClose={() => setProject(null)} />}
    </>
  );
}

/** By its clock times, or how much of what. */
function nameOf({ range, blocks, away }: Picked): string {
  const one = range ?? (blocks.length === 0 && away.length === 1 ? away[0] : undefined);
  if (one) return `${clock(one.start)} – ${clock(one.end)}`;
  const both = [blocks.length > 0 && count(blocks.length, "bloc"), away.length > 0 && count(away.length, "absence")];
  return both.filter(Boolean).join(" et ");
}

function KnownProject({ id, onClose }: { id: number; onClose: () => void }) {
  const { answer } = useAnswer("projects.list", {});
  const project = answer?.find((one) => one.id === id);
  return project ? <ProjectEditor project={project} others={answer ?? []} onClose={onClose} /> : null;
}
