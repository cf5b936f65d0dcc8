import { useEffect, useMemo, useState } from "preact/hooks";
import type { Day, Status } from "./bridge/routes";
import { useAnswer, useClient } from "./client";
import { loadPlace, savePlace, type Place, type ViewName } from "./model/place";
import { addDays, dayOf } from "./model/time";
import { Guard } from "./ui/guard";
import { Header } from "./ui/header";
import { Icon, type IconName } from "./ui/icons";
import { Failure } from "./ui/parts";
import { ShortcutHelp, useShortcuts } from "./ui/shortcuts";
import { StoreBanner, StoreNotice } from "./ui/store_banner";
import { type Notice, NoticeProvider, Toast, useAttempt } from "./ui/toast";
import { DayView } from "./views/day/day";
import { ProjectsView } from "./views/projects/projects";
import { RecapView } from "./views/recap";
import { RulesView } from "./views/rules/rules";
import { SettingsView } from "./views/settings/settings";
import { WeekView } from "./views/week";
import { Welcome } from "./views/welcome";

const views: { name: ViewName; label: string; icon: IconName; key: string }[] = [
  { name: "day", label: "Jour", icon: "day", key: "j" },
  { name: "week", label: "Semaine", icon: "week", key: "s" },
  { name: "recap", label: "Bilan", icon: "recap", key: "b" },
  { name: "projects", label: "Projets", icon: "projects", key: "p" },
  { name: "rules", label: "Règles", icon: "rules", key: "r" },
  { name: "settings", label: "Réglages", icon: "settings", key: "g" },
];

/** What a view of a period gets: the day chosen, and ways to another. */
export interface PeriodProps {
  day: Day;
  today: Day;
  onDay: (day: Day) => void;
  onOpenDay: (day: Day) => void;
}

export function App() {
  const [notice, setNotice] = useState<Notice | null>(null);
  return (
    <NoticeProvider value={setNotice}>
      <Page />
      <Toast notice={notice} onClose={() => setNotice(null)} />
    </NoticeProvider>
  );
}

function Page() {
  const client = useClient();
  const attempt = useAttempt();
  const status = useAnswer("status", {}, 3);
  const [place, setPlace] = useState(loadPlace);
  const [help, setHelp] = useState(false);
  const [welcome, setWelcome] = useState(false);
  const today = dayOf(status.answer?.now ?? Date.now() / 1000);
  const day = place.day !== null && place.day <= today ? place.day : today;

  const go = (to: Partial<Place>) => setPlace((old) => ({ ...old, ...to }));
  useEffect(() => savePlace(place), [place]);

  const onDay = (to: Day) => go({ day: to >= today ? null : to });
  const period: PeriodProps = useMemo(
    () => ({ day, today, onDay, onOpenDay: (to) => go({ view: "day", day: to >= today ? null : to }) }),
    [day, today],
  );

  const togglePause = () =>
    void attempt(() => client.call(status.answer?.paused ? "tracker.resume" : "tracker.pause", {}));
  const step = place.view === "day" ? 1 : 7;
  const dated = place.view === "day" || place.view === "week" || place.view === "recap";
  useShortcuts({
    ...Object.fromEntries(views.map(({ name, key }) => [key, () => go({ view: name })])),
    "?": () => setHelp(true),
    a: () => go({ day: null }),
    ArrowLeft: () => dated && onDay(addDays(day, -step)),
    ArrowRight: () => dated && onDay(addDays(day, step)),
    "Shift+P": togglePause,
  });

  if (status.answer && (!status.answer.onboarded || welcome)) {
    return (
      <Welcome
        status={status.answer}
        banner={<StoreBanner status={status.answer} />}
        onDone={() => setWelcome(false)}
      />
    );
  }
  return (
    <div class="shell">
      <Sidebar
        view={place.view}
        version={status.answer?.version}
        onView={(view) => go({ view })}
        onHelp={() => setHelp(true)}
      />
      <div class="body">
        <Header status={status.answer} onToggle={togglePause} />
        <div class="store-news">
          <StoreBanner status={status.answer} />
          {/* Asked for anew when a trouble begins or ends: a repair has something to tell. */}
          <StoreNotice key={status.answer?.store?.state ?? "ok"} />
        </div>
        <main class="main" data-scroller tabIndex={-1} key={place.view}>
          {status.error && <Failure text={status.error} retry={status.reload} />}
          {status.answer && <Banners status={status.answer} />}
          <Guard>
            {place.view === "day" && <DayView {...period} status={status.answer} />}
            {place.view === "week" && <WeekView {...period} />}
            {place.view === "recap" && <RecapView {...period} />}
            {place.view === "projects" && <ProjectsView />}
            {place.view === "rules" && <RulesView today={today} />}
            {place.view === "settings" && (
              <SettingsView status={status.answer} today={today} onWelcome={() => setWelcome(true)} />
            )}
          </Guard>
        </main>
      </div>
      {help && <ShortcutHelp onClose={() => setHelp(false)} />}
    </div>
  );
}

interface SidebarProps {
  view: ViewName;
  version: string | undefined;
  onView: (view: ViewName) => void;
  onHelp: () => void;
}

function Sidebar({ view, version, onView, onHelp }: SidebarProps) {
  return (
    <nav class="side" aria-label="Vues">
      <p class="brand">
        <svg viewBox="0 0 20 20" aria-hidden="true">
          <circle cx="10" cy="10" r="8" />
          <path d="M10 5.500V10l3 2" />
        </svg>
        <span>Orvanta</span>
      </p>
      <ul>
        {views.map(({ name, label, icon, key }) => (
          <li key={name}>
            <button
              type="button"
              class="nav"
              aria-current={view === name ? "page" : undefined}
              title={`${label} (${key.toUpperCase()})`}
              onClick={() => onView(name)}
            >
              <Icon name={icon} />
              <span>{label}</span>
            </button>
          </li>
        ))}
      </ul>
      <div class="side-foot">
        <button type="button" class="nav" title="Raccourcis clavier (?)" onClick={onHelp}>
          <Icon name="keyboard" />
          <span>Raccourcis</span>
        </button>
        {version && <p class="version">Version {version}</p>}
      </div>
    </nav>
  );
}

function Banners({ status }: { status: Status }) {
  const client = useClient();
  const attempt = useAttempt();
  const { update } = status;
  return (
    <>
      {!status.accessibility && (
        <div class="banner warn">
          <Icon name="warning" />
          <p>
            <b>Orvanta ne peut pas lire le titre des fenêtres sur ce bureau.</b> Le temps est compté par
            application seulement.
          </p>
          <button
            type="button"
            class="button small"
            onClick={() => void attempt(() => client.call("permissions.requestAccessibility", {}))}
          >
            Autoriser la lecture des titres
          </button>
        </div>
      )}
      {update && (
        <div class="banner">
          <p>Orvanta {update.version} est disponible.</p>
          <button
            type="button"
            class="button small"
            onClick={() => void attempt(() => client.call("openURL", { url: update.url }))}
          >
            <Icon name="external" />
            Voir la nouvelle version
          </button>
        </div>
      )}
    </>
  );
}
