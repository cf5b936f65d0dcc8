import { useLayoutEffect, useState } from "preact/hooks";
import type { Seconds, UnixTime } from "../../bridge/routes";
import type { Backup, StoreContent } from "../../bridge/store";
import { useAnswer, useClient } from "../../client";
import { fileSize, moment } from "../../model/store";
import { recall } from "../../model/stored";
import { capitalize, clip, count, dateOnly, dayOf, duration } from "../../model/time";
import { Confirm } from "../../ui/dialog";
import { useNotice } from "../../ui/toast";

interface Props {
  backups: readonly Backup[];
  now: UnixTime;
  onClose: () => void;
}

/** Which backup to go back to, and what would change by it. */
export function RestoreDialog({ backups, now, onClose }: Props) {
  const client = useClient();
  const notify = useNotice();
  const [chosen, setChosen] = useState<Backup | null>(null);
  const [ready, setReady] = useState<string | null>(null);
  return (
    <Confirm
      title="Restaurer une sauvegarde"
      action="Restaurer"
      danger
      wide
      disabled={!chosen || ready !== chosen.file}
      onClose={onClose}
      onConfirm={async () => {
        if (!chosen) return;
        await client.call("store.restore", { file: chosen.file });
        await recall(client).catch(() => {});
        // Where the file of before is, the notice over the page tells.
        notify({ text: `Restauré : sauvegarde faite ${moment(chosen.time, now)}.` });
      }}
    >
      {backups.length === 0 ? (
        <p>Il n’y a pas encore de sauvegarde.</p>
      ) : (
        <div class="restore">
          <fieldset class="backups">
            <legend>Sauvegardes</legend>
            {backups.map((backup) => (
              <label key={backup.file} class="check" title={clip(backup.file, 500)}>
                <input
                  type="radio"
                  name="backup"
                  checked={chosen?.file === backup.file}
                  onChange={() => setChosen(backup)}
                />
                <span>{capitalize(moment(backup.time, now))}</span>
                <span class="quiet">{fileSize(backup.size)}</span>
              </label>
            ))}
          </fieldset>
          <div class="preview" role="status">
            {chosen ? (
              <RestorePreview key={chosen.file} file={chosen.file} onReady={() => setReady(chosen.file)} />
            ) : (
              <p class="quiet">Choisissez-en une pour voir ce qui changerait.</p>
            )}
          </div>
        </div>
      )}
    </Confirm>
  );
}

/** What would change if this file took the place of today's; told when it can. */
export function RestorePreview({ file, onReady }: { file: string; onReady: () => void }) {
  const { answer, error } = useAnswer("store.restorePreview", { file });
  useLayoutEffect(() => {
    if (answer) onReady();
  }, [answer]);
  if (error) return <p class="field-error">{error}</p>;
  if (!answer) return <p class="quiet">Lecture du fichier…</p>;
  return (
    <>
      <Comparison now={answer.current} then={answer} />
      <p>
        <Lost spans={answer.lost_spans} seconds={answer.lost_seconds} />
      </p>
      <p>Le fichier actuel n’est pas effacé : il est gardé à part, sous un autre nom.</p>
    </>
  );
}

function Lost({ spans, seconds }: { spans: number | null; seconds: Seconds | null }) {
  if (spans === null || seconds === null)
    return (
      <>Le fichier actuel ne peut pas être lu en entier : ce qu’il a de plus n’est pas connu.</>
    );
  if (spans === 0) return <>Tout le temps du fichier actuel y est.</>;
  return (
    <>
      <b>
        {count(spans, "activité")} ({duration(seconds)})
      </b>
      {spans === 1
        ? " du fichier actuel n’y est pas et sera mise de côté avec lui."
        : " du fichier actuel n’y sont pas et seront mises de côté avec lui."}
    </>
  );
}

const day = (time: UnixTime | null) => (time === null ? "–" : dateOnly(dayOf(time)));
const number = new Intl.NumberFormat("fr-FR");
const facts: [string, (content: StoreContent) => string][] = [
  ["Activités", ({ spans }) => number.format(spans)],
  ["Premier jour", ({ first }) => day(first)],
  ["Dernier jour", ({ last }) => day(last)],
  ["Projets", ({ projects }) => number.format(projects)],
  ["Règles", ({ rules }) => number.format(rules)],
];

function Comparison({ now, then }: { now: StoreContent; then: StoreContent }) {
  return (
    <table class="comparison">
      <caption class="sr-only">Ce que la restauration changerait</caption>
      <thead>
        <tr>
          <td />
          <th scope="col">Maintenant</th>
          <th scope="col">Après</th>
        </tr>
      </thead>
      <tbody>
        {facts.map(([name, read]) => (
          <tr key={name} class={read(now) === read(then) ? "" : "changed"}>
            <th scope="row">{name}</th>
            <td>{read(now)}</td>
            <td>{read(then)}</td>
          </tr>
        ))}
      </tbody>
    </table>
  );
}
