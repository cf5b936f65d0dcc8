import { useState } from "preact/hooks";
import { useAnswer, useClient } from "../../client";
import { Confirm } from "../../ui/dialog";
import { Button, Failure, ViewTitle } from "../../ui/parts";
import type { ViewProps } from "../props";
import { BrowserRows } from "./browsers";
import { GoalRows } from "../goals/goal_rows";
import { Export } from "./export";
import { Row, Section } from "./fields";
import { ImportRow } from "./import/import_row";
import { MovingRow } from "./moving";
import { DesktopRows } from "./permissions";
import { PrivacyRows } from "./privacy";
import { StoreRows } from "./store";
import { TelemetryRows } from "./telemetry";
import { TrackingRows } from "./tracking";

export function SettingsView({ status, today, onWelcome }: ViewProps) {
  const { answer: settings, error, reload } = useAnswer("settings.get", {});
  const { answer: rows } = useAnswer("settings.describe", {});
  return (
    <div class="view settings">
      <div class="view-head">
        <ViewTitle text="Réglages" />
        <p class="quiet">Les changements prennent effet aussitôt.</p>
      </div>
      {error && <Failure text={error} retry={reload} />}
      {settings && rows && (
        <>
          <Section title="Suivi">
            <TrackingRows {...{ settings, rows }} />
          </Section>
          <Section title="Vie privée">
            <PrivacyRows {...{ settings, rows }} />
          </Section>
        </>
      )}
      <Section title="Objectifs et limites">
        <GoalRows />
      </Section>
      <Section title="Ce que ce bureau permet">
        <DesktopRows />
        <BrowserRows />
      </Section>
      <Section title="Données">
        <Export today={today} />
        <ImportRow />
        <StoreRows status={status} />
        <MovingRow />
      </Section>
      <Section title="Télémétrie et mises à jour">
        <TelemetryRows status={status} />
      </Section>
      <Section title="Orvanta">
        <Row label="Accueil" help="Ce qui est enregistré, les autorisations, un premier projet.">
          <Button onClick={onWelcome}>Revoir l’accueil</Button>
        </Row>
        <QuitRow />
      </Section>
    </div>
  );
}

function QuitRow() {
  const client = useClient();
  const [quitting, setQuitting] = useState(false);
  return (
    <Row label="Quitter" help="Fermer cette fenêtre n’arrête pas le suivi ; quitter, si.">
      <Button kind="danger" onClick={() => setQuitting(true)}>
        Quitter Orvanta
      </Button>
      {quitting && (
        <Confirm
          title="Quitter Orvanta ?"
          action="Quitter"
          danger
          onClose={() => setQuitting(false)}
          onConfirm={async () => void (await client.call("quit", {}))}
        >
          <p>Plus rien ne sera enregistré jusqu’au prochain démarrage.</p>
        </Confirm>
      )}
    </Row>
  );
}
