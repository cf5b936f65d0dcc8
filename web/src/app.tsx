import { useEffect, useState } from "preact/hooks";
import type { Day, Status } from "./bridge/routes";
import { useAnswer } from "./client";
import { loadPlace, savePlace, type Place } from "./model/place";
import { addDays, dayOf } from "./model/time";
import { Guard } from "./ui/guard";
import { Header } from "./ui/header";
import { Icon } from "./ui/icons";
import { Button, Failure } from "./ui/parts";
import { useShortcuts } from "./ui/shortcuts";
import { StoreBanner, StoreNotice } from "./ui/store_banner";
import { type Notice, NoticeProvider, Toast, useSend } from "./ui/toast";
import type { ViewProps } from "./views/props";
import { viewOf, views } from "./views/registry";
import { ShortcutHelp } from "./views/shortcut_help";
import { Welcome } from "./views/welcome";

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
  const send = useSend();
  const status = useAnswer("status", {}, 3);
  const [place, setPlace] = useState(loadPlace);
  const [help, setHelp] = useState(false);
  const [welcome, setWelcome] = useState(false);
  const today = dayOf(status.answer?.now ?? Date.now() / 1000);
  const day = place.day !== null && place.day <= today ? place.day : today;

  const go = (to: Partial<Place>) => setPlace((old) => ({ ...old, ...to }));
  useEffect(() => savePlace(place), [place]);

  const onDay = (to: Day, view = place.view) => go({ view, day: to >= today ? null : to });
  const props: ViewProps = {
    status: status.answer,
    day,
    today,
    onDay,
    onOpenDay: (to) => onDay(to, "day"),
    onWelcome: () => setWelcome(true),
  };
  const { id, dated = 0, component: View } = viewOf(place.view);

  const togglePause = () => send(status.answer?.paused ? "tracker.resume" : "tracker.pause", {});
  useShortcuts({
    ...Object.fromEntries(views.map((view) => [view.key, () => go({ view: view.id })])),
    "?": () => setHelp(true),
    a: () => go({ day: null }),
    ArrowLeft: () => dated > 0 && onDay(addDays(day, -dated)),
    ArrowRight: () => dated > 0 && onDay(addDays(day, dated)),
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
        view={id}
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
        <main class="main" data-scroller tabIndex={-1} key={id}>
          {status.error && <Failure text={status.error} retry={status.reload} />}
          {status.answer && <Banners status={status.answer} />}
          <Guard>
            <View {...props} />
          </Guard>
        </main>
      </div>
      {help && <ShortcutHelp onClose={() => setHelp(false)} />}
    </div>
  );
}

interface SidebarProps {
  view: string;
  version: string | undefined;
  onView: (view: string) => void;
  onHelp: () => void;
}

function Sidebar({ view, version, onView, onHelp }: SidebarProps) {
  return (
    <nav class="side" aria-label="Vues">
      <p class="brand">
        <svg viewBox="0 0 20 20" aria-hidden="true">
          <circle cx="10" cy="10" r="8" />
          <path d="M10 5.5V10l3 2" />
        </svg>
        <span>Orvanta</span>
      </p>
      <ul>
        {views.map(({ id, title, icon, key }) => (
          <li key={id}>
            <button
              type="button"
              class="nav"
              data-view={id}
              aria-current={view === id ? "page" : undefined}
              aria-keyshortcuts={key.toUpperCase()}
              title={`${title} (${key.toUpperCase()})`}
              onClick={() => onView(id)}
            >
              <Icon name={icon} />
              <span>{title}</span>
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
  const send = useSend();
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
          <Button kind="small" onClick={() => send("permissions.requestAccessibility", {})}>
            Autoriser la lecture des titres
          </Button>
        </div>
      )}
      {update && (
        <div class="banner">
          <p>Orvanta {update.version} est disponible.</p>
          <Button kind="small" onClick={() => send("openURL", { url: update.url })}>
            <Icon name="external" />
            Voir la nouvelle version
          </Button>
        </div>
      )}
    </>
  );
}
