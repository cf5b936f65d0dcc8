import type { Day, PendingRule, Status } from "../bridge/routes";

/** What every view gets: how the program is, the day chosen, and ways to elsewhere. */
export interface ViewProps {
  status: Status | undefined;
  day: Day;
  today: Day;
  /** What was learnt and waits for its answer. */
  pending: readonly PendingRule[];
  onDay: (day: Day) => void;
  onOpenDay: (day: Day) => void;
  onWelcome: () => void;
}
