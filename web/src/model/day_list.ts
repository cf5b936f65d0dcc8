// The rows of the day's list: its blocks in the order in which they are read, runs of one project under
// a heading each.
import type { Block, DayReport, Seconds, UnixTime } from "../bridge/routes";

/** A run of one project: from its first block to its last, with what came between them. */
export interface Session {
  pid: number;
  start: UnixTime;
  end: UnixTime;
  /** Of the project's own blocks. */
  duration: Seconds;
  blocks: readonly Block[];
}

export type Row = { session: Session; block?: undefined } | { session: Session | null; block: Block };

export interface DayList {
  /** As they are listed. */
  blocks: readonly Block[];
  rows: readonly Row[];
  /** Of each of the blocks: which row it is. */
  places: readonly number[];
}

/** A longer time at other things makes it another session. */
const longestBreak = 15 * 60;

/**
 * The sessions of the projects that are `known`, of two blocks or more; `blocks` in start order. Another
 * project's block or time away ends one.
 */
export function sessions(blocks: readonly Block[], known: ReadonlySet<number>): Map<Block, Session> {
  const found = new Map<Block, Session>();
  const projectOf = ({ pid }: Block) => (pid !== null && known.has(pid) ? pid : null);
  let run: Block[] = [];
  let between: Block[] = [];
  const close = () => {
    const [first] = run;
    const own = run.filter((block) => block.pid === first?.pid);
    if (first && first.pid !== null && own.length > 1) {
      const session: Session = {
        pid: first.pid,
        start: first.start,
        end: own[own.length - 1]!.end,
        duration: own.reduce((sum, block) => sum + block.duration, 0),
        blocks: own,
      };
      for (const block of run) found.set(block, session);
    }
    run = [];
    between = [];
  };
  for (const block of blocks) {
    const pid = projectOf(block);
    const last = run[run.length - 1];
    if (block.idle || (pid !== null && last && (pid !== last.pid || block.start - last.end > longestBreak)))
      close();
    if (block.idle) continue;
    if (pid !== null) {
      run.push(...between, block);
      between = [];
    } else if (run.length > 0) between.push(block);
  }
  close();
  return found;
}

/** The rows of these blocks, which are in start order; `runs` gives some of them a heading. */
export function dayList(
  blocks: readonly Block[],
  runs: ReadonlyMap<Block, Session>,
  newestFirst: boolean,
): DayList {
  const ordered = newestFirst ? [...blocks].reverse() : blocks;
  const rows: Row[] = [];
  const places: number[] = [];
  let open: Session | null = null;
  for (const block of ordered) {
    const session: Session | null = runs.get(block) ?? null;
    if (session && session !== open) rows.push({ session });
    open = session;
    places.push(rows.length);
    rows.push({ session, block });
  }
  return { blocks: ordered, rows, places };
}

/** The blocks without the time away before the first activity and after the last: no part of the day. */
export function withinDay({ blocks, first, last }: Pick<DayReport, "blocks" | "first" | "last">): Block[] {
  return blocks.filter(
    ({ idle, start, end }) => !idle || first === null || last === null || (end > first && start < last),
  );
}

/** What of an activity that a range holds is no part of the `whole` blocks that it touches. */
export function leftOut(
  time: Seconds,
  whole: readonly Block[],
  range: { start: UnixTime; end: UnixTime },
): Seconds {
  const inside = whole.map(({ start, end }) => Math.min(end, range.end) - Math.max(start, range.start));
  return Math.max(0, time - inside.reduce((sum, seconds) => sum + seconds, 0));
}
