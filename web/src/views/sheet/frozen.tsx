import { useLayoutEffect, useRef, useState } from "preact/hooks";
import type { FrozenSheet, Sheet, SheetChange } from "../../bridge/routes";
import { errorText, useAnswer, useClient } from "../../client";
import { clip, clock, count, dateOnly, dayOf, isolated } from "../../model/time";
import { Confirm, Dialog, EditorFoot, Form } from "../../ui/dialog";
import { Icon } from "../../ui/icons";
import { Button, Failure, Foreign, IconButton } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { useNotice } from "../../ui/toast";

/** Keeps the sheet as it is sent, under a name. */
export function FreezeDialog({ sheet, onClose }: { sheet: Sheet; onClose: () => void }) {
  const client = useClient();
  const notify = useNotice();
  const [title, setTitle] = useState(sheet.title);
  const [error, setError] = useState("");
  const freeze = async () => {
    try {
      const { version } = await client.call("sheets.freeze", { ...sheet.request, title: title.trim() });
      notify({ text: `Feuille figée, version ${version}.` });
      onClose();
    } catch (failure) {
      setError(errorText(failure));
    }
  };
  return (
    <Dialog title="Figer la feuille" onClose={onClose}>
      <Form onSubmit={freeze}>
        <div class="dialog-body form">
          <p>
            Elle est gardée telle quelle, {sheet.totals.text} en tout : rien de ce qui change ensuite ne change ce
            qu’elle dit, et ce qui n’est plus pareil se voit ligne par ligne.
          </p>
          <label class="field">
            <span>Titre</span>
            <input
              class="input"
              maxLength={200}
              autoFocus
              value={title}
              onInput={(event) => setTitle(event.currentTarget.value)}
            />
          </label>
        </div>
        <EditorFoot error={error} action="Figer" />
      </Form>
    </Dialog>
  );
}

interface ListProps {
  onOpen: (frozen: FrozenSheet) => void;
  onDeleted: (frozen: FrozenSheet) => void;
}

/** The sheets as they were sent, the newest first. */
export function FrozenList({ onOpen, onDeleted }: ListProps) {
  const { answer = [], error, reload } = useAnswer("sheets.list", {});
  const [deleting, setDeleting] = useState<FrozenSheet | null>(null);
  return (
    <>
      {error && <Failure text={error} retry={reload} />}
      {answer.length > 0 && <Listed sheets={answer} onOpen={onOpen} onDelete={setDeleting} />}
      {deleting && (
        <DeleteFrozen
          frozen={deleting}
          onDeleted={() => onDeleted(deleting)}
          onClose={() => setDeleting(null)}
        />
      )}
    </>
  );
}

interface ListedProps extends Pick<ListProps, "onOpen"> {
  sheets: readonly FrozenSheet[];
  onDelete: (frozen: FrozenSheet) => void;
}

function Listed({ sheets, onOpen, onDelete }: ListedProps) {
  const list = useRoving<HTMLUListElement>("grid");
  return (
    <section class="frozen" aria-labelledby="frozen-title">
      <h2 id="frozen-title">Feuilles figées</h2>
      <ul role="list" ref={list}>
        {sheets.map((frozen) => (
          <li key={frozen.id}>
            <button type="button" class="link" onClick={() => onOpen(frozen)}>
              <Foreign text={frozen.title} length={120} />
            </button>
            <span class="tag">version&nbsp;{frozen.version}</span>
            <span class="quiet">{whenFrozen(frozen)}</span>
            <IconButton
              icon="trash"
              label={`Supprimer ${clip(frozen.title, 60)}, version ${frozen.version}`}
              title="Supprimer"
              onClick={() => onDelete(frozen)}
            />
          </li>
        ))}
      </ul>
    </section>
  );
}

export function whenFrozen({ created }: FrozenSheet): string {
  return `figée le ${dateOnly(dayOf(created))} à ${clock(created)}`;
}

interface DeleteProps {
  frozen: FrozenSheet;
  onDeleted: () => void;
  onClose: () => void;
}

function DeleteFrozen({ frozen, onDeleted, onClose }: DeleteProps) {
  const client = useClient();
  return (
    <Confirm
      title={`Supprimer « ${isolated(frozen.title, 60)} » ?`}
      action="Supprimer"
      danger
      onClose={onClose}
      onConfirm={async () => {
        await client.call("sheets.delete", { id: frozen.id });
        onDeleted();
      }}
    >
      <p>
        La version {frozen.version}, {whenFrozen(frozen)}, est supprimée pour de bon. Le temps enregistré reste.
      </p>
    </Confirm>
  );
}

interface DiffProps {
  frozen: FrozenSheet;
  onBack: () => void;
}

/** Above a sheet as it was sent: what would be otherwise today. */
export function FrozenHead({ frozen, onBack }: DiffProps) {
  const { answer, error, reload } = useAnswer("sheets.diff", { id: frozen.id });
  const head = useRef<HTMLElement>(null);
  // It was opened from beneath the sheet.
  useLayoutEffect(() => head.current?.focus(), [frozen.id]);
  return (
    <section class="frozen-head" aria-label="Feuille figée" tabIndex={-1} ref={head}>
      <div>
        <p>
          <Icon name="freeze" />{" "}
          <b>
            <Foreign text={frozen.title} length={200} />
          </b>
          , version&nbsp;{frozen.version}, {whenFrozen(frozen)}
        </p>
        <Button kind="small" onClick={onBack}>
          Revenir à la feuille d’aujourd’hui
        </Button>
      </div>
      {error && <Failure text={error} retry={reload} />}
      {answer?.same && <p class="quiet">Rien n’a changé depuis.</p>}
      {answer && !answer.same && <Changes changes={answer.changes} />}
    </section>
  );
}

const most = 12;

// Of many the rows and sums are shown at once, and what they come from when it is asked for.
function Changes({ changes }: { changes: readonly SheetChange[] }) {
  const cells = changes.length > most ? changes.filter(({ kind }) => kind === "cell") : [];
  const rest = changes.filter((change) => !cells.includes(change));
  return (
    <>
      <ChangeTable open changes={rest} name={count(changes.length, "ligne a changé depuis", "lignes ont changé depuis")} />
      {cells.length > 0 && <ChangeTable changes={cells} name={`Dont ${count(cells.length, "case")} du tableau`} />}
    </>
  );
}

interface ChangesProps {
  name: string;
  open?: boolean;
  changes: readonly SheetChange[];
}

function ChangeTable({ name, open, changes }: ChangesProps) {
  return (
    <details open={open}>
      <summary>{name}</summary>
      <div class="sheet-scroll" role="region" aria-label={name} tabIndex={0}>
        <table class="sheet-diff">
          <thead>
            <tr>
              <th scope="col">Ligne</th>
              <th scope="col">Envoyé</th>
              <th scope="col">Maintenant</th>
              <th scope="col">Écart</th>
            </tr>
          </thead>
          <tbody>
            {changes.map((change, index) => (
              <tr key={index}>
                <th scope="row">
                  <Foreign text={change.about} length={160} />
                </th>
                <td>
                  <Foreign text={change.sent_text || "rien"} length={80} />
                </td>
                <td>
                  <Foreign text={change.now_text || "rien"} length={80} />
                </td>
                <td>{change.change_text}</td>
              </tr>
            ))}
          </tbody>
        </table>
      </div>
    </details>
  );
}
