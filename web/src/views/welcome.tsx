import type { ComponentChildren } from "preact";
import { useLayoutEffect, useRef, useState } from "preact/hooks";
import { UnstoredError } from "../bridge/bridge";
import type { Status } from "../bridge/routes";
import { errorText, useAnswer, useClient } from "../client";
import { Form, FormError } from "../ui/dialog";
import { Button } from "../ui/parts";
import { useTask } from "../ui/task";
import { useNotice } from "../ui/toast";
import { blankProject, type Fields, ProjectFields } from "./projects/project_editor";
import { BrowserRows } from "./settings/browsers";
import { Switch } from "./settings/fields";
import { useTakeIn } from "./settings/moving";
import { DesktopRows } from "./settings/permissions";

const steps = ["Ce qui est noté", "Ce bureau", "Un projet"];

interface Props {
  status: Status;
  /** What is wrong with the store. */
  banner: ComponentChildren;
  onDone: () => void;
}

/** The first opening: what is recorded, what this desktop allows, a first project. */
export function Welcome({ status, banner, onDone }: Props) {
  const [step, setStep] = useState(0);
  const [fields, setFields] = useState(blankProject(0));
  const launch = useLaunch(status.onboarded);
  const taking = useTakeIn(onDone);
  return (
    <main class="welcome" data-scroller>
      <div class="welcome-body">
        {banner}
        <div class="welcome-card">
          <ol role="list" class="steps" aria-label="Étapes">
            {steps.map((name, index) => (
              <li
                key={name}
                aria-current={index === step ? "step" : undefined}
                class={index < step ? "done" : ""}
              >
                <span>{index + 1}</span>
                {name}
              </li>
            ))}
          </ol>
          {step === 0 && <Recorded db={status.db} launch={launch} />}
          {step === 1 && <Desktop />}
          {step === 2 ? (
            <FirstProject
              fields={fields}
              onFields={(part) => setFields({ ...fields, ...part })}
              settle={launch.settle}
              onBack={() => setStep(1)}
              onDone={onDone}
            />
          ) : (
            <>
              <FormError text={taking.error} />
              <Foot onBack={step > 0 && (() => setStep(step - 1))}>
                {step === 0 && <Button onClick={taking.pick}>Reprendre d’un autre ordinateur…</Button>}
                {taking.dialog}
                <Button kind="primary" onClick={() => setStep(step + 1)}>
                  Continuer
                </Button>
              </Foot>
            </>
          )}
        </div>
      </div>
    </main>
  );
}

interface Launch {
  wanted: boolean;
  setWanted: (wanted: boolean) => void;
  /** Makes it so. */
  settle: () => Promise<void>;
}

// Whether Orvanta starts with the session: on unless the user says no, and as it is when the welcome is
// seen again. Nothing is written before the end.
function useLaunch(again: boolean): Launch {
  const client = useClient();
  const notify = useNotice();
  const { answer } = useAnswer("permissions.status", {});
  const [chosen, setWanted] = useState<boolean>();
  const present = answer?.launch_at_login ?? false;
  const wanted = chosen ?? (again ? present : true);
  const settle = async () => {
    if (wanted === present) return;
    // Nobody is held here by it: the settings offer it again.
    const why = await client.call("launchAtLogin", { enabled: wanted }).then(({ error }) => error, errorText);
    if (!why) return;
    notify({
      text: `Le lancement à l’ouverture de session n’a pas pu être changé\u00a0: ${why}`,
      failed: true,
    });
  };
  return { wanted, setWanted, settle };
}

// The reading starts here when a step is reached, unless there is something to fill in.
function Head({ title, lead, fills }: { title: string; lead: string; fills?: string }) {
  const heading = useRef<HTMLHeadingElement>(null);
  useLayoutEffect(() => {
    heading.current?.closest("main")?.scrollTo(0, 0);
    const field = fills && document.querySelector<HTMLElement>(`#${fills} input`);
    (field || heading.current)?.focus();
  }, []);
  return (
    <>
      <h1 id="welcome-title" ref={heading} tabIndex={-1}>
        {title}
      </h1>
      <p class="lead">{lead}</p>
    </>
  );
}

function Foot({ onBack, children }: { onBack: false | (() => void); children: ComponentChildren }) {
  return (
    <footer class="dialog-foot">
      {onBack && <Button onClick={onBack}>Retour</Button>}
      <span class="spacer" />
      {children}
    </footer>
  );
}

function Recorded({ db, launch }: { db: string; launch: Launch }) {
  return (
    <>
      <Head
        title="Bienvenue dans Orvanta"
        lead="Où passe votre temps ? Orvanta le note pendant que vous travaillez."
      />
      <ul role="list" class="facts-list">
        <li>
          <b>Ce qui est noté.</b> L’application devant vous, le titre de sa fenêtre, l’onglet du navigateur,
          et les moments où vous n’êtes pas là. Ni frappes, ni captures d’écran, ni contenu.
        </li>
        <li>
          <b>Où c’est gardé.</b> Dans un seul dossier de cet ordinateur, sauvegardes comprises, lisible de
          vous seul. Rien ne part ailleurs.
          <code>{db.replace(/[^/]*$/, "")}</code>
        </li>
        <li>
          <b>Vous décidez.</b> Une pause d’un clic, des sites exclus, un mode sans titres ni adresses, un
          export, et des règles que vous pouvez lire et changer.
        </li>
      </ul>
      <div class="settings-rows welcome-launch">
        <Switch
          label="Lancer Orvanta à l’ouverture de la session"
          help="Sans fenêtre, dans la zone de notification. Se change dans les réglages."
          on={launch.wanted}
          onChange={launch.setWanted}
        />
      </div>
    </>
  );
}

function Desktop() {
  return (
    <>
      <Head
        title="Ce que ce bureau permet"
        lead="Orvanta ne voit que ce que le bureau lui montre. Voici ce qu’il en est ici."
      />
      <div class="settings-rows">
        <DesktopRows />
        <BrowserRows />
      </div>
    </>
  );
}

interface FirstProjectProps {
  fields: Fields;
  onFields: (part: Partial<Fields>) => void;
  settle: () => Promise<void>;
  onBack: () => void;
  onDone: () => void;
}

function FirstProject({ fields, onFields, settle, onBack, onDone }: FirstProjectProps) {
  const client = useClient();
  const notify = useNotice();
  const { answer: projects = [] } = useAnswer("projects.list", {});
  const { error, setError, run } = useTask();
  const finish = async () => {
    await settle();
    await client.call("onboarding.done", {}).catch((failure: unknown) => {
      // Kept in memory until it can be stored: nobody is held here by a full disk.
      if (!(failure instanceof UnstoredError)) throw failure;
      notify({ text: failure.message, failed: true });
    });
    onDone();
  };
  const create = () => {
    const name = fields.name.trim();
    if (name === "") return setError("Donnez un nom au projet, ou passez cette étape.");
    return run(async () => {
      await client.call("projects.save", { ...fields, name, keywords: fields.keywords.trim() });
      await finish();
    });
  };
  return (
    <>
      <Head
        title="Un premier projet"
        fills="first-project"
        lead={
          projects.length > 0
            ? "Vous en avez déjà. En voulez-vous un autre\u00a0?"
            : "Un client, un cours, un chantier\u00a0: son temps se rassemble tout seul grâce aux mots-clés."
        }
      />
      <Form class="form" id="first-project" aria-labelledby="welcome-title" onSubmit={create}>
        <ProjectFields
          {...fields}
          onChange={(part) => {
            onFields(part);
            setError("");
          }}
        />
      </Form>
      <FormError text={error} />
      <Foot onBack={onBack}>
        <Button onClick={() => run(finish)}>Plus tard</Button>
        <Button type="submit" form="first-project" kind="primary">
          Créer et commencer
        </Button>
      </Foot>
    </>
  );
}
