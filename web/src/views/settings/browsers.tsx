import type { ComponentChildren } from "preact";
import { useState } from "preact/hooks";
import type { BrowserState, Permissions } from "../../bridge/routes";
import { useAnswer, useClient } from "../../client";
import { typeset } from "../../model/time";
import { Copyable } from "../../ui/copy";
import { Icon } from "../../ui/icons";
import { Button } from "../../ui/parts";
import { useTask } from "../../ui/task";
import { useSend } from "../../ui/toast";
import { Row } from "./fields";
import { State } from "./state";

/** The browsers that run or are installed, each with the way to have its active tab read. */
export function BrowserRows() {
  const send = useSend();
  const [open, setOpen] = useState<string | null>(null);
  // While somebody follows the steps, each is ticked as soon as it is done.
  const { answer: browsers } = useAnswer("permissions.browsers", {}, open ? 1 : 5);
  const { answer: permissions } = useAnswer("permissions.status", {}, 10);
  if (!browsers || !permissions) return null;
  return (
    <>
      {browsers.length === 0 && (
        <Row label="Navigateurs" help="Ouvrez votre navigateur : il apparaîtra ici.">
          <p class="quiet sign">aucun n’a été trouvé</p>
        </Row>
      )}
      {browsers.map((browser) => (
        <Browser
          key={browser.bundle}
          browser={browser}
          tried={permissions.browsers[browser.bundle]}
          open={open === browser.bundle}
          onOpen={(wanted) => setOpen(wanted ? browser.bundle : null)}
        />
      ))}
      <Row
        label="Aide sur les navigateurs"
        help="Comment ajouter l’extension à chacun, et ce qui ne fonctionne pas."
      >
        <Button onClick={() => send("permissions.openAutomation", {})}>Ouvrir l’aide</Button>
      </Row>
    </>
  );
}

interface BrowserProps {
  browser: BrowserState;
  tried: Permissions["browsers"][string] | undefined;
  open: boolean;
  onOpen: (open: boolean) => void;
}

function Browser({ browser, tried, open, onOpen }: BrowserProps) {
  const client = useClient();
  const { busy, error, run } = useTask();
  const [said, setSaid] = useState("");
  const { bundle, name, steps, connected } = browser;
  const test = async () => {
    setSaid("");
    const { ok, error: why } = await client.call("permissions.testBrowser", { bundle });
    if (ok) return;
    setSaid(typeset(why || "L’onglet actif n’a pas pu être lu."));
    if (steps.length > 0 && browser.running) onOpen(true);
  };
  const connect = async () => {
    const { error: why } = await client.call("permissions.connectBrowser", { bundle });
    if (why) throw new Error(typeset(why));
    onOpen(true);
  };
  return (
    <>
      <Row label={name} help={(!connected && said) || typeset(browser.obstacle)} error={error}>
        <BrowserSign {...browser} tried={tried} />
        {(open || (steps.length > 0 && !connected)) && (
          <Button
            aria-expanded={open}
            aria-label={open ? `Masquer les étapes pour ${name}` : `Connecter ${name}`}
            onClick={() => (open ? onOpen(false) : run(connect))}
          >
            {open ? "Masquer" : "Connecter…"}
          </Button>
        )}
        <Button disabled={busy} aria-label={`Essayer ${name}`} onClick={() => run(test)}>
          {busy ? "Essai…" : "Essayer"}
        </Button>
        <div class="sr-only" role="status">
          {said && <p>{said}</p>}
        </div>
      </Row>
      {open && <ConnectSteps {...browser} />}
    </>
  );
}

function BrowserSign({ connected, running, obstacle, tried }: BrowserState & Pick<BrowserProps, "tried">) {
  if (connected) return <State good text="connecté" />;
  if (obstacle && tried !== "ok") return <State good={false} text="temps seul" />;
  if (!running) return <p class="quiet sign">fermé</p>;
  // By accessibility, or by an extension that has gone since.
  if (tried === "ok") return <State good text="lisible au dernier essai" />;
  return <p class="quiet sign">pas encore connecté</p>;
}

function ConnectSteps({ bundle, name, steps, connected }: BrowserState) {
  const client = useClient();
  const { busy, error, run } = useTask();
  const openPage = async (step: number) => {
    const { error: why } = await client.call("permissions.openBrowserPage", { bundle, step });
    if (why) throw new Error(typeset(why));
  };
  return (
    <section class="connect" aria-label={`Connecter ${name}`}>
      <ol role="list" class="connect-steps">
        {steps.map((step, index) => (
          <Step key={index} number={index + 1} done={step.done}>
            <p>{typeset(step.text)}</p>
            {step.copy && <Copyable text={step.copy} />}
            {step.button && (
              <Button kind="small" disabled={busy} onClick={() => run(() => openPage(index))}>
                <Icon name="external" />
                {typeset(step.button)}
              </Button>
            )}
          </Step>
        ))}
        <Step number={steps.length + 1} done={connected}>
          <p>L’extension se connecte : cette ligne se coche toute seule.</p>
        </Step>
      </ol>
      {error && (
        <p class="field-error" role="alert">
          {error}
        </p>
      )}
      <div role="status">{connected && <p class="connect-done">C’est fait : {name} est connecté.</p>}</div>
    </section>
  );
}

interface StepProps {
  number: number;
  done: boolean;
  children: ComponentChildren;
}

function Step({ number, done, children }: StepProps) {
  return (
    <li class={done ? "done" : ""}>
      <div class="step-mark">
        {done ? (
          <>
            <Icon name="check" />
            <p class="sr-only">Fait</p>
          </>
        ) : (
          <p>{number}</p>
        )}
      </div>
      <div class="step-body">{children}</div>
    </li>
  );
}
