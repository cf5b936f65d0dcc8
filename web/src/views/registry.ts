// The page's views, in the order of the sidebar. What the rest of the page knows of a view is its row.
import type { ComponentType } from "preact";
import type { IconName } from "../ui/icons";
import { DayView } from "./day/day";
import { HistoryView } from "./history/history";
import { PeriodView } from "./period/period";
import { ProjectsView } from "./projects/projects";
import type { ViewProps } from "./props";
import { RecapView } from "./recap";
import { RulesView } from "./rules/rules";
import { SettingsView } from "./settings/settings";
import { SheetView } from "./sheet/sheet";
import { WeekView } from "./week";

interface View {
  /** Under which the place where one was is remembered. */
  id: string;
  title: string;
  /** Leads there when it is pressed alone. */
  key: string;
  icon: IconName;
  /** How many days it shows, where it shows some; or those of the range. */
  dated?: 1 | 7 | "range";
  component: ComponentType<ViewProps>;
}

const today: View = { id: "day", title: "Jour", key: "j", icon: "day", dated: 1, component: DayView };

export const views: readonly View[] = [
  today,
  { id: "week", title: "Semaine", key: "s", icon: "week", dated: 7, component: WeekView },
  { id: "recap", title: "Bilan", key: "b", icon: "recap", dated: 7, component: RecapView },
  { id: "period", title: "Période", key: "e", icon: "period", dated: "range", component: PeriodView },
  { id: "sheet", title: "Feuille de temps", key: "f", icon: "sheet", dated: "range", component: SheetView },
  { id: "projects", title: "Projets", key: "p", icon: "projects", component: ProjectsView },
  { id: "rules", title: "Règles", key: "r", icon: "rules", component: RulesView },
  { id: "history", title: "Historique", key: "h", icon: "history", component: HistoryView },
  { id: "settings", title: "Réglages", key: "g", icon: "settings", component: SettingsView },
];

/** The view of that name, or else the day. */
export function viewOf(id: string): View {
  return views.find((view) => view.id === id) ?? today;
}
