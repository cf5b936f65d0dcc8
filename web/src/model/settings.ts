import type { SettingRow } from "../bridge/routes";

type Limits = Pick<SettingRow, "smallest" | "largest">;

const plainNumber = new Intl.NumberFormat("fr-FR", { maximumFractionDigits: 2, useGrouping: false });

/** A stored value in units of `scale`, as a field shows it: "90" in minutes is "1,5". */
export function scaled(value: string, scale: number): string {
  return scale === 1 || !/^\d+$/.test(value) ? value : plainNumber.format(Number(value) / scale);
}

/** What is stored of the text of such a field; not a number when it is none. */
export function unscaled(text: string, scale: number): number {
  const form = scale === 1 ? /^\d{1,6}$/ : /^\d{1,6}([.,]\d{1,2})?$/;
  return form.test(text.trim()) ? Math.round(Number(text.trim().replace(",", ".")) * scale) : NaN;
}

/** What is wrong with the text as a value of the setting, in French; empty when nothing is. */
export function numberError({ smallest, largest }: Limits, text: string, scale = 1): string {
  const value = unscaled(text, scale);
  if (Number.isNaN(value)) return scale === 1 ? "Un nombre entier est attendu." : "Un nombre est attendu.";
  if (smallest !== null && value < smallest) return `${scaled(String(smallest), scale)} au moins.`;
  if (largest !== null && value > largest) return `${scaled(String(largest), scale)} au plus.`;
  return "";
}

/** The site that an entry of the excluded list names: also what was pasted as an address. */
export function readDomain(text: string): string | null {
  const host = text
    .trim()
    .toLowerCase()
    .replace(/^[a-z][a-z0-9+.-]*:\/\//, "")
    .replace(/^[^@/]*@/, "")
    .replace(/[/?#:].*$/, "")
    .replace(/^\*?\.+|\.+$/g, "")
    .replace(/^www\./, "");
  return /^[\p{L}\p{N}]([\p{L}\p{N}_-]*[\p{L}\p{N}])?(\.[\p{L}\p{N}]([\p{L}\p{N}_-]*[\p{L}\p{N}])?)*$/u.test(
    host,
  )
    ? host
    : null;
}

/** The list of texts that a setting holds as JSON; null, which counts as empty, when it holds anything else. */
export function readList(text: string): string[] | null {
  try {
    const value: unknown = JSON.parse(text);
    const whole = Array.isArray(value) && value.every((entry) => typeof entry === "string");
    return whole ? (value as string[]) : null;
  } catch {
    return null;
  }
}
