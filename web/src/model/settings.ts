import type { SettingRow } from "../bridge/routes";

type Limits = Pick<SettingRow, "smallest" | "largest">;

/** What is wrong with the text as a value of the setting, in French; empty when nothing is. */
export function numberError({ smallest, largest }: Limits, text: string): string {
  if (!/^\d{1,6}$/.test(text.trim())) return "Un nombre entier est attendu.";
  const value = Number(text);
  if (smallest !== null && value < smallest) return `${smallest} au moins.`;
  if (largest !== null && value > largest) return `${largest} au plus.`;
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
