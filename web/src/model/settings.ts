// The limits within which the page accepts a setting; the program takes any text.

export type NumberSetting = "idle_threshold" | "min_span_seconds" | "min_block_seconds" | "retention_days";

interface Limits {
  min: number;
  max: number;
}

export const limits: Record<NumberSetting, Limits> = {
  idle_threshold: { min: 30, max: 7200 },
  min_span_seconds: { min: 2, max: 600 },
  min_block_seconds: { min: 0, max: 3600 },
  retention_days: { min: 0, max: 36500 },
};

/** What is wrong with the text as a value of the setting, in French; empty when nothing is. */
export function numberError({ min, max }: Limits, text: string): string {
  if (!/^\d{1,6}$/.test(text.trim())) return "Un nombre entier est attendu.";
  const value = Number(text);
  if (value < min) return `${min} au moins.`;
  if (value > max) return `${max} au plus.`;
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
