import type { ByCategory } from "../bridge/routes";
import { categories, categoryLabel } from "../model/categories";
import { duration } from "../model/time";

interface Props {
  caption: string;
  /** What a row stands for: "Heure", "Jour". */
  head: string;
  rows: readonly { name: string; parts: ByCategory }[];
}

/** What a chart shows, for those who do not see it. */
export function CategoryTable({ caption, head, rows }: Props) {
  return (
    <div class="sr-only">
      <table>
        <caption>{caption}</caption>
        <thead>
          <tr>
            <th scope="col">{head}</th>
            {categories.map((cat) => (
              <th scope="col" key={cat}>
                {categoryLabel(cat)}
              </th>
            ))}
          </tr>
        </thead>
        <tbody>
          {rows.map(({ name, parts }, index) => (
            <tr key={index}>
              <th scope="row">{name}</th>
              {categories.map((cat) => (
                <td key={cat}>{duration(parts[cat] ?? 0)}</td>
              ))}
            </tr>
          ))}
        </tbody>
      </table>
    </div>
  );
}
