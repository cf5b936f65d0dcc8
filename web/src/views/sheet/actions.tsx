import type { Sheet, SheetFormat, SheetQuestion } from "../../bridge/routes";
import { useClient } from "../../client";
import { sheetHtml, sheetText } from "../../model/sheet";
import { Icon } from "../../ui/icons";
import { Button, Segmented } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { useTask } from "../../ui/task";
import { FormError } from "../../ui/dialog";
import { useAttempt, useNotice } from "../../ui/toast";

interface Props {
  sheet: Sheet;
  /** What the program makes its files of. */
  source: SheetQuestion | { id: number };
  landscape: boolean;
  onLandscape: (landscape: boolean) => void;
  /** Absent of a sheet that is kept already. */
  onFreeze?: () => void;
}

/** Puts the sheet on the clipboard: as a table for a mail, as lines for what takes no table. */
async function copyTable(sheet: Sheet): Promise<void> {
  const text = sheetText(sheet);
  try {
    const blob = (type: string, content: string) => new Blob([content], { type });
    await navigator.clipboard.write([
      new ClipboardItem({
        "text/html": blob("text/html", sheetHtml(sheet)),
        "text/plain": blob("text/plain", text),
      }),
    ]);
  } catch {
    await navigator.clipboard.writeText(text);
  }
}

/** Where a sheet can go: paper, clipboard, files, the archive. */
export function SheetActions({ sheet, source, landscape, onLandscape, onFreeze }: Props) {
  const client = useClient();
  const notify = useNotice();
  const attempt = useAttempt();
  const { busy, error, run } = useTask();
  const bar = useRoving<HTMLDivElement>("row");
  const exported = (format: SheetFormat) =>
    run(async () => {
      const { ok } = await client.call("sheet.export", { ...source, format });
      if (ok) notify({ text: "La feuille est exportée." });
    });
  const copy = async () => {
    if (await attempt(() => copyTable(sheet))) notify({ text: "Tableau copié." });
  };
  return (
    <>
      <div class="sheet-actions" ref={bar}>
        <Button kind="primary" onClick={() => window.print()}>
          <Icon name="print" />
          Imprimer, PDF…
        </Button>
        <Button onClick={() => void copy()} title="Un tableau pour un courriel">
          <Icon name="copy" />
          Copier
        </Button>
        <Button disabled={busy} onClick={() => exported("csv")} title="Points-virgules, virgules décimales">
          CSV…
        </Button>
        <Button disabled={busy} onClick={() => exported("csv_plain")} title="Virgules, points décimaux">
          CSV simple…
        </Button>
        {onFreeze && (
          <>
            <Button
              disabled={busy}
              onClick={() => exported("ics")}
              title="Les plages de travail, pour un agenda"
            >
              Agenda (ICS)…
            </Button>
            <Button onClick={onFreeze} title="Garder la feuille telle qu’elle est envoyée">
              <Icon name="freeze" />
              Figer…
            </Button>
          </>
        )}
        <span class="spacer" />
        <Segmented
          legend="Sens du papier"
          small
          choices={[
            { value: false, label: "A4 portrait" },
            { value: true, label: "Paysage" },
          ]}
          value={landscape}
          onChange={onLandscape}
        />
      </div>
      <FormError text={error} />
    </>
  );
}
