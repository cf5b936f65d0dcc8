import type { ByCategory } from "../bridge/routes";
import { categories, categoryLabel } from "../model/categories";
import { duration } from "../model/time";

interface TableProps {
  caption: string;
  /** What a row stands for: "Heure", "Jour". */
  head: string;
  columns: readonly string[];
  rows: readonly { name: string; cells: readonly string[] }[];
}

/** What a chart shows, for those who do not see it. */
export function ChartTable({ caption, head, columns, rows }: TableProps) {
  return (
    <div class="sr-only">
      <table>
        <caption>{caption}</caption>
        <thead>
          <tr>
            <th scope="col">{head}</th>
            {columns.map((name, index) => (
              <th scope="col" key={index}>
                <bdi>{name}</bdi>
              </th>
            ))}
          </tr>
        </thead>
        <tbody>
          {rows.map(({ name, cells }, index) => (
            <tr key={index}>
              <th scope="row">{name}</th>
              {cells.map((text, at) => (
                <td key={at}>{text}</td>
              ))}
            </tr>
          ))}
        </tbody>
      </table>
    </div>
  );
}

interface Props extends Pick<TableProps, "caption" | "head"> {
  rows: readonly { name: string; parts: ByCategory }[];
}

export function CategoryTable({ rows, ...rest }: Props) {
  return (
    <ChartTable
      {...rest}
      columns={categories.map(categoryLabel)}
      rows={rows.map(({ name, parts }) => ({
        name,
        cells: categories.map((cat) => duration(parts[cat] ?? 0)),
      }))}
    />
  );
}
