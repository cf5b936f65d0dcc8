import { useId, useState } from "preact/hooks";
import { useClient } from "../../client";
import { readDomain } from "../../model/settings";
import { Form } from "../../ui/dialog";
import { Icon } from "../../ui/icons";
import { Button } from "../../ui/parts";
import { useRoving } from "../../ui/roving";
import { Said } from "../../ui/said";
import { useTask } from "../../ui/task";
import { ExcludeDialog } from "../exclude/exclude_dialog";
import { Row } from "./fields";

interface Props {
  domains: readonly string[];
  /** What is wrong with the list that is stored; "" when nothing is. */
  problem: string;
  onSave: (domains: string[]) => Promise<void>;
}

/** The sites whose pages are never recorded. Of one that already was it is asked what becomes of that. */
export function DomainList({ domains, problem, onSave }: Props) {
  const client = useClient();
  const id = useId();
  const [text, setText] = useState("");
  const [asked, setAsked] = useState<string | null>(null);
  const { error, setError, run } = useTask();
  const add = () => {
    if (text.trim() === "") return;
    const domain = readDomain(text);
    if (domain === null) return setError("Un site s’écrit exemple.fr.");
    return run(async () => {
      const { spans, excluded } = await client.call("exclusions.preview", { site: domain });
      if (spans > 0) return setAsked(domain);
      if (!excluded) await client.call("exclusions.add", { site: domain, past: "keep" });
      setText("");
    });
  };
  return (
    <Row
      label="Sites exclus"
      htmlFor={id}
      help="Leur nom, leurs adresses et leurs titres ne sont jamais enregistrés, sous-domaines compris. Le temps compte pour le navigateur."
    >
      <Form class="with-unit" onSubmit={add}>
        <input
          id={id}
          class="input"
          placeholder="exemple.fr"
          maxLength={300}
          value={text}
          aria-invalid={error !== ""}
          aria-describedby={`${id}-help ${id}-error`}
          onInput={(event) => {
            setText(event.currentTarget.value);
            setError("");
          }}
        />
        <Button type="submit">Exclure</Button>
      </Form>
      <Said class="field-error" id={`${id}-error`} role="alert" text={error || problem} />
      {domains.length > 0 && (
        <Excluded
          domains={domains}
          onRemove={(domain) => run(() => onSave(domains.filter((other) => other !== domain)))}
        />
      )}
      {asked !== null && (
        <ExcludeDialog subject={{ site: asked }} onDone={() => setText("")} onClose={() => setAsked(null)} />
      )}
    </Row>
  );
}

function Excluded({ domains, onRemove }: { domains: readonly string[]; onRemove: (domain: string) => void }) {
  const list = useRoving<HTMLUListElement>("row");
  return (
    <ul role="list" class="chips" ref={list}>
      {domains.map((domain) => (
        <li key={domain}>
          <button
            type="button"
            class="chip on"
            aria-label={`Ne plus exclure ${domain}`}
            onClick={() => onRemove(domain)}
          >
            <bdi>{domain}</bdi>
            <Icon name="close" />
          </button>
        </li>
      ))}
    </ul>
  );
}
