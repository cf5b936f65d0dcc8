import type { ProjectRow, Status } from "../bridge/routes";
import { useAnswer } from "../client";
import { until } from "../model/store";
import { clip, clock, duration } from "../model/time";
import { Icon } from "./icons";
import { Menu } from "./menu";
import { Button, Foreign, ProjectSelect } from "./parts";
import { useSend } from "./toast";

const lengths = [
  ["15m", "15 min"],
  ["1h", "1 heure"],
  ["demain", "Jusqu’à demain"],
  ["", "Sans fin"],
] as const;

function Now({ status }: { status: Status }) {
  const current = status.current;
  if (status.paused) {
    const end = status.paused_until;
    return (
      <p class="now paused">
        <span class="pulse" aria-hidden="true" />
        {end === undefined ? (
          <>
            <b>Suivi en pause</b>
            <span class="quiet">Rien n’est enregistré.</span>
          </>
        ) : (
          <b>
            <span class="hide-narrow">En pause </span>
            {until(end, status.now)}
          </b>
        )}
      </p>
    );
  }
  if (!current) {
    return (
      <p class="now">
        <span class="pulse on" aria-hidden="true" />
        <b>Suivi actif</b>
      </p>
    );
  }
  if (current.idle) {
    return (
      <p class="now idle">
        <span class="pulse" aria-hidden="true" />
        <b>Inactif depuis {duration(current.duration)}</b>
      </p>
    );
  }
  return (
    <p class="now">
      <span class="pulse on" aria-hidden="true" />
      <b>
        <Foreign text={current.app} length={60} />
      </b>
      {current.domain && (
        <span class="now-domain">
          <Foreign text={current.domain} length={80} />
        </span>
      )}
      <span class="now-time">{duration(current.duration)}</span>
      {current.title && (
        <span class="quiet now-title" title={clip(current.title, 500)}>
          <Foreign text={current.title} />
        </span>
      )}
    </p>
  );
}

function CurrentProject({ status }: { status: Status }) {
  const send = useSend();
  const projects = useAnswer("projects.list", {});
  const active = (projects.answer ?? []).filter(({ archived }: ProjectRow) => archived !== 1);
  const known = active.some(({ id }) => id === status.current_project);
  const since = status.current_project_since === null ? "" : `Depuis ${clock(status.current_project_since)}`;
  return (
    <label class="select-label">
      <span class="hide-narrow" aria-hidden="true">
        Je travaille sur
      </span>
      <ProjectSelect
        label="Je travaille sur"
        title={known ? since : "Les prochaines activités iront à ce projet."}
        none="Attribution automatique"
        projects={active}
        value={known ? status.current_project : null}
        onChange={(project_id) => send("tracker.project", { project_id })}
      />
    </label>
  );
}

function PauseButton({ status, onToggle }: { status: Status; onToggle: () => void }) {
  const send = useSend();
  return (
    <div class="button-group">
      <Button kind={status.paused ? "primary" : ""} title="Maj + P" onClick={onToggle}>
        <Icon name={status.paused ? "play" : "pause"} />
        {status.paused ? "Reprendre" : "Pause"}
      </Button>
      <Menu
        label="Durée de la pause"
        items={lengths}
        onPick={(length) => (length ? send("tracker.pauseFor", { length }) : send("tracker.pause", {}))}
      />
    </div>
  );
}

/** What is tracked now, and the two things that can be said about it at any time. */
export function Header({ status, onToggle }: { status: Status | undefined; onToggle: () => void }) {
  return (
    <header class="top" aria-label="Suivi" data-region>
      {status && (
        <>
          <Now status={status} />
          <CurrentProject status={status} />
          <PauseButton {...{ status, onToggle }} />
        </>
      )}
    </header>
  );
}
