import type { Permissions } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { typeset } from "../../model/time";
import { Icon } from "../../ui/icons";
import { Button } from "../../ui/parts";
import { useTask } from "../../ui/task";
import { useSend } from "../../ui/toast";
import { Row } from "./fields";

const probeNames: Record<string, string> = {
  foreground: "Application et fenêtre",
  idle: "Inactivité",
  inhibition: "Vidéos et appels",
  session: "Verrouillage et veille",
};

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
        help={answer.advice || "Sans lui, le temps est compté par application seulement."}
      >
        <State good={answer.accessibility} text={answer.accessibility ? "lisible" : "illisible"} />
        {(!answer.accessibility || answer.advice) && (
          <Button onClick={() => send("permissions.requestAccessibility", {})}>
            Autoriser la lecture des titres
          </Button>
        )}
      </Row>
      {Object.entries(answer.probes ?? {}).map(([probe, source]) => (
        <Row
          key={probe}
          label={probeNames[probe] ?? probe}
          help={probe === "inhibition" ? answer.films && typeset(answer.films) : undefined}
        >
          <State
            good={source !== "none" && !(probe === "inhibition" && answer.films)}
            text={names?.[probe] ?? source}
          />
        </Row>
      ))}
    </>
  );
}

/** The browsers that run, each with a way to try whether its active tab can be read. */
export function BrowserRows() {
  const send = useSend();
  const { answer } = useAnswer("permissions.status", {}, 10);
  if (!answer) return null;
  return (
    <>
      {answer.browsers_running.length === 0 && (
        <Row label="Navigateurs" help="Ouvrez votre navigateur : il apparaîtra ici, avec un essai.">
          <p class="quiet">aucun n’est ouvert</p>
        </Row>
      )}
      {answer.browsers_running.map((browser) => (
        <Browser key={browser.bundle} {...browser} known={answer.browsers[browser.bundle]} />
      ))}
      <Row label="Extension des navigateurs" help="C’est elle qui dit à Orvanta l’adresse de l’onglet actif.">
        <Button onClick={() => send("permissions.openAutomation", {})}>Ouvrir les réglages</Button>
      </Row>
    </>
  );
}

interface BrowserProps {
  bundle: string;
  name: string;
  known: Permissions["browsers"][string] | undefined;
}

function Browser({ bundle, name, known }: BrowserProps) {
  const client = useClient();
  const { busy, error, setError, run } = useTask();
  const test = async () => {
    const result = await client.call("permissions.testBrowser", { bundle });
    if (!result.ok) setError(result.error || "L’onglet actif n’a pas pu être lu.");
  };
  return (
    <Row label={name} error={error}>
      {known === "ok" && <State good text="onglet lisible" />}
      {known === "denied" && <State good={false} text="onglet illisible" />}
      {known === undefined && <p class="quiet">pas encore essayé</p>}
      <Button disabled={busy} aria-label={`Essayer ${name}`} onClick={() => run(test)}>
        {busy ? "Essai…" : "Essayer"}
      </Button>
    </Row>
  );
}

function State({ good, text }: { good: boolean; text: string }) {
  return (
    <p class={good ? "state good" : "state bad"}>
      <Icon name={good ? "check" : "warning"} />
      {text}
    </p>
  );
}
