import { useState } from "preact/hooks";
import { useClient } from "../../client";
import { recall } from "../../model/stored";
import { fileSize } from "../../model/store";
import { Confirm } from "../../ui/dialog";
import { Button } from "../../ui/parts";
import { useTask } from "../../ui/task";
import { useNotice } from "../../ui/toast";
import { Row } from "./fields";
import { RestorePreview } from "./restore_dialog";

/** The way to another machine, and from one. */
export function MovingRow() {
  const client = useClient();
  const notify = useNotice();
  const { busy, error, run } = useTask();
  const taking = useTakeIn();
  const takeAll = async () => {
    const { ok, size } = await client.call("store.takeAll", {});
    if (ok && size !== undefined) notify({ text: `Tout est dans ce fichier\u00a0: ${fileSize(size)}.` });
  };
  return (
    <Row
      label="Changer d’ordinateur"
      error={error || taking.error}
      help="Un seul fichier emporte activités, projets, règles, objectifs, feuilles de temps, réglages et historique."
    >
      <Button disabled={busy} onClick={() => run(takeAll)}>
        {busy ? "Copie en cours…" : "Tout emporter…"}
      </Button>
      <Button onClick={taking.pick}>Reprendre un fichier…</Button>
      {taking.dialog}
    </Row>
  );
}

/** Lets the user pick what another machine has taken along, and shows what it would put in place. */
export function useTakeIn(onTaken?: () => void) {
  const client = useClient();
  const { error, run } = useTask();
  const [file, setFile] = useState<string | null>(null);
  const pick = async () => {
    const picked = await client.call("store.pick", {});
    if (picked.file !== undefined) setFile(picked.file);
  };
  return {
    error,
    pick: () => run(pick),
    dialog: file !== null && <TakeIn file={file} onTaken={onTaken} onClose={() => setFile(null)} />,
  };
}

interface Props {
  file: string;
  onTaken: (() => void) | undefined;
  onClose: () => void;
}

function TakeIn({ file, onTaken, onClose }: Props) {
  const client = useClient();
  const notify = useNotice();
  const [ready, setReady] = useState(false);
  return (
    <Confirm
      title="Reprendre ce fichier ?"
      action="Reprendre"
      danger
      wide
      disabled={!ready}
      onClose={onClose}
      onConfirm={async () => {
        await client.call("store.restore", { file });
        await recall(client).catch(() => {});
        notify({ text: "Repris : les données de ce fichier sont en place." });
        onTaken?.();
      }}
    >
      <div class="preview" role="status">
        <RestorePreview file={file} onReady={() => setReady(true)} />
      </div>
    </Confirm>
  );
}
