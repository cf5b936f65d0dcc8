import { Button, Empty } from "../../ui/parts";
import { useShortcuts } from "../../ui/shortcuts";
import { useSend } from "../../ui/toast";

interface Props {
  isToday: boolean;
  paused: boolean;
  /** There may be something that could not be read. */
  incomplete: boolean;
  onToday: () => void;
  onYesterday: () => void;
  onAdd: () => void;
}

/** What stands for a day without anything recorded. */
export function EmptyDay({ isToday, paused, incomplete, onToday, onYesterday, onAdd }: Props) {
  const send = useSend();
  useShortcuts({ n: onAdd });
  const add = (
    <Button title="Ajouter un moment (N)" onClick={onAdd}>
      Ajouter un moment…
    </Button>
  );
  if (incomplete) return <Empty title="Rien n’a pu être lu pour ce jour." />;
  if (isToday && paused) {
    return (
      <Empty title="Le suivi est en pause.">
        <p>Rien n’est enregistré aujourd’hui tant qu’il n’a pas repris.</p>
        <Button kind="primary" onClick={() => send("tracker.resume", {})}>
          Reprendre le suivi
        </Button>
        {add}
      </Empty>
    );
  }
  if (isToday) {
    return (
      <Empty title="La journée commence.">
        <p>Travaillez comme d’habitude : les premières minutes apparaîtront ici d’elles-mêmes.</p>
        <Button onClick={onYesterday}>Voir hier</Button>
        {add}
      </Empty>
    );
  }
  return (
    <Empty title="Rien d’enregistré ce jour-là.">
      <p>L’ordinateur était éteint, ou le suivi en pause.</p>
      <Button onClick={onToday}>Revenir à aujourd’hui</Button>
      {add}
    </Empty>
  );
}
