import { useId, useLayoutEffect, useRef } from "preact/hooks";
import type { Block, Project } from "../../bridge/routes";
import { isGap } from "../../model/away";
import { categoryLabel } from "../../model/categories";
import type { DayList, Session } from "../../model/day_list";
import { indexOf, isSelected, type Mode, select, selectAll, type Selection } from "../../model/selection";
import { clip, clock, duration, plainDomain } from "../../model/time";
import { CategoryMark, Icon } from "../../ui/icons";
import { Foreign, ProjectName } from "../../ui/parts";
import { scrollerOf, stickyHeight, useWindowed, type Window } from "../../ui/windowed";

const rowHeight = 36;

interface Props {
  list: DayList;
  projects: readonly Project[];
  selection: Selection;
  onSelect: (selection: Selection) => void;
  /** Enter: on to the choice of category and project. */
  onOpen: () => void;
}

/** The day's blocks, under their sessions; a list box in which only the rows in sight exist. */
export function BlockList({ list, projects, selection, onSelect, onOpen }: Props) {
  const { blocks, rows, places } = list;
  const box = useRef<HTMLDivElement>(null);
  const prefix = useId();
  const inSight = useWindowed(box, rows.length, rowHeight);
  useAnchor(box, list);
  const active = indexOf(blocks, selection.active);
  const activePlace = places[active] ?? -1;
  const isDrawn = activePlace >= inSight.first && activePlace < inSight.end;

  // The row that the keyboard is on stays in sight, and so exists: before the next picture, in which
  // somebody may press a button of the mouse.
  const moved = useRef(false);
  useLayoutEffect(() => {
    if (!moved.current || activePlace < 0) return;
    moved.current = false;
    reveal(box.current, activePlace);
  }, [activePlace]);

  const go = (index: number, mode: Mode) => {
    const next = Math.min(Math.max(index, 0), blocks.length - 1);
    moved.current = true;
    onSelect(select(selection, blocks, next, mode));
  };
  const onKeyDown = (event: KeyboardEvent) => {
    const page = Math.max(1, Math.floor((scrollerOf(box.current)?.clientHeight ?? 400) / rowHeight) - 4);
    const targets: Record<string, number> = {
      ArrowDown: active + 1,
      ArrowUp: active < 0 ? 0 : active - 1,
      Home: 0,
      End: blocks.length - 1,
      PageDown: active + page,
      PageUp: active - page,
    };
    const target = targets[event.key];
    if (target !== undefined) go(target, event.shiftKey ? "range" : event.ctrlKey ? "move" : "only");
    else if (event.key === " ") go(active, "toggle");
    else if (event.key === "Enter") onOpen();
    else if ((event.ctrlKey || event.metaKey) && event.key.toLowerCase() === "a")
      onSelect(selectAll(blocks, selection));
    else return;
    event.preventDefault();
  };

  return (
    <div
      class="blocks"
      ref={box}
      role="listbox"
      aria-label="Blocs du jour"
      aria-multiselectable="true"
      aria-activedescendant={isDrawn ? `${prefix}-${active}` : undefined}
      tabIndex={0}
      data-arrows
      style={{ height: `${rows.length * rowHeight}px` }}
      onKeyDown={onKeyDown}
    >
      <Rows {...{ list, projects, selection, onSelect, onOpen, prefix, active, inSight }} />
    </div>
  );
}

interface RowsProps extends Props {
  prefix: string;
  active: number;
  inSight: Window;
}

// Those in sight, the rows of a session together in a group.
function Rows({ list, projects, selection, onSelect, onOpen, prefix, active, inSight }: RowsProps) {
  const { blocks, rows, places } = list;
  const byId = new Map(projects.map((project) => [project.id, project]));
  const projectOf = (pid: number | null) => (pid === null ? undefined : byId.get(pid));
  const drawn = [];
  let index = places.findIndex((place) => place >= inSight.first);
  for (let place = inSight.first; place < inSight.end; ) {
    const session = rows[place]?.session ?? null;
    const inside = [];
    do {
      const block = rows[place]?.block;
      const at = { top: place * rowHeight, covered: place < inSight.covered };
      if (!block && session)
        inside.push(
          <SessionRow
            key="session"
            {...{ session, at }}
            project={projectOf(session.pid)}
            onClick={() => onSelect(ofSession(session))}
          />,
        );
      if (block) {
        const own = index++;
        inside.push(
          <Row
            key={block.ids[0] ?? `${block.start}`}
            id={`${prefix}-${own}`}
            {...{ block, at, index: own, onOpen }}
            project={session && session.pid === block.pid ? undefined : projectOf(block.pid)}
            inSession={session !== null}
            count={blocks.length}
            selected={isSelected(selection, block)}
            active={own === active}
            onClick={(event) => {
              const mode: Mode = event.shiftKey ? "range" : event.ctrlKey || event.metaKey ? "toggle" : "only";
              onSelect(select(selection, blocks, own, mode));
            }}
          />,
        );
      }
      place++;
    } while (session && place < inSight.end && rows[place]?.session === session);
    drawn.push(
      session ? (
        <div key={`s${session.start}`} role="group" aria-label={describe(session, projectOf(session.pid))}>
          {inside}
        </div>
      ) : (
        inside
      ),
    );
  }
  return <>{drawn}</>;
}

function describe({ start, end, duration: seconds }: Session, project: Project | undefined): string {
  return `${project?.name ?? ""}, ${clock(start)} à ${clock(end)}, ${duration(seconds)}`;
}

function ofSession({ blocks }: Session): Selection {
  const first = blocks[0]?.ids[0] ?? null;
  return { ids: new Set(blocks.flatMap(({ ids }) => ids)), active: first, anchor: first };
}

/** Scrolls just as far as needed for a row to be seen above the bar that may lie over the list's end. */
export function reveal(list: HTMLElement | null, place: number): void {
  const scroller = scrollerOf(list);
  if (!list || !scroller) return;
  const view = scroller.getBoundingClientRect();
  const top = list.getBoundingClientRect().top + place * rowHeight;
  const above = view.top + (stickyHeight(scroller) + 8) - top;
  const below = top + rowHeight - (view.bottom - 96);
  if (above > 0) scroller.scrollTop -= above;
  else if (below > 0) scroller.scrollTop += below;
}

// Rows that come above those in sight move nothing that is being read.
function useAnchor(box: { current: HTMLElement | null }, list: DayList): void {
  const before = useRef(list);
  useLayoutEffect(() => {
    const old = before.current;
    before.current = list;
    const scroller = scrollerOf(box.current);
    if (!box.current || !scroller || old === list) return;
    const edge = scroller.getBoundingClientRect().top + stickyHeight(scroller);
    const hidden = (edge - box.current.getBoundingClientRect().top) / rowHeight;
    const index = old.places.findIndex((place) => place >= hidden);
    const id = old.blocks[index]?.ids[0];
    const now = hidden > 0 && id !== undefined ? list.places[indexOf(list.blocks, id)] : undefined;
    if (now !== undefined) scroller.scrollTop += (now - old.places[index]!) * rowHeight;
  }, [list]);
}

interface At {
  top: number;
  covered: boolean;
}

function placed({ top, covered }: At) {
  return { transform: `translateY(${top}px)`, opacity: covered ? 0 : undefined };
}

interface SessionRowProps {
  session: Session;
  project: Project | undefined;
  at: At;
  onClick: () => void;
}

function SessionRow({ session: { start, end, duration: seconds }, project, at, onClick }: SessionRowProps) {
  return (
    <div
      class="session"
      role="presentation"
      title="Sélectionner ses blocs"
      style={placed(at)}
      onClick={onClick}
    >
      <p class="block-time">
        {clock(start)}
        <span class="quiet"> – {clock(end)}</span>
      </p>
      <p class="block-duration">{duration(seconds)}</p>
      {project && <ProjectName project={project} length={80} />}
    </div>
  );
}

interface RowProps {
  id: string;
  block: Block;
  /** Unless its session names it. */
  project: Project | undefined;
  inSession: boolean;
  at: At;
  index: number;
  count: number;
  selected: boolean;
  active: boolean;
  onClick: (event: MouseEvent) => void;
  onOpen: () => void;
}

function Row({ id, block, project, inSession, at, index, count, selected, active, ...ways }: RowProps) {
  const { app, title, idle } = block;
  const domain = block.domain && plainDomain(block.domain);
  const empty = isGap(block);
  const kinds = ["block", idle && "idle", empty && "gap", active && "active", inSession && "inside"];
  return (
    <div
      id={id}
      role="option"
      class={kinds.filter(Boolean).join(" ")}
      aria-selected={selected}
      aria-posinset={index + 1}
      aria-setsize={count}
      style={placed(at)}
      onClick={ways.onClick}
      onDblClick={ways.onOpen}
    >
      <span class="block-time">
        {clock(block.start)}
        <span class="quiet"> – {clock(block.end)}</span>
      </span>
      <span class="block-duration">{duration(block.duration)}</span>
      <span class="block-mark">
        <CategoryMark cat={block.cat} />
        {!idle && <span class="sr-only">{categoryLabel(block.cat)}</span>}
      </span>
      {idle ? (
        <span class="block-what quiet">{empty ? "Rien d’enregistré" : "Inactif"}</span>
      ) : (
        <span class="block-what" title={title ? clip(title, 500) : undefined}>
          <b>
            <Foreign text={domain ?? app} length={80} />
          </b>
          {domain && (
            <span class="quiet block-app">
              <Foreign text={app} length={40} />
            </span>
          )}
          {title && (
            // Room for about as much as it needs, so that a short one leaves the rest to the name.
            <span class="block-title" style={{ minWidth: `min(40%, ${0.6 * title.length}em)` }}>
              <Foreign text={title} />
            </span>
          )}
        </span>
      )}
      {project && <ProjectName project={project} kind="project chip still" />}
      {block.manual && (
        <span class="block-manual" title="Attribué à la main">
          <Icon name="person" />
          <span class="sr-only">Attribué à la main</span>
        </span>
      )}
    </div>
  );
}
