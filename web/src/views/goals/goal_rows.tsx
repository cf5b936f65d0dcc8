import { useState } from "preact/hooks";
import type { Goal } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { clip, typeset } from "../../model/time";
import { Button, Failure, Foreign, IconButton } from "../../ui/parts";
import { useAttempt, useUndoable } from "../../ui/toast";
import { GoalEditor } from "./goal_editor";
import { GoalMark } from "./goal_line";

/** Every goal and limit, to be added, changed and deleted. */
export function GoalRows() {
  const client = useClient();
  const attempt = useAttempt();
  const undoable = useUndoable();
  const { answer: goals, error, reload } = useAnswer("goals.list", {});
  const [edited, setEdited] = useState<Goal | "new" | null>(null);
  const remove = ({ id }: Goal) =>
    void attempt(() =>
      undoable(
        () => client.call("goals.delete", { id }),
        ({ changes }) => ({ text: typeset(changes[0]?.label ?? "Objectif supprimé.") }),
      ),
    );
  return (
    <>
      {error && <Failure text={error} retry={reload} />}
      {goals?.map((goal) => (
        <div class="settings-row goal-row" key={goal.id}>
          <p class="goal-text">
            <GoalMark goal={goal} />
            <Foreign text={goal.text} length={120} />
            {goal.missing && <span class="quiet">{"\u00a0: ce projet n’existe plus"}</span>}
          </p>
          <div class="settings-control">
            <IconButton icon="edit" label={`Modifier : ${clip(goal.text, 120)}`} title="Modifier" onClick={() => setEdited(goal)} />
            <IconButton icon="trash" label={`Supprimer : ${clip(goal.text, 120)}`} title="Supprimer" onClick={() => remove(goal)} />
          </div>
        </div>
      ))}
      <div class="settings-row">
        <div class="settings-label">
          <p>{goals?.length === 0 ? "Aucun objectif" : "Ajouter"}</p>
          <small>Un temps à atteindre ou à ne pas dépasser. Orvanta prévient une fois à 80 %, une fois à 100 %.</small>
        </div>
        <div class="settings-control">
          <Button onClick={() => setEdited("new")}>Ajouter un objectif…</Button>
        </div>
      </div>
      {edited && <GoalEditor goal={edited === "new" ? undefined : edited} onClose={() => setEdited(null)} />}
    </>
  );
}
