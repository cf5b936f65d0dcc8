import { useClient } from "../../client";
import { Icon } from "../../ui/icons";
import { Foreign } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { useUndoable } from "../../ui/toast";
import { useTask } from "../../ui/task";
import { Row } from "./fields";

/** The applications of which only the time is recorded; nothing where there are none. */
export function AppExclusions({ apps }: { apps: readonly string[] }) {
  const client = useClient();
  const undoable = useUndoable();
  const { error, run } = useTask();
  const list = useRoving<HTMLUListElement>("row");
  if (apps.length === 0) return null;
  const remove = (app: string) =>
    run(() =>
      undoable(
        () => client.call("exclusions.remove", { app }),
        () => ({ text: "Ses titres sont de nouveau enregistrés." }),
      ),
    );
  return (
    <Row
      label="Applications exclues"
      help="Seul leur temps est enregistré. On exclut une application depuis un bloc du jour."
      error={error}
    >
      <ul role="list" class="chips" ref={list}>
        {apps.map((app) => (
          <li key={app}>
            <button type="button" class="chip on" aria-label={`Ne plus exclure ${app}`} onClick={() => remove(app)}>
              <Foreign text={app} length={40} />
              <Icon name="close" />
            </button>
          </li>
        ))}
      </ul>
    </Row>
  );
}
