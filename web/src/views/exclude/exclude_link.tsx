import { useState } from "preact/hooks";
import type { ExclusionSubject } from "../../bridge/routes";
import { ExcludeDialog } from "./exclude_dialog";

interface Props {
  subject: ExclusionSubject;
  onDone?: (() => void) | undefined;
}

/** Leads from a site or an application to its exclusion. */
export function ExcludeLink({ subject, onDone }: Props) {
  const [open, setOpen] = useState(false);
  return (
    <>
      <button type="button" class="link" aria-haspopup="dialog" onClick={() => setOpen(true)}>
        {"site" in subject ? "Exclure ce site…" : "Exclure cette application…"}
      </button>
      {open && <ExcludeDialog {...{ subject, onDone }} onClose={() => setOpen(false)} />}
    </>
  );
}
