// Rules that were learnt from assignments, each with what it does, until somebody says which are to stay.
import { useLayoutEffect, useState } from "preact/hooks";
import type { PendingRule } from "../../bridge/routes";
import { type Client, useClient } from "../../client";
import { amount } from "../../model/effect";
import { clip, count } from "../../model/time";
import { CategoryName, Icon } from "../../ui/icons";
import { EffectLine } from "../../ui/effect/effect_line";
import { FormError } from "../../ui/dialog";
import { Button, Foreign, ProjectName, Segmented } from "../../ui/parts";
import { useTask } from "../../ui/task";
import { useUndoable } from "../../ui/toast";
import { fieldLabel } from "./labels";

type Choice = PendingRule["advice"];

const choices: { value: Choice; label: string }[] = [
  { value: "keep", label: "Garder" },
  { value: "forget", label: "Oublier" },
];

interface Choosing {
  choiceOf: (rule: PendingRule) => Choice;
  choose: (rule: PendingRule, choice: Choice) => void;
  busy: boolean;
  error: string;
  apply: () => void;
}

// Beforehand each is what the program advises.
function useChoices(pending: readonly PendingRule[]): Choosing {
  const client = useClient();
  const undoable = useUndoable();
  const { busy, error, run } = useTask();
  const [chosen, setChosen] = useState<Record<number, Choice>>({});
  const choiceOf = ({ id, advice }: PendingRule) => chosen[id] ?? advice;
  const ids = (choice: Choice) => pending.filter((rule) => choiceOf(rule) === choice).map(({ id }) => id);
  const apply = () =>
    run(async () => {
      const [kept, forgotten] = [ids("keep"), ids("forget")];
      await undoable(
        () => answer(client, kept, forgotten),
        () => ({ text: outcome(kept.length, forgotten.length) }),
      );
    });
  return {
    choiceOf,
    choose: ({ id }, choice) => setChosen((old) => ({ ...old, [id]: choice })),
    busy,
    error,
    apply,
  };
}

async function answer(client: Client, kept: number[], forgotten: readonly number[]): Promise<void> {
  if (kept.length > 0) await client.call("rules.confirm", { ids: kept });
  for (const id of forgotten) await client.call("rules.delete", { id });
}

function outcome(kept: number, forgotten: number): string {
  const parts = [
    kept > 0 && count(kept, "règle gardée", "règles gardées"),
    forgotten > 0 && count(forgotten, "règle oubliée", "règles oubliées"),
  ];
  return `${parts.filter(Boolean).join(", ")}.`;
}

/** In the list of rules, above the others. */
export function PendingRules({ pending }: { pending: readonly PendingRule[] }) {
  const choosing = useChoices(pending);
  return (
    <section class="pending" aria-labelledby="pending-title">
      <h2 id="pending-title">
        À confirmer <span class="quiet">{pending.length}</span>
      </h2>
      <p class="quiet">Apprises de vos attributions, ces règles valent aussi pour le passé.</p>
      <Cards {...{ pending, choosing }} />
      <FormError text={choosing.error} />
      <div class="pending-foot">
        <Apply {...{ pending, choosing }} />
      </div>
    </section>
  );
}

interface PanelProps {
  pending: readonly PendingRule[];
  onLater: () => void;
}

/** Beside the page that goes on, until it is answered or put off. */
export function LearntPanel({ pending, onLater }: PanelProps) {
  const choosing = useChoices(pending);
  useLayoutEffect(() => backToPage, []);
  return (
    <aside class="learnt" aria-labelledby="learnt-title" data-region>
      <header>
        <h2 id="learnt-title">{count(pending.length, "règle apprise", "règles apprises")}</h2>
        <p class="quiet">
          {pending.length === 1 ? "Elle vaut" : "Elles valent"} aussi pour le passé. Que voulez-vous garder ?
        </p>
      </header>
      <div class="learnt-list" data-scroller tabIndex={-1}>
        <Cards {...{ pending, choosing }} />
      </div>
      <FormError text={choosing.error} />
      <footer>
        <Button kind="ghost" title="Elles restent dans Règles, à confirmer." onClick={onLater}>
          Plus tard
        </Button>
        <Apply {...{ pending, choosing }} />
      </footer>
    </aside>
  );
}

interface ListProps {
  pending: readonly PendingRule[];
  choosing: Choosing;
}

// What had the focus in the panel goes with it.
function backToPage(): void {
  if (!document.activeElement?.closest(".learnt")) return;
  const page = document.querySelector<HTMLElement>(".blocks") ?? document.querySelector<HTMLElement>("main");
  page?.focus({ preventScroll: true });
}

function Apply({ pending, choosing: { choiceOf, busy, apply } }: ListProps) {
  const kept = pending.filter((rule) => choiceOf(rule) === "keep").length;
  return (
    <>
      <p class="quiet">{`${kept} à garder, ${pending.length - kept} à oublier`}</p>
      {/* Not disabled meanwhile: it would lose the focus. */}
      <Button kind="primary" aria-disabled={busy} onClick={() => !busy && apply()}>
        Valider
      </Button>
    </>
  );
}

function Cards({ pending, choosing }: ListProps) {
  return (
    <ul role="list" class="pending-list">
      {pending.map((rule) => (
        <li key={rule.id} class={choosing.choiceOf(rule)}>
          <Card rule={rule} choosing={choosing} />
        </li>
      ))}
    </ul>
  );
}

function Card({ rule, choosing }: { rule: PendingRule; choosing: Choosing }) {
  const reason = reasonOf(rule);
  const color = rule.effect.projects.find(({ id }) => id === rule.project_id)?.color ?? null;
  return (
    <>
      <p class="pending-rule">
        <span class="quiet">{fieldLabel(rule.field)}</span>
        <b>
          <Foreign text={rule.pattern} length={80} />
        </b>
        <span class="pending-to">
          <span aria-hidden="true">→</span>
          <span class="sr-only">compte comme</span>
          {rule.category && <CategoryName cat={rule.category} />}
          {rule.project !== null && <ProjectName project={{ name: rule.project, color }} length={60} />}
        </span>
      </p>
      <Segmented
        legend={`${fieldLabel(rule.field)} ${clip(rule.pattern, 60)}`}
        small
        choices={choices}
        value={choosing.choiceOf(rule)}
        onChange={(choice) => choosing.choose(rule, choice)}
      />
      <div class="pending-effect">
        <EffectLine effect={rule.effect} />
        <p class="quiet">
          {reason && <Icon name="warning" />}
          <span>
            {`Apprise de ${amount(rule.taught)} attribuées à la main.`}
            {reason && ` ${reason}`}
          </span>
        </p>
      </div>
    </>
  );
}

function reasonOf({ because, field }: PendingRule): string {
  if (because === "more") return "Elle déplacerait plus que ce que vous avez attribué.";
  if (because !== "projects") return "";
  return field === "app"
    ? "Cette application est aussi dans d’autres projets."
    : "Ce site est aussi dans d’autres projets.";
}
