import type { ComponentChildren, RefObject } from "preact";
import { useLayoutEffect, useRef, useState } from "preact/hooks";
import type { DateRange, Day, Status } from "./bridge/routes";
import { type Loaded, useAnswer } from "./client";
import { everything, saveFilter } from "./model/filter";
import { loadPlace, savePlace, type Place } from "./model/place";
import { current, rangeOf, stepped } from "./model/range";
import { addDays, dayOf } from "./model/time";
import { Guard } from "./ui/guard";
import { Header } from "./ui/header";
import { Icon } from "./ui/icons";
import { Button, Failure, titleId } from "./ui/parts";
import { useRegions } from "./ui/regions";
import { useRoving } from "./ui/roving";
import { Said } from "./ui/said";
import { useSearchKey } from "./ui/use_search_key";
import { useShortcuts } from "./ui/shortcuts";
import { useShownDay } from "./ui/shown_day";
import { StoreBanner, StoreNotice } from "./ui/store_banner";
import { type Notice, NoticeProvider, Toast, useSend } from "./ui/toast";
import { Guide } from "./views/guide";
import type { ViewProps } from "./views/props";
import { viewOf, views } from "./views/registry";
import { LearntPanel } from "./views/rules/pending_rules";
import { learntSentence, usePending } from "./views/rules/use_pending";
import { ShortcutHelp } from "./views/shortcut_help";
import { SearchDialog } from "./views/search/search_dialog";
import { Welcome } from "./views/welcome";

export function App() {
  const [notice, setNotice] = useState<Notice | null>(null);
  const [place, setPlace] = useState(loadPlace);
  const go = (to: Partial<Place>) => setPlace((old) => ({ ...old, ...to }));
  // Not after the next picture: the window may be closed before it.
  useLayoutEffect(() => savePlace(place), [place]);
  return (
    <NoticeProvider value={setNotice}>
      <Page place={place} go={go} />
      <Toast notice={notice} onClose={() => setNotice(null)} onHistory={() => go({ view: "history" })} />
    </NoticeProvider>
  );
}

interface PageProps {
  place: Place;
  go: (to: Partial<Place>) => void;
}

function Page({ place, go }: PageProps) {
  const send = useSend();
  const status = useAnswer("status", {}, 3);
  const { pending, shown: learnt, putOff } = usePending();
  const [over, setOver] = useState<Over>(null);
  useSearchKey(() => setOver("search"));
  const [welcome, setWelcome] = useState(false);
  const today = dayOf(status.answer?.now ?? Date.now() / 1000);
  const { step, back, shown, ...ways } = useWays(place, go, today);
  useShownDay(ways.onOpenDay);
  const props: ViewProps = {
    status: status.answer,
    today,
    pending,
    ...ways,
    onWelcome: () => setWelcome(true),
  };
  const { id, component: View } = viewOf(place.view);

  const welcoming = status.answer !== undefined && (!status.answer.onboarded || welcome);
  const [main, arrive] = useArrival(shown, welcoming);
  const toView = (view: string) => {
    arrive();
    go({ view });
  };
  useRegions();

  const togglePause = () => send(status.answer?.paused ? "tracker.resume" : "tracker.pause", {});
  useShortcuts({
    ...Object.fromEntries(views.map((view) => [view.key, () => toView(view.id)])),
    "?": () => setOver("keys"),
    F1: () => setOver("guide"),
    a: back,
    ArrowLeft: () => step(-1),
    ArrowRight: () => step(1),
    "Shift+P": togglePause,
  });

  if (status.answer && welcoming) {
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
      <Button kind="skip" onClick={() => main.current?.focus()}>
        Aller au contenu
      </Button>
      <Sidebar
        view={id}
        version={status.answer?.version}
        waiting={pending.length}
        onView={(view) => go({ view })}
        onSearch={() => setOver("search")}
        onHelp={() => setOver("keys")}
      />
      <div class="body">
        <Header status={status.answer} onToggle={togglePause} />
        <div class="store-news">
          <StoreBanner status={status.answer} />
          {/* Asked for anew when a trouble begins or ends: a repair has something to tell. */}
          <StoreNotice key={status.answer?.store?.state ?? "ok"} />
        </div>
        <div class="desk">
          <Main key={shown} main={main} status={status}>
            <View {...props} />
          </Main>
          {/* In the list of rules they are part of the view. */}
          {id !== "rules" && learnt.length > 0 && <LearntPanel pending={learnt} onLater={putOff} />}
        </div>
        <Said class="sr-only" text={learnt.length > 0 && learntSentence(learnt.length)} />
      </div>
      <OverPage over={over} onOpenDay={ways.onOpenDay} onClose={() => setOver(null)} />
    </div>
  );
}

/** The days that the views show, and the ways to others. */
function useWays(place: Place, go: PageProps["go"], today: Day) {
  const { dated = 0 } = viewOf(place.view);
  const day = place.day !== null && place.day <= today ? place.day : today;
  const month = rangeOf("month", today);
  const range = place.range !== null && place.range.from <= today ? place.range : month;
  const onDay = (to: Day, view = place.view) => go({ view, day: to >= today ? null : to });
  const onRange = (to: DateRange) => {
    if (to.from <= today) go({ range: to.from === month.from && to.to === month.to ? null : to });
  };
  // With a filter the day begins anew, also the one that is seen.
  const [opened, setOpened] = useState(0);
  const onOpenDay: ViewProps["onOpenDay"] = (to, filter) => {
    if (filter) {
      saveFilter({ ...everything, ...filter });
      setOpened(opened + 1);
    }
    onDay(to, "day");
  };
  const step = (direction: -1 | 1) => {
    if (dated === 0) return false;
    return dated === "range" ? onRange(stepped(range, direction)) : onDay(addDays(day, dated * direction));
  };
  const back = () => (dated === "range" ? onRange(current(range, today)) : go({ day: null }));
  const shown = `${viewOf(place.view).id} ${opened}`;
  return { day, range, shown, onDay, onRange, onOpenDay, step, back };
}

interface MainProps {
  main: RefObject<HTMLElement | null>;
  status: Loaded<Status>;
  children: ComponentChildren;
}

function Main({ main, status, children }: MainProps) {
  return (
    <main class="main" data-scroller data-region tabIndex={-1} ref={main} aria-labelledby={titleId}>
      {status.error && <Failure text={status.error} retry={status.reload} />}
      {status.answer && <Banners status={status.answer} />}
      <Guard>{children}</Guard>
    </main>
  );
}

/**
 * The view's place, and what is told before a key leads to it: the reading goes on at its start then, and
 * also where what had the focus went with the view before.
 */
function useArrival(view: string, welcoming: boolean): [RefObject<HTMLElement | null>, () => void] {
  const main = useRef<HTMLElement>(null);
  const [arrivals, setArrivals] = useState(0);
  const seen = useRef(0);
  useLayoutEffect(() => {
    if (arrivals > seen.current || document.activeElement === document.body)
      main.current?.focus({ preventScroll: true });
    seen.current = arrivals;
  }, [view, welcoming, arrivals]);
  return [main, () => setArrivals((count) => count + 1)];
}

interface SidebarProps {
  view: string;
  version: string | undefined;
  /** How many learnt rules nobody has confirmed. */
  waiting: number;
  onView: (view: string) => void;
  onSearch: () => void;
  onHelp: () => void;
}

function Sidebar({ view, version, waiting, onView, onSearch, onHelp }: SidebarProps) {
  const nav = useRoving<HTMLElement>("column");
  return (
    <nav class="side" aria-label="Vues" data-region ref={nav}>
      <p class="brand">
        <svg viewBox="0 0 20 20" aria-hidden="true">
          <circle cx="10" cy="10" r="8" />
          <path d="M10 5.5V10l3 2" />
        </svg>
        <span>Orvanta</span>
      </p>
      <ul role="list">
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
              {id === "rules" && waiting > 0 && (
                <b class="nav-count">
                  {waiting}
                  <span class="sr-only"> à confirmer</span>
                </b>
              )}
            </button>
          </li>
        ))}
      </ul>
      <div class="side-foot">
        <button type="button" class="nav" title="Retrouver (Ctrl+K)" aria-keyshortcuts="Control+K" onClick={onSearch}>
          <Icon name="search" />
          <span>Retrouver</span>
        </button>
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

/** The one thing that lies over the page. */
type Over = "search" | "keys" | "guide" | null;

interface OverProps {
  over: Over;
  onOpenDay: ViewProps["onOpenDay"];
  onClose: () => void;
}

function OverPage({ over, onOpenDay, onClose }: OverProps) {
  if (over === "search") return <SearchDialog {...{ onOpenDay, onClose }} />;
  if (over === "keys") return <ShortcutHelp onClose={onClose} />;
  return over === "guide" ? <Guide onClose={onClose} /> : null;
}
