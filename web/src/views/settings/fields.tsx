import type { ComponentChildren } from "preact";
import { useEffect, useId, useRef, useState } from "preact/hooks";
import { errorText } from "../../client";
import { numberError, type NumberSetting, readDomain } from "../../model/settings";
import { Icon } from "../../ui/icons";

interface SectionProps {
  title: string;
  children: ComponentChildren;
}

export function Section({ title, children }: SectionProps) {
  return (
    <section class="settings-section">
      <h2>{title}</h2>
      <div class="settings-rows">{children}</div>
    </section>
  );
}

interface RowProps {
  label: ComponentChildren;
  help?: ComponentChildren;
  htmlFor?: string;
  /** Whose controls need more than half of the row. */
  wide?: boolean;
  children: ComponentChildren;
}

export function Row({ label, help, htmlFor, wide, children }: RowProps) {
  return (
    <div class={wide ? "settings-row wide" : "settings-row"}>
      <div class="settings-label">
        {htmlFor ? <label for={htmlFor}>{label}</label> : <span>{label}</span>}
        {help && <small id={htmlFor && `${htmlFor}-help`}>{help}</small>}
      </div>
      <div class="settings-control">{children}</div>
    </div>
  );
}

interface NumberFieldProps {
  label: string;
  help: ComponentChildren;
  unit: string;
  setting: NumberSetting;
  value: string;
  /** False when the user thought better of it. */
  onSave: (value: number) => Promise<boolean | void>;
}

/** Takes effect when the field is left or on Enter; Escape gives the old value back. */
export function NumberField({ label, help, unit, setting, value, onSave }: NumberFieldProps) {
  const id = useId();
  const [text, setText] = useState(value);
  const [error, setError] = useState("");
  const [saved, setSaved] = useState(false);
  useEffect(() => setText(value), [value]);

  // A question asked on Enter takes the focus away, which is no second answer.
  const saving = useRef(false);
  const commit = async () => {
    if (saving.current || text.trim() === value) return;
    const wrong = numberError(setting, text);
    setError(wrong);
    if (wrong) return;
    saving.current = true;
    try {
      if ((await onSave(Number(text))) === false) setText(value);
      else setSaved(true);
    } catch (failure) {
      setError(errorText(failure));
    }
    saving.current = false;
  };
  return (
    <Row label={label} help={help} htmlFor={id}>
      <span class="with-unit">
        <span class="saved" role="status">
          {saved && (
            <>
              <Icon name="check" />
              <span class="sr-only">Enregistré</span>
            </>
          )}
        </span>
        <input
          id={id}
          class="input number"
          inputMode="numeric"
          value={text}
          aria-invalid={error !== ""}
          aria-describedby={`${id}-help ${id}-error`}
          onInput={(event) => {
            setText(event.currentTarget.value);
            setError("");
            setSaved(false);
          }}
          onBlur={() => void commit()}
          onKeyDown={(event) => {
            if (event.key === "Enter") void commit();
            if (event.key === "Escape") {
              setText(value);
              setError("");
            }
          }}
        />
        <span class="unit">{unit}</span>
      </span>
      <span class="field-error" id={`${id}-error`} role="alert">
        {error}
      </span>
    </Row>
  );
}

interface SwitchProps {
  label: string;
  help?: ComponentChildren;
  on: boolean;
  onChange: (on: boolean) => void;
}

export function Switch({ label, help, on, onChange }: SwitchProps) {
  const id = useId();
  return (
    <Row label={label} help={help} htmlFor={id}>
      <input
        id={id}
        type="checkbox"
        role="switch"
        class="switch"
        checked={on}
        aria-describedby={help ? `${id}-help` : undefined}
        onChange={(event) => {
          const wanted = event.currentTarget.checked;
          // Shows what holds until the program has said yes.
          event.currentTarget.checked = on;
          onChange(wanted);
        }}
      />
    </Row>
  );
}

/** The sites whose pages are never recorded. */
export function DomainList({
  domains,
  onSave,
}: {
  domains: readonly string[];
  onSave: (domains: string[]) => Promise<void>;
}) {
  const id = useId();
  const [text, setText] = useState("");
  const [error, setError] = useState("");
  const add = async () => {
    if (text.trim() === "") return;
    const domain = readDomain(text);
    if (domain === null) return setError("Un site s’écrit exemple.fr.");
    try {
      if (!domains.includes(domain)) await onSave([...domains, domain]);
      setText("");
      setError("");
    } catch (failure) {
      setError(errorText(failure));
    }
  };
  return (
    <Row
      label="Sites exclus"
      htmlFor={id}
      help="Leur nom, leurs adresses et leurs titres ne sont jamais enregistrés, sous-domaines compris. Le temps compte pour le navigateur."
    >
      <form
        class="with-unit"
        noValidate
        onSubmit={(event) => {
          event.preventDefault();
          void add();
        }}
      >
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
        <button type="submit" class="button">
          Exclure
        </button>
      </form>
      <span class="field-error" id={`${id}-error`} role="alert">
        {error}
      </span>
      {domains.length > 0 && (
        <ul class="chips">
          {domains.map((domain) => (
            <li key={domain}>
              <button
                type="button"
                class="chip on"
                aria-label={`Ne plus exclure ${domain}`}
                onClick={() =>
                  void onSave(domains.filter((other) => other !== domain)).catch((failure) =>
                    setError(errorText(failure)),
                  )
                }
              >
                <bdi>{domain}</bdi>
                <Icon name="close" />
              </button>
            </li>
          ))}
        </ul>
      )}
    </Row>
  );
}
