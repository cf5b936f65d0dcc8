// What a change does to the past: who gains and loses how much, when, and of what.
import type { ComponentChildren } from "preact";
import type { Effect, Move } from "../../bridge/routes";
import { amount, categoryNets, type Net, projectNets, signed, sinceWhen } from "../../model/effect";
import { plainDomain, typeset } from "../../model/time";
import { CategoryMark, CategoryName, Icon, ProjectDot } from "../icons";
import { Foreign, ProjectName } from "../parts";
import { EffectMonths } from "./month_bars";

// Beside each other in two columns, under each other what fits in three lines.
const shown = 3;

interface Props {
  effect: Effect;
  /** What is said where nothing changes. */
  none?: ComponentChildren;
}

export function EffectStrip({ effect, none = "Rien ne change dans le passé." }: Props) {
  if (effect.spans === 0 && !effect.incomplete)
    return (
      <p class="effect-none quiet">
        <Icon name="check" />
        {none}
      </p>
    );
  return (
    <>
      <p class="effect-sum">
        <b>{amount(effect.seconds)}</b> <span>du passé changent, {sinceWhen(effect)}</span>
      </p>
      {effect.incomplete && (
        <p class="effect-part">
          <Icon name="warning" />
          {typeset(effect.incomplete)}
        </p>
      )}
      <div class="effect-nets">
        <Nets title="Projets" nets={projectNets(effect)} same="inchangés" />
        <Nets title="Catégories" nets={categoryNets(effect)} same="inchangées" />
      </div>
      <EffectMonths effect={effect} />
      <details class="effect-more">
        <summary>
          <Icon name="right" />
          Ce qui change le plus
        </summary>
        <Moves effect={effect} />
        <Examples effect={effect} />
      </details>
    </>
  );
}

function Nets({ title, nets, same }: { title: string; nets: readonly Net[]; same: string }) {
  const rest = nets.length > shown ? nets.slice(shown - 1) : [];
  const listed = nets.slice(0, nets.length - rest.length);
  return (
    <div>
      <p class="quiet">{title}</p>
      {nets.length === 0 && <p class="quiet">{same}</p>}
      {nets.length > 0 && (
        <ul role="list">
          {listed.map((net) => (
            <li key={net.key}>
              <b>{signed(net.seconds)}</b>
              <NetName net={net} />
            </li>
          ))}
          {rest.length > 0 && (
            <li class="quiet">
              <span>{`et ${rest.length} autres`}</span>
            </li>
          )}
        </ul>
      )}
    </div>
  );
}

export function NetName({ net: { key, name, color } }: { net: Net }) {
  return (
    <span class="net-name">
      {color === undefined ? <CategoryMark cat={key} /> : <ProjectDot color={color} />}
      <Foreign text={name} length={60} />
    </span>
  );
}

function Moves({ effect }: { effect: Effect }) {
  if (effect.moves.length === 0) return null;
  return (
    <ul role="list" aria-label="D’où vers où">
      {effect.moves.map((move, index) => (
        <li key={index}>
          <Becomes move={move} projects={effect.projects} />
          <b>{amount(move.seconds)}</b>
        </li>
      ))}
    </ul>
  );
}

// Only what differs.
function Becomes({ move, projects }: { move: Move; projects: Effect["projects"] }) {
  const project = (id: number | null) => {
    const known = projects.find((one) => one.id === id);
    if (known) return <ProjectName project={known} />;
    return <span class="quiet">{id === null ? "sans projet" : "autre projet"}</span>;
  };
  return (
    <span class="becomes">
      {move.from_category !== move.to_category && (
        <span>
          <MovedCategory cat={move.from_category} />
          <Arrow />
          <MovedCategory cat={move.to_category} />
        </span>
      )}
      {move.from_project !== move.to_project && (
        <span>
          {project(move.from_project)}
          <Arrow />
          {project(move.to_project)}
        </span>
      )}
    </span>
  );
}

function MovedCategory({ cat }: { cat: string | null }) {
  return cat === null ? <span class="quiet">effacé</span> : <CategoryName cat={cat} />;
}

function Arrow() {
  return (
    <>
      <span aria-hidden="true">→</span>
      <span class="sr-only">devient</span>
    </>
  );
}

function Examples({ effect }: { effect: Effect }) {
  if (effect.examples.length === 0) return null;
  return (
    <ul role="list" aria-label="Exemples" class="effect-examples">
      {effect.examples.map(({ text, field, title, seconds }, index) => (
        <li key={index}>
          <span>
            <Foreign text={field === "domain" ? plainDomain(text) : text} length={60} />
            {title && (
              <span class="quiet">
                <Foreign text={title} length={120} />
              </span>
            )}
          </span>
          <b>{amount(seconds)}</b>
        </li>
      ))}
    </ul>
  );
}
