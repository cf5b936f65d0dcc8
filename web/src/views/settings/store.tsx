import { useState } from "preact/hooks";
import type { Answer, Status } from "../../bridge/routes";
import type { StoreStatus } from "../../bridge/store";
import { errorText, useAnswer, useClient } from "../../client";
import { covered, fileSize, moment } from "../../model/store";
import { capitalize, count, typeset } from "../../model/time";
import { Icon } from "../../ui/icons";
import { Button } from "../../ui/parts";
import { Said } from "../../ui/said";
import { useTask } from "../../ui/task";
import { useNotice, useSend } from "../../ui/toast";
import { Row } from "./fields";
import { RestoreDialog } from "./restore_dialog";

/** The file that keeps everything: how it is, its backups, and the way back to one of them. */
export function StoreRows({ status }: { status: Status | undefined }) {
  const send = useSend();
  const store = useAnswer("store.status", {}, 30).answer;
  const now = status?.now ?? Date.now() / 1000;
  return (
    <>
      <Row label="Fichier des données" help={<code>{status?.db}</code>}>
        {store && (
          <p class="store-facts">
            <b>{fileSize(store.size)}</b>
            <span>{covered(store)}</span>
            {store.waiting > 0 && (
              <small>{count(store.waiting, "activité")} en mémoire, en attente d’être écrites</small>
            )}
          </p>
        )}
        <Button onClick={() => send("revealData", {})}>Montrer le dossier</Button>
      </Row>
      {store && <BackupRow store={store} now={now} />}
      <CheckRow />
      {store?.notice && (
        <Row wide label="Dernière réparation ou restauration">
          <p class="store-facts">{typeset(store.notice)}</p>
        </Row>
      )}
    </>
  );
}

function BackupRow({ store, now }: { store: StoreStatus; now: number }) {
  const client = useClient();
  const notify = useNotice();
  const { busy, error, run } = useTask();
  const [restoring, setRestoring] = useState(false);
  const backUp = async () => {
    const { size } = await client.call("store.backup", {});
    notify({ text: `Sauvegardé : ${fileSize(size)}.` });
  };
  const last = store.last_backup === null ? "aucune" : moment(store.last_backup, now);
  return (
    <Row
      label="Sauvegardes"
      error={error}
      help={`Dernière : ${last}. Orvanta en fait de lui-même, les vérifie et garde les plus récentes.`}
    >
      <Button disabled={busy} onClick={() => run(backUp)}>
        {busy ? "Sauvegarde en cours…" : "Sauvegarder maintenant"}
      </Button>
      <Button onClick={() => setRestoring(true)}>Restaurer…</Button>
      {restoring && <RestoreDialog backups={store.backups} now={now} onClose={() => setRestoring(false)} />}
    </Row>
  );
}

/** Problems in full would be thousands of lines for a file that is badly damaged. */
const shownProblems = 12;

function CheckRow() {
  const client = useClient();
  const { busy, run } = useTask();
  const [result, setResult] = useState<Answer<"store.check"> | null>(null);
  const check = async () => {
    setResult(null);
    const failed = (failure: unknown) => ({ ok: false, message: errorText(failure), problems: [] });
    setResult(await client.call("store.check", {}).catch(failed));
  };
  const more = (result?.problems.length ?? 0) - shownProblems;
  return (
    <Row label="Vérification" help="Lit tout le fichier et dit s’il est entier. Rien n’y est changé.">
      <Button aria-label="Vérifier les données" disabled={busy} onClick={() => run(check)}>
        {busy ? "Vérification…" : "Vérifier"}
      </Button>
      <Said class="check-result" text={result?.message}>
        {result && (
          <>
            <p class={result.ok ? "state good" : "state bad"}>
              <Icon name={result.ok ? "check" : "warning"} />
              {capitalize(typeset(result.message))}
            </p>
            {result.problems.length > 0 && (
              <ul role="list">
                {result.problems.slice(0, shownProblems).map((problem, index) => (
                  <li key={index}>
                    <code>{problem}</code>
                  </li>
                ))}
                {more > 0 && <li class="quiet">et {count(more, "autre")}</li>}
              </ul>
            )}
          </>
        )}
      </Said>
    </Row>
  );
}
