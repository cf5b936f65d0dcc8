import { useEffect, useState } from "preact/hooks";
import type { Status } from "../../bridge/routes";
import { Button } from "../../ui/parts";
import { Said } from "../../ui/said";
import { useSend } from "../../ui/toast";
import { Row, Switch } from "./fields";

/** What is sent of the use made of Orvanta, and whether there is a newer version. */
export function TelemetryRows({ status }: { status: Status | undefined }) {
  const send = useSend();
  const version = status?.version ?? "–";
  return (
    <>
      <Switch
        label="Envoyer des mesures d’usage anonymes"
        help={
          status?.telemetry ? (
            <>
              Identifiant de cette installation : <code>{status.install_id || "–"}</code>. Éteindre l’oublie.
            </>
          ) : (
            "Éteint, rien ne quitte cet ordinateur."
          )
        }
        on={status?.telemetry ?? false}
        onChange={(enabled) => send("telemetry.set", { enabled })}
      />
      <SentRow version={version} />
      <UpdateRow version={version} update={status?.update ?? null} />
    </>
  );
}

function SentRow({ version }: { version: string }) {
  return (
    <Row wide label="Exactement ce qui est envoyé">
      <details class="sent">
        <summary>Voir les champs</summary>
        <dl>
          <dt>install_id</dt>
          <dd>un identifiant tiré au hasard, sans lien avec vous</dd>
          <dt>version</dt>
          <dd>la version d’Orvanta, {version}</dd>
          <dt>macos</dt>
          <dd>la version du système, par exemple 12.5</dd>
          <dt>arch</dt>
          <dd>le type de processeur</dd>
          <dt>event</dt>
          <dd>first_launch une fois, heartbeat une fois par jour, error</dd>
          <dt>error</dt>
          <dd>
            avec error seulement : les 500 premiers caractères de l’erreur de la base, une fois par jour au
            plus
          </dd>
        </dl>
        <p>Jamais d’application, de titre, de site, de durée ni de projet.</p>
      </details>
    </Row>
  );
}

function UpdateRow({ version, update }: { version: string; update: Status["update"] }) {
  const send = useSend();
  const [checked, setChecked] = useState(false);
  const [waiting, setWaiting] = useState(false);

  // The check goes on in the background and gives up after ten seconds.
  useEffect(() => {
    if (!waiting) return;
    const timer = setTimeout(() => {
      setWaiting(false);
      setChecked(true);
    }, 11_000);
    return () => clearTimeout(timer);
  }, [waiting]);
  useEffect(() => {
    if (update) setWaiting(false);
  }, [update]);

  return (
    <Row
      label="Mise à jour"
      help={`Version installée : ${version}. Vérifier lit la liste des versions, sans rien envoyer de vous.`}
    >
      <Said class="quiet" text={checked && !update && "Pas de version plus récente trouvée."} />
      {update ? (
        <Button kind="primary" onClick={() => send("openURL", { url: update.url })}>
          Voir Orvanta {update.version}
        </Button>
      ) : (
        <Button
          disabled={waiting}
          onClick={() => {
            setChecked(false);
            setWaiting(true);
            send("update.check", {});
          }}
        >
          {waiting ? "Vérification…" : "Vérifier maintenant"}
        </Button>
      )}
    </Row>
  );
}
