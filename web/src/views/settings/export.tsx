import { useState } from "preact/hooks";
import type { Day } from "../../bridge/routes";
import { useClient } from "../../client";
import { addDays, addMonths, dateOnly, firstOfMonth, mondayOf } from "../../model/time";
import { DayButton } from "../../ui/calendar";
import { Button } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { useTask } from "../../ui/task";
import { useNotice } from "../../ui/toast";
import { Row } from "./fields";

/** The recorded spans of some days as a CSV file, where the save dialogue puts it. */
export function Export({ today }: { today: Day }) {
  const client = useClient();
  const notify = useNotice();
  const [from, setFrom] = useState(firstOfMonth(today));
  const [to, setTo] = useState(today);
  const { busy, error, setError, run } = useTask();
  const chips = useRoving<HTMLDivElement>("row");
  const lastMonth = addMonths(firstOfMonth(today), -1);
  const presets: [string, Day, Day][] = [
    ["Aujourd’hui", today, today],
    ["Cette semaine", mondayOf(today), today],
    ["Ce mois-ci", firstOfMonth(today), today],
    ["Le mois dernier", lastMonth, addDays(firstOfMonth(today), -1)],
  ];

  const save = () => {
    if (to < from) return setError("Le dernier jour précède le premier.");
    run(async () => {
      const { ok } = await client.call("export", { from, to });
      if (ok) notify({ text: `Exporté : du ${dateOnly(from)} au ${dateOnly(to)}.` });
    });
  };
  return (
    <Row
      wide
      error={error}
      label="Exporter"
      help="Un fichier CSV, une ligne par activité, que tout tableur ouvre. Les deux jours sont compris."
    >
      <div class="chips" ref={chips}>
        {presets.map(([name, first, last]) => (
          <button
            type="button"
            key={name}
            class="chip"
            aria-pressed={from === first && to === last}
            onClick={() => {
              setFrom(first);
              setTo(last);
              setError("");
            }}
          >
            {name}
          </button>
        ))}
      </div>
      <div class="with-unit">
        <DayButton label="Premier jour" text={dateOnly(from)} day={from} today={today} onPick={setFrom} />
        <p>–</p>
        <DayButton label="Dernier jour" text={dateOnly(to)} day={to} today={today} onPick={setTo} />
        <Button kind="primary" disabled={busy} onClick={save}>
          {busy ? "Export en cours…" : "Exporter…"}
        </Button>
      </div>
    </Row>
  );
}
