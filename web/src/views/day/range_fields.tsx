import { useLayoutEffect, useState } from "preact/hooks";
import type { Day } from "../../bridge/routes";
import { clock, instant, readClock } from "../../model/time";
import { Said } from "../../ui/said";
import type { Range } from "./drawing";

interface Props {
  day: Day;
  range: Range;
  onRange: (range: Range) => void;
}

/** A range by its clock times, to be read and to be typed. */
export function RangeFields({ day, range, onRange }: Props) {
  const [texts, setTexts] = useState({ start: clock(range.start), end: clock(range.end) });
  const [wrong, setWrong] = useState("");
  // Each on its own: leaving one field must not take back what is being typed in the other.
  useLayoutEffect(() => setTexts((old) => ({ ...old, start: clock(range.start) })), [range.start]);
  useLayoutEffect(() => setTexts((old) => ({ ...old, end: clock(range.end) })), [range.end]);

  // An end that was not typed over keeps its seconds.
  const read = (text: string, was: number) => {
    if (text === clock(was)) return was;
    const time = readClock(text);
    return time && instant(day, time.hours, time.minutes);
  };
  const commit = () => {
    const start = read(texts.start, range.start);
    const end = read(texts.end, range.end);
    if (start === null || end === null) setWrong("Une heure s’écrit 09:30.");
    else if (end <= start) setWrong("La fin doit suivre le début.");
    else {
      setWrong("");
      if (start !== range.start || end !== range.end) onRange({ start, end });
    }
  };
  const field = (name: "start" | "end", label: string) => (
    <input
      class="input clock"
      aria-label={label}
      inputMode="numeric"
      value={texts[name]}
      aria-invalid={wrong !== ""}
      onInput={(event) => setTexts({ ...texts, [name]: event.currentTarget.value })}
      onBlur={commit}
      onKeyDown={(event) => {
        if (event.key !== "Enter") return;
        event.preventDefault();
        commit();
      }}
    />
  );
  return (
    <div class="range-fields">
      <p>De</p>
      {field("start", "Début de la plage")}
      <p>à</p>
      {field("end", "Fin de la plage")}
      <Said class="field-error" role="alert" text={wrong} />
    </div>
  );
}
