import { useLayoutEffect, useRef, useState } from "preact/hooks";
import { isAssignable } from "../../model/categories";
import { type Hit, hits, moved, ruleFor } from "../../model/search";
import { clip } from "../../model/time";
import { Dialog } from "../../ui/dialog";
import { Icon } from "../../ui/icons";
import { Button, Failure } from "../../ui/parts";
import { DeleteDialog } from "../day/delete_dialog";
import { ExcludeDialog, subjectOf } from "../exclude/exclude_dialog";
import type { ViewProps } from "../props";
import { RuleEditor } from "../rules/rule_editor";
import { EraseDialog } from "./erase_dialog";
import { FoundActs, type RowAct } from "./found_acts";
import { FoundHead } from "./found_head";
import { FoundRows, rowId } from "./found_rows";
import { GiveDialog } from "./give_dialog";
import { useFound } from "./use_found";

/** With a row, or with all of it. */
type Act = RowAct | "erase";

interface Props {
  onOpenDay: ViewProps["onOpenDay"];
  onClose: () => void;
}

const list = "found-list";

/** Finds anything again, of all years: Ctrl+K from everywhere. */
export function SearchDialog({ onOpenDay, onClose }: Props) {
  const [typed, setTyped] = useState("");
  const { found, days, fetchMore, error, reload } = useFound(typed);
  const rows = hits(days);
  const [at, setAt] = useState(-1);
  const [act, setAct] = useState<Act | null>(null);
  const hit = rows[at];
  const something = typed.trim() !== "" && found !== undefined && found.text !== "";
  // Not after the next picture: a row that is picked in it stays so.
  useLayoutEffect(() => setAt(-1), [found?.text]);
  const field = useFocused(found);
  useLayoutEffect(() => document.getElementById(rowId(at))?.scrollIntoView({ block: "nearest" }), [at]);

  const open = ({ day, row }: Hit) => {
    onClose();
    onOpenDay(day.date, { hour: new Date(row.start * 1000).getHours() });
  };
  const onKeyDown = (event: KeyboardEvent) => {
    if (event.ctrlKey && event.key.toLowerCase() === "k") {
      event.preventDefault();
      (event.currentTarget as HTMLInputElement).select();
    }
    if (event.isComposing || event.ctrlKey || event.altKey) return;
    if (event.key === "ArrowDown" || event.key === "ArrowUp") {
      event.preventDefault();
      setAt(moved(at, event.key === "ArrowDown" ? 1 : -1, rows.length));
    }
    // What is seen may still be of the text before.
    const first = found?.text === typed.trim() ? (hit ?? rows[0]) : hit;
    if (event.key !== "Enter" || !first) return;
    event.preventDefault(); // it is not for what has the focus then
    open(first);
  };
  return (
    <>
      <Dialog title="Retrouver" onClose={onClose} wide>
        <div class="dialog-body found">
          <label class="search wide">
            <Icon name="search" />
            <input
              ref={field}
              class="input"
              autoFocus
              maxLength={200}
              role="combobox"
              aria-expanded={rows.length > 0}
              aria-controls={list}
              aria-autocomplete="list"
              aria-activedescendant={hit ? rowId(at) : undefined}
              aria-label="Retrouver"
              placeholder="Projet, site, application, titre, note ou adresse"
              value={typed}
              onInput={(event) => setTyped(event.currentTarget.value)}
              onKeyDown={onKeyDown}
            />
          </label>
          {error && <Failure text={error} retry={reload} />}
          {something ? (
            <>
              <FoundHead found={found} onErase={() => setAct("erase")} />
              <FoundRows id={list} days={days} hits={rows} at={at} onPick={setAt} onOpen={open} />
              {fetchMore && <Button onClick={fetchMore}>Jours plus anciens</Button>}
            </>
          ) : (
            <Hint />
          )}
        </div>
        {something && rows.length > 0 && (
          <FoundActs hit={hit} onOpen={open} onAct={setAct} />
        )}
      </Dialog>
      {found && act === "erase" && <EraseDialog text={found.text} onClose={() => setAct(null)} />}
      {hit && found && act && act !== "erase" && (
        <Acting {...{ act, hit }} found={found} onClose={() => setAct(null)} />
      )}
    </>
  );
}

function Hint() {
  return (
    <p class="quiet found-hint">
      Toutes les années, sans égard aux accents ni aux majuscules. Tous les mots comptent ; entre
      guillemets, ils se suivent.
    </p>
  );
}

// The field has the focus again where what had it was erased.
function useFocused(found: unknown) {
  const field = useRef<HTMLInputElement>(null);
  useLayoutEffect(() => {
    if (document.activeElement === document.body) field.current?.focus();
  }, [found]);
  return field;
}

interface ActingProps {
  act: RowAct;
  hit: Hit;
  found: NonNullable<ReturnType<typeof useFound>["found"]>;
  onClose: () => void;
}

function Acting({ act, hit, found, onClose }: ActingProps) {
  const { row } = hit;
  if (act === "give") return <GiveDialog text={found.text} row={row} onClose={onClose} />;
  if (act === "exclude") return <ExcludeDialog subject={subjectOf(row)} onClose={onClose} />;
  if (act === "delete")
    return (
      <DeleteDialog
        what={`« ${clip(row.title || row.domain || row.app, 60)}\u00a0» de ce jour`}
        spans={{ ids: row.ids }}
        onDeleted={onClose}
        onClose={onClose}
      />
    );
  const category = isAssignable(row.category) ? row.category : null;
  const rule = ruleFor(found.text, hit, found.subjects);
  return <RuleEditor draft={{ ...rule, category, projectId: row.project_id }} onClose={onClose} />;
}
