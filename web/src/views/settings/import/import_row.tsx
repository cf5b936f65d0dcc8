import { useRef, useState } from "preact/hooks";
import { decoded } from "../../../model/imports";
import { Button } from "../../../ui/parts";
import { useTask } from "../../../ui/task";
import { Row } from "../fields";
import { ImportDialog, type ImportFile } from "./import_dialog";

/** Larger ones the program refuses as well. */
const largest = 20 * 1024 * 1024;

/** The way to a file of another program, which the page reads itself. */
export function ImportRow() {
  const input = useRef<HTMLInputElement>(null);
  const { error, setError, run } = useTask();
  const [file, setFile] = useState<ImportFile | null>(null);
  const read = (chosen: File | undefined) => {
    if (!chosen) return;
    if (chosen.size > largest) return setError("Ce fichier est trop grand : 20 Mo au plus.");
    run(async () => {
      const text = decoded(new Uint8Array(await chosen.arrayBuffer()));
      setFile({ name: chosen.name, text });
    });
  };
  return (
    <Row
      label="Importer"
      error={error}
      help="Un tableau CSV, un agenda ICS ou une liste JSON d’un autre logiciel. Seul ce qui est vide est rempli, et tout s’annule."
    >
      <input
        ref={input}
        type="file"
        class="sr-only"
        tabIndex={-1}
        aria-hidden="true"
        accept=".csv,.tsv,.txt,.ics,.json,text/*,application/json"
        onChange={(event) => {
          read(event.currentTarget.files?.[0]);
          // The same one can be chosen again.
          event.currentTarget.value = "";
        }}
      />
      <Button onClick={() => input.current?.click()}>Importer un fichier…</Button>
      {file && <ImportDialog file={file} onClose={() => setFile(null)} />}
    </Row>
  );
}
