import type { DateRange, Day, PendingRule, Status } from "../bridge/routes";
import type { Filter } from "../model/filter";

/** What every view gets: how the program is, the days chosen, and ways to elsewhere. */
export interface ViewProps {
  status: Status | undefined;
  day: Day;
  today: Day;
  range: DateRange;
  /** What was learnt and waits for its answer. */
  pending: readonly PendingRule[];
  onDay: (day: Day) => void;
  onRange: (range: DateRange) => void;
  /** Shows that day's blocks, all of them or those that the filter lets through. */
  onOpenDay: (day: Day, filter?: Partial<Filter>) => void;
  onWelcome: () => void;
}
