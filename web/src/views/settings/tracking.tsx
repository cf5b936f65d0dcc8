import { useId } from "preact/hooks";
import { useAnswer, useClient } from "../../client";
import { duration } from "../../model/time";
import { Select } from "../../ui/parts";
import { useAttempt, useNotice, useSend } from "../../ui/toast";
import { NumberField, Row, type SettingsProps, Switch } from "./fields";

/** What counts as an activity, and when Orvanta starts. */
export function TrackingRows(props: SettingsProps) {
  return (
    <>
      <NumberField
        setting="idle_threshold"
        label="Seuil d’inactivité"
        help="Sans clavier ni souris pendant ce délai, l’absence est comptée depuis le dernier geste. Une vidéo ou un appel compte comme une présence, si le bureau le signale."
        unit="minutes"
        scale={60}
        {...props}
      />
      <NumberField
        setting="min_span_seconds"
        label="Activité la plus courte"
        help="Un passage plus bref reste compté dans l’activité précédente."
        unit="secondes"
        {...props}
      />
      <NumberField
        setting="min_block_seconds"
        label="Bloc le plus court"
        help="La liste du jour n’affiche pas les blocs plus brefs ; ils comptent dans les totaux."
        unit="secondes"
        {...props}
      />
      <AbsenceRow />
      <LaunchSwitch />
    </>
  );
}

const delays = [5, 10, 15, 30, 60];

function AbsenceRow() {
  const id = useId();
  const send = useSend();
  const minutes = useAnswer("absence.get", {}).answer?.ask_minutes;
  const offered = minutes === undefined || minutes === 0 || delays.includes(minutes) ? delays : [...delays, minutes].sort((a, b) => a - b);
  return (
    <Row
      label="Au retour, demander ce que c’était"
      help="Une notification propose les projets les plus probables ; un clic leur donne l’absence."
      htmlFor={id}
    >
      <Select
        id={id}
        value={String(minutes ?? 0)}
        options={[
          ["0", "Jamais"],
          ...offered.map((length) => [String(length), `Après ${duration(length * 60)}`] as const),
        ]}
        onChange={(value) => send("absence.set", { ask_minutes: Number(value) })}
      />
    </Row>
  );
}

function LaunchSwitch() {
  const client = useClient();
  const attempt = useAttempt();
  const notify = useNotice();
  const { answer } = useAnswer("permissions.status", {});
  const launch = async (enabled: boolean) => {
    const { ok, error } = await client.call("launchAtLogin", { enabled });
    const text = error ?? "Le lancement à l’ouverture de session n’a pas pu être changé.";
    if (!ok) notify({ text, failed: true });
  };
  return (
    <Switch
      label="Lancer à l’ouverture de la session"
      help="Orvanta démarre sans fenêtre, dans la zone de notification."
      on={answer?.launch_at_login ?? false}
      onChange={(on) => void attempt(() => launch(on))}
    />
  );
}
