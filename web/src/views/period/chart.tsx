import type { DateRange, PeriodBucket, PeriodPart, PeriodReport } from "../../bridge/routes";
import { type Behind, behindPart, bucketLabel, bucketName, inOrder, partClass, partName } from "../../model/period";
import { scaleOf } from "../../model/scale";
import { duration } from "../../model/time";
import { ChartTable } from "../../ui/category_table";
import { projectColor } from "../../ui/icons";
import { Foreign } from "../../ui/parts";
import { useRoving } from "../../ui/roving";

interface Props {
  report: PeriodReport;
  today: string;
  /** Of a bar: the days that it stands for. */
  onRange: (range: DateRange) => void;
  onBehind: (behind: Behind) => void;
}

/** Stacked bars of days, weeks or months; each leads to its days. */
export function Chart({ report: told, today, onRange, onBehind }: Props) {
  const report = inOrder(told);
  const { buckets, groups, by, group } = report;
  const list = useRoving<HTMLOListElement>("row");
  const { top, lines } = scaleOf(buckets.map((bucket) => bucket.active));
  const names = groups.map((part) => partName(group, part));
  return (
    <section class="period-chart" aria-label="Temps actif au fil de la période">
      <div class="period-plot">
        <div class="week-grid" aria-hidden="true">
          {lines.map((hours) => (
            <span key={hours} style={{ bottom: `${((hours * 3600) / top) * 100}%` }}>
              {hours} h
            </span>
          ))}
        </div>
        <ol role="list" ref={list}>
          {buckets.map((bucket) => (
            <li key={bucket.from}>
              <Bar
                {...{ bucket, report, top, names }}
                disabled={bucket.from > today}
                onClick={() => onRange({ from: bucket.from, to: bucket.to })}
              />
            </li>
          ))}
        </ol>
        <Axis buckets={buckets} by={by} />
      </div>
      <Legend {...{ report, names, onBehind }} />
      <ChartTable
        caption="Temps actif au fil de la période"
        head="Période"
        columns={["Actif", ...names]}
        rows={buckets.map((bucket) => ({
          name: bucketName(bucket, by),
          cells: [bucket.active, ...bucket.parts].map(duration),
        }))}
      />
    </section>
  );
}

// A project's own colour; of anything else the style sheet knows it.
function paint(part: PeriodPart) {
  return part.color === null ? {} : { "--cat": projectColor(part.color) };
}

interface BarProps {
  bucket: PeriodBucket;
  report: PeriodReport;
  top: number;
  names: readonly string[];
  disabled: boolean;
  onClick: () => void;
}

function Bar({ bucket, report: { by, group, groups }, top, names, disabled, onClick }: BarProps) {
  const label = `${bucketName(bucket, by)}, ${duration(bucket.active)}`;
  return (
    <button type="button" class="period-bar" aria-label={label} title={label} {...{ disabled, onClick }}>
      {groups.map((part, index) => {
        const seconds = bucket.parts[index] ?? 0;
        return (
          seconds > 0 && (
            <span
              key={index}
              class={`fill ${partClass(group, part, index)}`}
              title={`${names[index]} ${duration(seconds)}`}
              style={{ ...paint(part), "--part": `${(seconds / top) * 100}%` }}
            />
          )
        );
      })}
    </button>
  );
}

const labelled = 10;

/** Some of the bars' dates: of so many as fit, every third stays where there is little room. */
function Axis({ buckets, by }: Pick<PeriodReport, "buckets" | "by">) {
  const step = Math.ceil(buckets.length / labelled);
  return (
    <div class="period-axis" aria-hidden="true">
      {buckets.map(
        (bucket, index) =>
          index % step === 0 && (
            <span
              key={bucket.from}
              class={index % (3 * step) === 0 ? "major" : ""}
              style={{ left: `${((index + 0.5) / buckets.length) * 100}%` }}
            >
              {bucketLabel(bucket, by)}
            </span>
          ),
      )}
    </div>
  );
}

interface LegendProps {
  report: PeriodReport;
  names: readonly string[];
  onBehind: (behind: Behind) => void;
}

function Legend({ report: { group, groups }, names, onBehind }: LegendProps) {
  const list = useRoving<HTMLUListElement>("row");
  return (
    <ul role="list" class="legend" ref={list}>
      {groups.map((part, index) => {
        const behind = behindPart(group, part);
        const content = (
          <>
            <span class={`dot fill ${partClass(group, part, index)}`} style={paint(part)} aria-hidden="true" />
            <Foreign text={names[index] ?? ""} length={40} />
            <b>{duration(part.duration)}</b>
          </>
        );
        return (
          <li key={index}>
            {behind ? (
              <button type="button" class="chip" aria-haspopup="dialog" onClick={() => onBehind(behind)}>
                {content}
              </button>
            ) : (
              <span class="chip still">{content}</span>
            )}
          </li>
        );
      })}
    </ul>
  );
}
