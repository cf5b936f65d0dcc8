import { useState } from "preact/hooks";
import { BridgeError } from "../../bridge/bridge";
import type { Status } from "../../bridge/routes";
import { type Client, useClient } from "../../client";
import { Button } from "../../ui/parts";
import { Said } from "../../ui/said";
import { useTask } from "../../ui/task";
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
              Identifiant de cette installation : <code>{status.install_id || "–"}</code>. La désactivation efface cet
              identifiant.
            </>
          ) : (
            "Désactivé : rien ne quitte cet ordinateur."
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
          <dd>la version du système, par exemple 12.5 ; ce nom est celui que le service connaît</dd>
          <dt>arch</dt>
          <dd>le type de processeur</dd>
          <dt>event</dt>
          <dd>
            ce qui est arrivé : « first_launch », le premier lancement ; « heartbeat », un signe de vie par
            jour ; « error », une erreur de la base
          </dd>
          <dt>error</dt>
          <dd>
            avec « error » seulement : les 500 premiers caractères de cette erreur, une fois par jour au plus
          </dd>
        </dl>
        <p>Jamais d’application, de titre, de site, de durée ni de projet.</p>
      </details>
    </Row>
  );
}

// What the program has found, once it has: it gives up after ten seconds.
async function lookForUpdate(client: Client): Promise<Status | undefined> {
  await client.call("update.check", {});
  for (let tries = 0; tries < 30; tries++) {
    const status = await client.read("status", {});
    if (status.update_check !== "going") return status;
    await new Promise((resolve) => setTimeout(resolve, 400));
  }
  return undefined;
}

function UpdateRow({ version, update }: { version: string; update: Status["update"] }) {
  const client = useClient();
  const send = useSend();
  const [found, setFound] = useState<Status["update"]>(null);
  const [checked, setChecked] = useState(false);
  const { busy, error, run } = useTask();
  const newer = update ?? found;

  const check = async () => {
    setChecked(false);
    const status = await lookForUpdate(client);
    if (status?.update_check !== "done")
      throw new BridgeError("La liste des versions n’a pas pu être lue. Êtes-vous connecté à Internet ?");
    setFound(status.update);
    setChecked(true);
  };

  return (
    <Row
      error={error}
      label="Mise à jour"
      help={`Version installée : ${version}. La vérification lit la liste des versions et n’envoie rien qui vous concerne.`}
    >
      <Said class="quiet" text={checked && !newer && "Pas de version plus récente trouvée."} />
      {newer ? (
        <Button kind="primary" onClick={() => send("openURL", { url: newer.url })}>
          Voir Orvanta {newer.version}
        </Button>
      ) : (
        <Button disabled={busy} onClick={() => run(check)}>
          {busy ? "Vérification…" : "Vérifier maintenant"}
        </Button>
      )}
    </Row>
  );
}
