import { useRef, useState } from "preact/hooks";
import type { Body } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { numberSettings, readList } from "../../model/settings";
import { count } from "../../model/time";
import { Confirm } from "../../ui/dialog";
import { Failure } from "../../ui/parts";
import { useAttempt, useNotice } from "../../ui/toast";
import type { ViewProps } from "../props";
import { Export } from "./export";
import { DomainList, NumberField, Row, Section, Switch } from "./fields";
import { StoreRows } from "./store";
import { BrowserRows, DesktopRows } from "./permissions";
import { TelemetryRows } from "./telemetry";

export function SettingsView({ status, today, onWelcome }: ViewProps) {
  const client = useClient();
  const attempt = useAttempt();
  const notify = useNotice();
  const { answer: settings, error, reload } = useAnswer("settings.get", {});
  const permissions = useAnswer("permissions.status", {});
  const [quitting, setQuitting] = useState(false);
  const [retention, setRetention] = useState<number | null>(null);
  const answerRetention = useRef((_: boolean) => {});

  const set = async (values: Body<"settings.set">) => {
    await client.call("settings.set", values);
  };
  // Erases at once and for good, so it asks first whenever it would erase more than before.
  const saveRetention = async (days: number) => {
    const before = Number(settings?.retention_days) || 0;
    if (days > 0 && (before === 0 || days < before)) {
      setRetention(days);
      const yes = await new Promise<boolean>((resolve) => (answerRetention.current = resolve));
      setRetention(null);
      if (!yes) return false;
    }
    await set({ retention_days: days });
    return true;
  };
  const launch = (enabled: boolean) =>
    attempt(async () => {
      const result = await client.call("launchAtLogin", { enabled });
      if (!result.ok)
        notify({
          text: result.error ?? "Le lancement à l’ouverture de session n’a pas pu être changé.",
          failed: true,
        });
    });

  return (
    <div class="view settings">
      <div class="view-head">
        <h1>Réglages</h1>
        <p class="quiet">Chaque changement vaut aussitôt.</p>
      </div>
      {error && <Failure text={error} retry={reload} />}
      {settings && (
        <>
          <Section title="Suivi">
            <NumberField
              label="Seuil d’inactivité"
              help="Sans clavier ni souris pendant ce temps, vous êtes absent depuis le dernier geste. Une vidéo ou un appel compte comme présence."
              unit="secondes"
              setting={numberSettings.idle_threshold}
              value={settings.idle_threshold}
              onSave={(value) => set({ idle_threshold: value })}
            />
            <NumberField
              label="Activité la plus courte"
              help="Un passage plus bref reste compté dans l’activité d’avant."
              unit="secondes"
              setting={numberSettings.min_span_seconds}
              value={settings.min_span_seconds}
              onSave={(value) => set({ min_span_seconds: value })}
            />
            <NumberField
              label="Bloc le plus court"
              help="La liste du jour tait les blocs plus brefs ; ils comptent dans les totaux."
              unit="secondes"
              setting={numberSettings.min_block_seconds}
              value={settings.min_block_seconds}
              onSave={(value) => set({ min_block_seconds: value })}
            />
            <Switch
              label="Lancer à l’ouverture de la session"
              help="Orvanta démarre sans fenêtre, dans la zone de notification."
              on={permissions.answer?.launch_at_login ?? false}
              onChange={(on) => void launch(on)}
            />
          </Section>
          <Section title="Vie privée">
            <Row label="Ce qui est noté des fenêtres">
              <fieldset class="choices">
                <legend class="sr-only">Ce qui est noté des fenêtres</legend>
                {(
                  [
                    ["full", "Application, titre, site et adresse"],
                    ["domain", "Application et site seulement"],
                  ] as const
                ).map(([mode, text]) => (
                  <label key={mode} class="check">
                    <input
                      type="radio"
                      name="privacy"
                      checked={(settings.privacy_mode === "domain") === (mode === "domain")}
                      onChange={() => void attempt(() => set({ privacy_mode: mode }))}
                    />
                    {text}
                  </label>
                ))}
              </fieldset>
            </Row>
            <DomainList
              domains={readList(settings.excluded_domains)}
              onSave={(domains) => set({ excluded_domains: domains })}
            />
            <NumberField
              label="Garder titres et adresses"
              help={
                <>
                  <b>Au-delà, ils sont effacés pour de bon.</b> Les durées, les applications et les sites
                  restent. 0 garde tout.
                </>
              }
              unit="jours"
              setting={numberSettings.retention_days}
              value={settings.retention_days}
              onSave={saveRetention}
            />
          </Section>
        </>
      )}
      <Section title="Ce que ce bureau permet">
        <DesktopRows />
        <BrowserRows />
      </Section>
      <Section title="Données">
        <Export today={today} />
        <StoreRows status={status} />
      </Section>
      <Section title="Télémétrie et mises à jour">
        <TelemetryRows status={status} />
      </Section>
      <Section title="Orvanta">
        <Row label="Accueil" help="Ce qui est enregistré, les autorisations, un premier projet.">
          <button type="button" class="button" onClick={onWelcome}>
            Revoir l’accueil
          </button>
        </Row>
        <Row label="Quitter" help="Fermer cette fenêtre n’arrête pas le suivi ; quitter, si.">
          <button type="button" class="button danger" onClick={() => setQuitting(true)}>
            Quitter Orvanta
          </button>
        </Row>
      </Section>
      {quitting && (
        <Confirm
          title="Quitter Orvanta ?"
          action="Quitter"
          danger
          onClose={() => setQuitting(false)}
          onConfirm={async () => void (await client.call("quit", {}))}
        >
          <p>Plus rien n’est enregistré jusqu’au prochain démarrage.</p>
        </Confirm>
      )}
      {retention !== null && (
        <Confirm
          title="Effacer les anciens titres et adresses ?"
          action="Effacer"
          danger
          onClose={() => answerRetention.current(false)}
          onConfirm={() => answerRetention.current(true)}
        >
          <p>
            Les titres et adresses de plus de {count(retention, "jour")} sont effacés maintenant, puis chaque
            heure. Cela ne s’annule pas.
          </p>
        </Confirm>
      )}
    </div>
  );
}
