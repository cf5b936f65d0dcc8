import type { DateRange, Day, Seconds } from "../../bridge/routes";
import { useAnswer } from "../../client";
import { clientOf, sameClient } from "../../model/clients";
import type { Filter } from "../../model/filter";
import type { Behind } from "../../model/period";
import { rangeName } from "../../model/range";
import { capitalize, clip, count, duration, longDay } from "../../model/time";
import { Dialog } from "../../ui/dialog";
import { Failure, Incomplete } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { ExcludeLink } from "../exclude/exclude_link";
import type { ViewProps } from "../props";

interface Props {
  range: DateRange;
  behind: Behind;
  onOpenDay: ViewProps["onOpenDay"];
  onClose: () => void;
}

/** The days behind a figure, each of which leads to its blocks. */
export function DaysDialog({ range, behind, onOpenDay, onClose }: Props) {
  const { from, to } = range;
  const { answer, error, reload } = useAnswer("period.days", { from, to, ...behind.activity });
  const filter = useWholeFilter(behind.filter);
  const { app, domain } = behind.activity;
  const subject = domain ? { site: domain } : app ? { app } : null;
  return (
    <Dialog title={capitalize(clip(behind.name, 80))} onClose={onClose}>
      <div class="dialog-body days-behind">
        {error && <Failure text={error} retry={reload} />}
        <Incomplete text={answer?.incomplete} />
        {answer && filter && (
          <>
            <p>
              <b>{duration(answer.duration)}</b> en {count(answer.days.length, "jour")}, {rangeName(range)}
            </p>
            {subject && <ExcludeLink subject={subject} />}
            <DayList days={answer.days} onOpen={(day) => onOpenDay(day, filter)} />
          </>
        )}
      </div>
    </Dialog>
  );
}

// A client's blocks are those of its projects; undefined until they are known.
function useWholeFilter(filter: Behind["filter"]): Partial<Filter> | undefined {
  const name = filter.client?.name;
  const { answer: projects } = useAnswer("projects.list", name === undefined ? null : {});
  if (name === undefined) return filter;
  return (
    projects && {
      ...filter,
      client: { name, projects: projects.filter((one) => sameClient(clientOf(one), name)).map(({ id }) => id) },
    }
  );
}

interface ListProps {
  days: readonly { date: Day; duration: Seconds }[];
  onOpen: (day: Day) => void;
}

/** Days in their order, each with a bar as long as its share of the longest. */
export function DayList({ days, onOpen }: ListProps) {
  const list = useRoving<HTMLUListElement>("column");
  const longest = Math.max(...days.map((day) => day.duration), 1);
  return (
    <ul role="list" ref={list}>
      {days.map((day) => (
        <li key={day.date}>
          <button type="button" class="share" onClick={() => onOpen(day.date)}>
            <span class="share-name">{capitalize(longDay(day.date))}</span>
            <b>{duration(day.duration)}</b>
            <span class="share-bar" aria-hidden="true">
              <span class="share-fill" style={{ width: `${(day.duration / longest) * 100}%` }} />
            </span>
          </button>
        </li>
      ))}
    </ul>
  );
}
