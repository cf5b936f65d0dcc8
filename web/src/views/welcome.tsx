import type { ComponentChildren } from "preact";
import { useEffect, useRef, useState } from "preact/hooks";
import { UnstoredError } from "../bridge/bridge";
import type { Status } from "../bridge/routes";
import { errorText, useAnswer, useClient } from "../client";
import { FormError } from "../ui/dialog";
import { useNotice } from "../ui/toast";
import { palette, ProjectFields } from "./projects/project_editor";
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
  const client = useClient();
  const notify = useNotice();
  const projects = useAnswer("projects.list", {});
  const [step, setStep] = useState(0);
  const [error, setError] = useState("");
  const [fields, setFields] = useState({
    name: "",
    color: palette[0]?.[0] ?? "#3b82f6",
    category: "travail",
    keywords: "",
  });
  const heading = useRef<HTMLHeadingElement>(null);
  useEffect(() => heading.current?.focus(), [step]);

  const finish = async (withProject: boolean) => {
    try {
      const name = fields.name.trim();
      if (withProject) {
        if (name === "") return setError("Donnez un nom au projet, ou passez cette étape.");
        await client.call("projects.save", { ...fields, name, keywords: fields.keywords.trim() });
      }
      await client.call("onboarding.done", {}).catch((failure: unknown) => {
        // Kept in memory until it can be stored: nobody is held here by a full disk.
        if (!(failure instanceof UnstoredError)) throw failure;
        notify({ text: failure.message, failed: true });
      });
      onDone();
    } catch (failure) {
      setError(errorText(failure));
    }
  };

  return (
    <main class="welcome" data-scroller>
      <div class="welcome-body">
        {banner}
        <div class="welcome-card">
          <ol class="steps" aria-label="Étapes">
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
          {step === 0 && (
            <>
              <h1 ref={heading} tabIndex={-1}>
                Bienvenue dans Orvanta
              </h1>
              <p class="lead">Où passe votre temps ? Orvanta le note pendant que vous travaillez.</p>
              <ul class="facts-list">
                <li>
                  <b>Ce qui est noté.</b> L’application devant vous, le titre de sa fenêtre, l’onglet du
                  navigateur, et les moments où vous n’êtes pas là. Ni frappes, ni captures d’écran, ni
                  contenu.
                </li>
                <li>
                  <b>Où c’est gardé.</b> Dans un seul fichier de cet ordinateur, lisible de vous seul. Rien ne
                  part ailleurs.
                  <code>{status.db}</code>
                </li>
                <li>
                  <b>Vous décidez.</b> Une pause d’un clic, des sites exclus, un mode sans titres ni adresses,
                  un export, et des règles que vous pouvez lire et changer.
                </li>
              </ul>
            </>
          )}
          {step === 1 && (
            <>
              <h1 ref={heading} tabIndex={-1}>
                Ce que ce bureau permet
              </h1>
              <p class="lead">Orvanta ne voit que ce que le bureau lui montre. Voici ce qu’il en est ici.</p>
              <div class="settings-rows">
                <DesktopRows />
                <BrowserRows />
              </div>
            </>
          )}
          {step === 2 && (
            <>
              <h1 ref={heading} tabIndex={-1}>
                Un premier projet
              </h1>
              <p class="lead">
                {(projects.answer ?? []).length > 0
                  ? "Vous en avez déjà. En voulez-vous un autre\u00a0?"
                  : "Un client, un cours, un chantier\u00a0: son temps se rassemble tout seul grâce aux mots-clés."}
              </p>
              <form
                class="form"
                id="first-project"
                noValidate
                onSubmit={(event) => {
                  event.preventDefault();
                  void finish(true);
                }}
              >
                <ProjectFields
                  {...fields}
                  onChange={(part) => {
                    setFields({ ...fields, ...part });
                    setError("");
                  }}
                />
              </form>
              <FormError text={error} />
            </>
          )}
          <footer class="dialog-foot">
            {step > 0 && (
              <button type="button" class="button" onClick={() => setStep(step - 1)}>
                Retour
              </button>
            )}
            <span class="spacer" />
            {step < 2 && (
              <button type="button" class="button primary" onClick={() => setStep(step + 1)}>
                Continuer
              </button>
            )}
            {step === 2 && (
              <>
                <button type="button" class="button" onClick={() => void finish(false)}>
                  Plus tard
                </button>
                <button type="submit" form="first-project" class="button primary">
                  Créer et commencer
                </button>
              </>
            )}
          </footer>
        </div>
      </div>
    </main>
  );
}
