import type { Permissions } from "../../bridge/routes";
import { useAnswer } from "../../client";
import { typeset } from "../../model/time";
import { Button } from "../../ui/parts";
import { useSend } from "../../ui/toast";
import { Row } from "./fields";
import { State } from "./state";

const probeNames: Record<string, string> = {
  foreground: "Application et fenêtre",
  idle: "Inactivité",
  inhibition: "Vidéos et appels",
  session: "Verrouillage et veille",
};

// What it costs where nothing tells of it, and what helps.
function missing(probe: string, { probes = {}, films }: Permissions): string | undefined {
  if (probe === "inhibition" && films) return typeset(films);
  if (probes[probe] !== "none") return undefined;
  switch (probe) {
    case "foreground":
      return "Tout le temps est compté comme « Inconnu ». « Titre des fenêtres », ci-dessus, dit ce qui aide.";
    case "idle":
      return "Vos absences ne se voient pas : elles comptent comme activité. Mettez le suivi en pause en partant.";
    case "inhibition":
      return "Sans effet d’ordinaire : sous Wayland, c’est le compositeur qui retient l’inactivité pendant une vidéo. Sinon, allongez le seuil d’inactivité.";
    case "session":
      return "Un écran verrouillé compte comme une présence jusqu’au seuil d’inactivité : la session n’a ni systemd-logind, ni elogind, ni écran de veille pour le signaler.";
  }
  return undefined;
}

/** What this desktop lets Orvanta see, and what can be done about the rest. */
export function DesktopRows() {
  const send = useSend();
  const { answer } = useAnswer("permissions.status", {}, 10);
  const { answer: names } = useAnswer("permissions.sources", {}, 10);
  if (!answer) return null;
  return (
    <>
      <Row
        label="Titre des fenêtres"
        help={typeset(answer.advice ?? "") || "Sans lui, le temps est compté par application seulement."}
      >
        <State good={answer.accessibility} text={answer.accessibility ? "lisible" : "illisible"} />
        {(!answer.accessibility || answer.advice) && (
          <Button onClick={() => send("permissions.requestAccessibility", {})}>
            Autoriser la lecture des titres
          </Button>
        )}
      </Row>
      {Object.entries(answer.probes ?? {}).map(([probe, source]) => (
        <Row key={probe} label={probeNames[probe] ?? probe} help={missing(probe, answer)}>
          <State
            good={source !== "none" && !(probe === "inhibition" && answer.films)}
            text={names?.[probe] ?? source}
          />
        </Row>
      ))}
    </>
  );
}
