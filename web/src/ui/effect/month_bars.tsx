import type { Effect } from "../../bridge/routes";
import { categoryClass } from "../../model/categories";
import { amount, categoryNets, filledMonths, type MonthTime, projectNets } from "../../model/effect";
import { monthName, monthShort } from "../../model/time";
import { projectColor } from "../icons";

const height = 30;
const step = 10;

/** How much moves in each month, in the colour of the project, or else the category, that it is about. */
export function EffectMonths({ effect }: { effect: Effect }) {
  return <MonthBars known={effect.months} caption="Temps qui change, par mois" {...colorOf(effect)} />;
}

interface Props {
  known: readonly MonthTime[];
  caption: string;
  cat?: string | undefined;
  color?: string | undefined;
}

/** Time by month, those without any included; a table for those who do not see it. */
export function MonthBars({ known, caption, cat, color }: Props) {
  const months = filledMonths(known);
  const [first, last] = [months[0], months[months.length - 1]];
  if (!first || !last) return null;
  const most = months.reduce((a, b) => (b.seconds > a.seconds ? b : a));
  const day = ({ month }: typeof first) => `${month}-01`;
  // A sliver is seen, too.
  const tall = (seconds: number) => (seconds > 0 ? Math.max((seconds / most.seconds) * height, 1.5) : 0);
  // Bars do not grow with the room that there is; a few are too narrow a ground for three labels.
  const width = `${months.length * 1.6}rem`;
  const wide = months.length >= 14;
  const gap = months.length > 60 ? 1.5 : 3;
  return (
    <div class={wide ? "month-bars wide" : "month-bars"} style={wide ? { maxWidth: width } : undefined}>
      <svg
        viewBox={`0 0 ${months.length * step} ${height}`}
        preserveAspectRatio="none"
        aria-hidden="true"
        class={cat}
        style={{ color, maxWidth: width }}
      >
        {months.map((month, index) => (
          <rect
            key={month.month}
            x={index * step + gap / 2}
            y={height - tall(month.seconds)}
            width={step - gap}
            height={tall(month.seconds)}
          >
            <title>{`${monthName(day(month))}\u00a0: ${amount(month.seconds)}`}</title>
          </rect>
        ))}
      </svg>
      <p class="quiet" aria-hidden="true">
        <span>{monthShort(day(first))}</span>
        {!wide && months.length > 1 && "–"}
        {wide && (
          <span class="month-most">{`au plus ${amount(most.seconds)}, ${monthShort(day(most))}`}</span>
        )}
        {months.length > 1 && <span>{monthShort(day(last))}</span>}
      </p>
      <table class="sr-only">
        <caption>{caption}</caption>
        <tbody>
          {known.map((month) => (
            <tr key={month.month}>
              <th scope="row">{monthName(day(month))}</th>
              <td>{amount(month.seconds)}</td>
            </tr>
          ))}
        </tbody>
      </table>
    </div>
  );
}

function colorOf(effect: Effect): { cat?: string; color?: string } {
  const [project] = projectNets(effect).sort((a, b) => Math.abs(b.seconds) - Math.abs(a.seconds));
  if (project) return { color: projectColor(project.color ?? null) };
  return { cat: categoryClass(categoryNets(effect)[0]?.key ?? "nonclasse") };
}
