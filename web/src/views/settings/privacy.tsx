import { useRef, useState } from "preact/hooks";
import { useClient } from "../../client";
import { readList } from "../../model/settings";
import { count } from "../../model/time";
import { Confirm } from "../../ui/dialog";
import { useSend } from "../../ui/toast";
import { AppExclusions } from "./app_exclusions";
import { DomainList } from "./domain_list";
import { NumberField, Row, type SettingsProps } from "./fields";

const modes = [
  ["full", "Application, titre, site et adresse"],
  ["domain", "Application et site seulement"],
] as const;

/** What is recorded of windows and sites, and for how long. */
export function PrivacyRows(props: SettingsProps) {
  const { settings } = props;
  const client = useClient();
  const send = useSend();
  return (
    <>
      <Row label="Ce qui est noté des fenêtres">
        <fieldset class="choices">
          <legend class="sr-only">Ce qui est noté des fenêtres</legend>
          {modes.map(([mode, text]) => (
            <label key={mode} class="check">
              <input
                type="radio"
                name="privacy"
                checked={(settings.privacy_mode === "domain") === (mode === "domain")}
                onChange={() => send("settings.set", { privacy_mode: mode })}
              />
              {text}
            </label>
          ))}
        </fieldset>
      </Row>
      <DomainList
        domains={readList(settings.excluded_domains) ?? []}
        problem={
          readList(settings.excluded_domains)
            ? ""
            : "La liste enregistrée n’est pas une liste de noms de sites : aucun site n’est exclu."
        }
        onSave={async (domains) => void (await client.call("settings.set", { excluded_domains: domains }))}
      />
      <AppExclusions apps={readList(settings.excluded_apps ?? "[]") ?? []} />
      <RetentionField {...props} />
    </>
  );
}

// Erases at once and for good, so it asks first whenever it would erase more than before.
function RetentionField(props: SettingsProps) {
  const [asked, setAsked] = useState<number | null>(null);
  const answer = useRef((_: boolean) => {});
  const allow = async (days: number) => {
    const before = Number(props.settings.retention_days) || 0;
    if (days === 0 || (before > 0 && days >= before)) return true;
    setAsked(days);
    const yes = await new Promise<boolean>((resolve) => (answer.current = resolve));
    setAsked(null);
    return yes;
  };
  return (
    <>
      <NumberField
        setting="retention_days"
        label="Garder titres et adresses"
        help={
          <>
            <b>Au-delà, ils sont effacés pour de bon.</b> Les durées, les applications et les sites restent. 0 : tout est gardé.
          </>
        }
        unit="jours"
        {...props}
        allow={allow}
      />
      {asked !== null && (
        <Confirm
          title="Effacer les anciens titres et adresses ?"
          action="Effacer"
          danger
          onClose={() => answer.current(false)}
          onConfirm={() => answer.current(true)}
        >
          <p>
            Les titres et adresses de plus de {count(asked, "jour")} sont effacés maintenant, puis chaque
            jour. Cela ne s’annule pas.
          </p>
        </Confirm>
      )}
    </>
  );
}
