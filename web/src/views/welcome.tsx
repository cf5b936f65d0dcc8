import type { ComponentChildren } from "preact";
import { useEffect, useRef, useState } from "preact/hooks";
import { UnstoredError } from "../bridge/bridge";
import type { Status } from "../bridge/routes";
import { useAnswer, useClient } from "../client";
import { Form, FormError } from "../ui/dialog";
import { Button } from "../ui/parts";
import { useTask } from "../ui/task";
import { useNotice } from "../ui/toast";
import { blankProject, type Fields, ProjectFields } from "./projects/project_editor";
import { BrowserRows, DesktopRows } from "./settings/permissions";

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
          {step === 0 && <Recorded db={status.db} />}
          {step === 1 && <Desktop />}
          {step === 2 ? (
            <FirstProject
              fields={fields}
              onFields={(part) => setFields({ ...fields, ...part })}
              onBack={() => setStep(1)}
              onDone={onDone}
            />
          ) : (
            <Foot onBack={step > 0 && (() => setStep(step - 1))}>
              <Button kind="primary" onClick={() => setStep(step + 1)}>
                Continuer
              </Button>
            </Foot>
          )}
        </div>
      </div>
    </main>
  );
}

// The reading starts here when a step is reached.
function Head({ title, lead }: { title: string; lead: string }) {
  const heading = useRef<HTMLHeadingElement>(null);
  useEffect(() => heading.current?.focus(), []);
  return (
    <>
      <h1 ref={heading} tabIndex={-1}>
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

function Recorded({ db }: { db: string }) {
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
          <b>Où c’est gardé.</b> Dans un seul fichier de cet ordinateur, lisible de vous seul. Rien ne part
          ailleurs.
          <code>{db}</code>
        </li>
        <li>
          <b>Vous décidez.</b> Une pause d’un clic, des sites exclus, un mode sans titres ni adresses, un
          export, et des règles que vous pouvez lire et changer.
        </li>
      </ul>
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
  onBack: () => void;
  onDone: () => void;
}

function FirstProject({ fields, onFields, onBack, onDone }: FirstProjectProps) {
  const client = useClient();
  const notify = useNotice();
  const { answer: projects = [] } = useAnswer("projects.list", {});
  const { error, setError, run } = useTask();
  const finish = async () => {
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
    run(async () => {
      await client.call("projects.save", { ...fields, name, keywords: fields.keywords.trim() });
      await finish();
    });
  };
  return (
    <>
      <Head
        title="Un premier projet"
        lead={
          projects.length > 0
            ? "Vous en avez déjà. En voulez-vous un autre\u00a0?"
            : "Un client, un cours, un chantier\u00a0: son temps se rassemble tout seul grâce aux mots-clés."
        }
      />
      <Form class="form" id="first-project" onSubmit={create}>
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
