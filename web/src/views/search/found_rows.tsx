import type { FoundDay } from "../../bridge/routes";
import type { Hit } from "../../model/search";
import { capitalize, clock, count, duration, longDay, plainDomain } from "../../model/time";
import { CategoryMark } from "../../ui/icons";
import { Foreign } from "../../ui/parts";

export const rowId = (index: number) => `found-${index}`;

interface Props {
  id: string;
  days: readonly FoundDay[];
  hits: readonly Hit[];
  /** Which of them the keyboard is at; -1 for none. */
  at: number;
  onPick: (index: number) => void;
  onOpen: (hit: Hit) => void;
}

/** The days, the newest first, each with its rows; the field has the focus all the time. */
export function FoundRows({ id, days, hits, at, onPick, onOpen }: Props) {
  const places = new Map(hits.map(({ row }, index) => [row, index]));
  return (
    <div id={id} class="found-days" role="listbox" aria-label="Jours">
      {days.map((day) => (
        <div key={day.date} role="group" aria-labelledby={`found-${day.date}`}>
          <p class="found-day" id={`found-${day.date}`}>
            <span>{capitalize(longDay(day.date))}</span>
            <b>{duration(day.duration)}</b>
          </p>
          {day.rows.map((row) => {
            const index = places.get(row) ?? -1;
            return (
              <div
                key={row.ids[0]}
                id={rowId(index)}
                class="found-row"
                role="option"
                aria-selected={index === at}
                onClick={() => onPick(index)}
                onDblClick={() => onOpen({ day, row })}
              >
                <span class="found-time">
                  {row.ids.length > 1 ? `${clock(row.start)} – ${clock(row.end)}` : clock(row.start)}
                </span>
                <CategoryMark cat={row.category} />
                <span class="found-what">
                  <Foreign text={row.title || plainDomain(row.domain || row.app)} length={160} />
                  {row.title && (
                    <small class="quiet">
                      <Foreign text={plainDomain(row.domain || row.app)} length={60} />
                    </small>
                  )}
                </span>
                <b>{duration(row.duration)}</b>
              </div>
            );
          })}
          {day.more > 0 && <p class="quiet found-more">et {count(day.more, "autre")} ce jour-là</p>}
        </div>
      ))}
    </div>
  );
}
