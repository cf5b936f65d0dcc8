import { useEffect, useId, useRef } from "preact/hooks";
import type { Block, Project } from "../../bridge/routes";
import { categoryLabel } from "../../model/categories";
import { indexOf, isSelected, type Mode, select, selectAll, type Selection } from "../../model/selection";
import { clip, clock, duration } from "../../model/time";
import { CategoryMark, Icon } from "../../ui/icons";
import { Foreign, ProjectName } from "../../ui/parts";
import { scrollerOf, useWindowed } from "../../ui/windowed";

const rowHeight = 36;

interface Props {
  blocks: readonly Block[];
  projects: readonly Project[];
  selection: Selection;
  onSelect: (selection: Selection) => void;
  /** Enter: on to the choice of category and project. */
  onOpen: () => void;
}

/** The day's blocks; a list box in which only the rows in sight exist. */
export function BlockList({ blocks, projects, selection, onSelect, onOpen }: Props) {
  const list = useRef<HTMLDivElement>(null);
  const prefix = useId();
  const { first, end } = useWindowed(list, blocks.length, rowHeight);
  const active = indexOf(blocks, selection.active);
  const names = new Map(projects.map((project) => [project.id, project]));

  // The row that the keyboard is on stays in sight, and so exists.
  const moved = useRef(false);
  useEffect(() => {
    if (!moved.current || active < 0) return;
    moved.current = false;
    reveal(list.current, active);
  }, [active]);

  const go = (index: number, mode: Mode) => {
    const next = Math.min(Math.max(index, 0), blocks.length - 1);
    moved.current = true;
    onSelect(select(selection, blocks, next, mode));
  };

  const onKeyDown = (event: KeyboardEvent) => {
    const page = Math.max(1, Math.floor((scrollerOf(list.current)?.clientHeight ?? 400) / rowHeight) - 4);
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

  const rows = [];
  for (let index = first; index < end; index++) {
    const block = blocks[index];
    if (!block) continue;
    rows.push(
      <Row
        key={block.ids[0] ?? `${block.start}`}
        id={`${prefix}-${index}`}
        block={block}
        project={block.pid === null ? undefined : names.get(block.pid)}
        index={index}
        count={blocks.length}
        selected={!block.idle && isSelected(selection, block)}
        active={index === active}
        onClick={(event) => {
          const mode: Mode = event.shiftKey ? "range" : event.ctrlKey || event.metaKey ? "toggle" : "only";
          onSelect(select(selection, blocks, index, mode));
        }}
        onOpen={onOpen}
      />,
    );
  }
  return (
    <div
      class="blocks"
      ref={list}
      role="listbox"
      aria-label="Blocs du jour"
      aria-multiselectable="true"
      aria-activedescendant={active >= first && active < end ? `${prefix}-${active}` : undefined}
      tabIndex={0}
      data-arrows
      style={{ height: `${blocks.length * rowHeight}px` }}
      onKeyDown={onKeyDown}
    >
      {rows}
    </div>
  );
}

/** Scrolls just as far as needed for a row to be seen above the bar that may lie over the list's end. */
export function reveal(list: HTMLElement | null, index: number): void {
  const scroller = scrollerOf(list);
  if (!list || !scroller) return;
  const view = scroller.getBoundingClientRect();
  const top = list.getBoundingClientRect().top + index * rowHeight;
  const above = view.top + (stickyHeight(scroller) + 8) - top;
  const below = top + rowHeight - (view.bottom - 96);
  if (above > 0) scroller.scrollTop -= above;
  else if (below > 0) scroller.scrollTop += below;
}

function stickyHeight(scroller: HTMLElement): number {
  const sticky = scroller.querySelector<HTMLElement>(".timeline");
  return sticky && getComputedStyle(sticky).position === "sticky" ? sticky.offsetHeight : 0;
}

interface RowProps {
  id: string;
  block: Block;
  project: Project | undefined;
  index: number;
  count: number;
  selected: boolean;
  active: boolean;
  onClick: (event: MouseEvent) => void;
  onOpen: () => void;
}

function Row({ id, block, project, index, count, selected, active, onClick, onOpen }: RowProps) {
  const { domain, app, title, idle } = block;
  return (
    <div
      id={id}
      role="option"
      class={`block${idle ? " idle" : ""}${active ? " active" : ""}`}
      aria-selected={selected}
      aria-posinset={index + 1}
      aria-setsize={count}
      style={{ transform: `translateY(${index * rowHeight}px)` }}
      onClick={onClick}
      onDblClick={onOpen}
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
        <span class="block-what quiet">Inactif</span>
      ) : (
        <span class={project ? "block-what" : "block-what wide"} title={title ? clip(title, 500) : undefined}>
          <b>
            <Foreign text={domain ?? app} length={80} />
          </b>
          {domain && (
            <span class="quiet block-app">
              <Foreign text={app} length={40} />
            </span>
          )}
          {title && (
            <span class="block-title">
              <Foreign text={title} />
            </span>
          )}
        </span>
      )}
      {project && <ProjectName project={project} kind="project chip still" />}
      <span class="block-manual" title={block.manual ? "Assigné à la main" : undefined}>
        {block.manual && (
          <>
            <Icon name="person" />
            <span class="sr-only">Assigné à la main</span>
          </>
        )}
      </span>
    </div>
  );
}
