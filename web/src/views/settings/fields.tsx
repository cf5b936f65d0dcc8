import type { ComponentChildren } from "preact";
import { useId, useLayoutEffect, useState } from "preact/hooks";
import type { SettingRow, Settings } from "../../bridge/routes";
import { useClient } from "../../client";
import { numberError, scaled, unscaled } from "../../model/settings";
import { Icon } from "../../ui/icons";
import { Said } from "../../ui/said";
import { useTask } from "../../ui/task";

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
  /** What went wrong with them. */
  error?: string;
  children: ComponentChildren;
}

export function Row({ label, help, htmlFor, wide, error, children }: RowProps) {
  return (
    <div class={wide ? "settings-row wide" : "settings-row"}>
      <div class="settings-label">
        {htmlFor ? <label for={htmlFor}>{label}</label> : <p>{label}</p>}
        {help && <small id={htmlFor && `${htmlFor}-help`}>{help}</small>}
      </div>
      <div class="settings-control">
        {children}
        {error !== undefined && (
          <Said class="field-error" id={htmlFor && `${htmlFor}-error`} role="alert" text={error} />
        )}
      </div>
    </div>
  );
}

/** What shows some of the settings, and what the program says of each. */
export interface SettingsProps {
  /** The program notes excluded applications once there was one. */
  settings: Settings & { excluded_apps?: string };
  rows: readonly SettingRow[];
}

interface NumberFieldProps extends SettingsProps {
  setting: keyof Settings;
  label: string;
  help: ComponentChildren;
  unit: string;
  /** How many of what is stored the unit is. */
  scale?: number;
  /** Asked before it is stored; false when the user thought better of it. */
  allow?: (value: number) => Promise<boolean>;
}

/** Takes effect when the field is left or on Enter; Escape gives the old value back. */
export function NumberField({ setting, label, help, unit, scale = 1, settings, rows, allow }: NumberFieldProps) {
  const client = useClient();
  const id = useId();
  const value = scaled(settings[setting], scale);
  const row = rows.find(({ key }) => key === setting);
  const [text, setText] = useState(value);
  const [saved, setSaved] = useState(false);
  const [hint, setHint] = useState("");
  const { busy, error, setError, run } = useTask();
  useLayoutEffect(() => setText(value), [value]);
  const change = (next: string) => {
    setText(next);
    setError("");
    setSaved(false);
    setHint("");
  };

  const commit = () => {
    // A question asked on Enter takes the focus away, which is no second answer.
    if (busy || text.trim() === value) return;
    const wrong = row ? numberError(row, text, scale) : "";
    if (wrong) return setError(wrong);
    run(async () => {
      const number = unscaled(text, scale);
      if (allow && !(await allow(number))) return setText(value);
      const { read_as = {} } = await client.call("settings.set", { [setting]: number });
      setSaved(true);
      if (setting in read_as) setHint(`Sera lu comme ${scaled(String(read_as[setting]), scale)} ${unit}.`);
    });
  };
  return (
    <Row label={label} help={help} htmlFor={id} error={error || hint}>
      <div class="with-unit">
        <Said class="saved" text={saved && "Enregistré"}>
          <Icon name="check" />
          <span class="sr-only">Enregistré</span>
        </Said>
        <input
          id={id}
          class="input number"
          inputMode={scale === 1 ? "numeric" : "decimal"}
          placeholder={row && scaled(row.default, scale)}
          value={text}
          aria-invalid={error !== ""}
          aria-describedby={`${id}-help ${id}-error`}
          onInput={(event) => change(event.currentTarget.value)}
          onBlur={commit}
          onKeyDown={(event) => {
            if (event.key === "Escape") change(value);
            if (event.key !== "Enter") return;
            event.preventDefault(); // of a question that it asks it is no answer
            commit();
          }}
        />
        <p class="unit">{unit}</p>
      </div>
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
