import { useClient } from "../../client";
import type { Hit } from "../../model/search";
import { Button } from "../../ui/parts";
import { useAttempt, useNotice } from "../../ui/toast";

/** What can be done with a row that was found. */
export type RowAct = "give" | "rule" | "exclude" | "delete";

interface Props {
  hit: Hit | undefined;
  onOpen: (hit: Hit) => void;
  onAct: (act: RowAct) => void;
}

export function FoundActs({ hit, onOpen, onAct }: Props) {
  const acts: [RowAct, string][] = [
    ["exclude", "Exclure…"],
    ["rule", "Créer une règle…"],
    ["give", "Attribuer…"],
  ];
  return (
    <footer class="dialog-foot">
      <Button kind="danger" disabled={!hit} onClick={() => onAct("delete")}>
        Supprimer…
      </Button>
      {acts.map(([act, name]) => (
        <Button key={act} disabled={!hit} onClick={() => onAct(act)}>
          {name}
        </Button>
      ))}
      <Button kind="primary" disabled={!hit} title="Entrée" onClick={() => hit && onOpen(hit)}>
        Ouvrir le jour
      </Button>
    </footer>
  );
}

/** What can be done with all of it. */
export function WholeActs({ text, onErase }: { text: string; onErase: () => void }) {
  const client = useClient();
  const attempt = useAttempt();
  const notify = useNotice();
  const save = () =>
    void attempt(async () => {
      const { ok } = await client.call("search.export", { text });
      if (ok) notify({ text: "Exporté\u00a0: tout ce qui est trouvé." });
    });
  return (
    <span class="found-whole">
      <Button kind="small" title="CSV" onClick={save}>
        Exporter tout…
      </Button>
      <Button kind="danger small" aria-haspopup="dialog" onClick={onErase}>
        Effacer tout…
      </Button>
    </span>
  );
}
