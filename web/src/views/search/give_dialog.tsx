import { useState } from "preact/hooks";
import type { FoundRow, Step } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { isAssignable } from "../../model/categories";
import type { Target } from "../../model/changes";
import { amount } from "../../model/effect";
import { duration } from "../../model/time";
import { Confirm } from "../../ui/dialog";
import { EffectPreview } from "../../ui/effect/effect_preview";
import { Segmented } from "../../ui/parts";
import { TargetSelects } from "../../ui/target_fields";
import { useUndoable } from "../../ui/toast";

interface Props {
  text: string;
  row: FoundRow;
  onClose: () => void;
}

/** Gives what was found, one row or all of it, a category and a project, and shows what that does. */
export function GiveDialog({ text, row, onClose }: Props) {
  const client = useClient();
  const undoable = useUndoable();
  const projects = useAnswer("projects.list", {}).answer ?? [];
  const all = useAnswer("search.spans", { text }).answer;
  const [whole, setWhole] = useState(false);
  const [target, setTarget] = useState<Target>({
    category: isAssignable(row.category) ? row.category : null,
    projectId: row.project_id,
  });
  const ids = whole ? all?.ids : row.ids;
  const given = target.category !== null || target.projectId !== null;
  const body = { ids: ids ?? [], category: target.category, project_id: target.projectId };
  const step: Step = { path: "events.assign", body };
  const choices = [
    { value: false, label: `Cette ligne (${duration(row.duration)})` },
    { value: true, label: all ? `Tout ce qui est trouvé (${amount(all.duration)})` : "Tout ce qui est trouvé" },
  ];
  return (
    <Confirm
      title="Attribuer"
      action="Attribuer"
      wide
      disabled={!given || !ids}
      onClose={onClose}
      onConfirm={() =>
        undoable(
          () => client.call("events.assign", body),
          () => ({ text: "Attribué." }),
        )
      }
    >
      {/* Of more than can be changed at once a rule is the way. */}
      {all?.more ? (
        <p>
          Tout ce qui est trouvé est trop pour être attribué d’un coup : une règle le fait. Ici, cette ligne.
        </p>
      ) : (
        <Segmented legend="Quoi" choices={choices} value={whole} onChange={setWhole} />
      )}
      <TargetSelects {...{ target, projects }} onChange={setTarget} />
      <EffectPreview steps={given && ids ? [step] : null} hint="Choisissez une catégorie ou un projet." />
    </Confirm>
  );
}
