import { Button, Empty } from "../../ui/parts";
import { useSend } from "../../ui/toast";

interface Props {
  isToday: boolean;
  paused: boolean;
  /** There may be something that could not be read. */
  incomplete: boolean;
  onToday: () => void;
  onYesterday: () => void;
}

/** What stands for a day without anything recorded. */
export function EmptyDay({ isToday, paused, incomplete, onToday, onYesterday }: Props) {
  const send = useSend();
  if (incomplete) return <Empty title="Rien n’a pu être lu pour ce jour." />;
  if (isToday && paused) {
    return (
      <Empty title="Le suivi est en pause.">
        <p>Rien n’est enregistré aujourd’hui tant qu’il n’a pas repris.</p>
        <Button kind="primary" onClick={() => send("tracker.resume", {})}>
          Reprendre le suivi
        </Button>
      </Empty>
    );
  }
  if (isToday) {
    return (
      <Empty title="La journée commence.">
        <p>Travaillez comme d’habitude : les premières minutes apparaîtront ici d’elles-mêmes.</p>
        <Button onClick={onYesterday}>Voir hier</Button>
      </Empty>
    );
  }
  return (
    <Empty title="Rien d’enregistré ce jour-là.">
      <p>L’ordinateur était éteint, ou le suivi en pause.</p>
      <Button onClick={onToday}>Revenir à aujourd’hui</Button>
    </Empty>
  );
}
