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

/** The list that a setting holds as JSON; empty when it holds anything else. */
export function readList(text: string): string[] {
  try {
    const value: unknown = JSON.parse(text);
    return Array.isArray(value) ? value.filter((entry): entry is string => typeof entry === "string") : [];
  } catch {
    return [];
  }
}
