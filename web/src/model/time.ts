// Days, clock times and durations, as a French reader writes them.
import type { Day, Seconds, UnixTime } from "../bridge/routes";

const nbsp = "\u00a0";

/** "45 s", "10 min", "1 h 02": the form that the status menu uses, with no-break spaces. */
export function duration(seconds: Seconds): string {
  const whole = Math.round(seconds);
  if (whole < 60) return `${whole}${nbsp}s`;
  const minutes = Math.floor((whole % 3600) / 60);
  if (whole < 3600) return `${minutes}${nbsp}min`;
  return `${Math.floor(whole / 3600)}${nbsp}h${nbsp}${String(minutes).padStart(2, "0")}`;
}

/** A difference of durations: "+ 1 h 02", "− 10 min", or "=" when under a minute. */
export function durationChange(seconds: Seconds): string {
  if (Math.abs(seconds) < 60) return "=";
  return `${seconds > 0 ? "+" : "−"}${nbsp}${duration(Math.abs(seconds))}`;
}

const percentFormat = new Intl.NumberFormat("fr-FR", { style: "percent", maximumFractionDigits: 0 });
const numberFormat = new Intl.NumberFormat("fr-FR");

export function share(part: Seconds, whole: Seconds): string {
  const ratio = whole > 0 ? part / whole : 0;
  return ratio > 0 && ratio < 0.005 ? `<${nbsp}${percentFormat.format(0.01)}` : percentFormat.format(ratio);
}

/** "1 768" */
export function wholeNumber(value: number): string {
  return numberFormat.format(Math.round(value));
}

export function count(n: number, singular: string, plural = `${singular}s`): string {
  return `${numberFormat.format(n)}${nbsp}${n < 2 ? singular : plural}`;
}

// A day is handled as its date alone, through UTC, where every day has 24 hours.
function utc(day: Day): Date {
  return new Date(`${day}T00:00:00Z`);
}

export function isDay(text: unknown): text is Day {
  if (typeof text !== "string" || !/^\d{4}-\d\d-\d\d$/.test(text)) return false;
  const date = utc(text);
  return !Number.isNaN(date.getTime()) && date.toISOString().startsWith(text);
}

export function addDays(day: Day, days: number): Day {
  const date = utc(day);
  date.setUTCDate(date.getUTCDate() + days);
  return date.toISOString().slice(0, 10);
}

/** The same date of another month, or that month's last day. */
export function addMonths(day: Day, months: number): Day {
  const date = utc(day);
  const wanted = date.getUTCDate();
  date.setUTCDate(1);
  date.setUTCMonth(date.getUTCMonth() + months);
  const last = new Date(Date.UTC(date.getUTCFullYear(), date.getUTCMonth() + 1, 0)).getUTCDate();
  date.setUTCDate(Math.min(wanted, last));
  return date.toISOString().slice(0, 10);
}

/** 0 for Monday to 6 for Sunday. */
export function weekday(day: Day): number {
  return (utc(day).getUTCDay() + 6) % 7;
}

export function mondayOf(day: Day): Day {
  return addDays(day, -weekday(day));
}

export function firstOfMonth(day: Day): Day {
  return `${day.slice(0, 8)}01`;
}

/** The local day that holds the instant. */
export function dayOf(time: UnixTime): Day {
  const date = new Date(time * 1000);
  const two = (n: number) => String(n).padStart(2, "0");
  return `${String(date.getFullYear()).padStart(4, "0")}-${two(date.getMonth() + 1)}-${two(date.getDate())}`;
}

/** The instant of a wall-clock time on a local day; the first of the two where the clock goes back. */
export function instant(day: Day, hours: number, minutes: number): UnixTime {
  const [year = 0, month = 1, date = 1] = day.split("-").map(Number);
  return new Date(year, month - 1, date, hours, minutes).getTime() / 1000;
}

/** Reads "9:05", "09h05", "9 h" or "905" as hours and minutes; null when it is no time of day. */
export function readClock(text: string): { hours: number; minutes: number } | null {
  const found = /^\s*(\d{1,2})\s*(?:[:hH.]\s*(\d{2})?|(\d{2}))?\s*$/.exec(text);
  if (!found) return null;
  const hours = Number(found[1]);
  const minutes = Number(found[2] ?? found[3] ?? 0);
  return hours < 24 && minutes < 60 ? { hours, minutes } : null;
}

/** "de 9 à 10 h" */
export function hourName(hour: number): string {
  return `de ${hour} à ${hour + 1}${nbsp}h`;
}

const clockFormat = new Intl.DateTimeFormat("fr-FR", { hour: "2-digit", minute: "2-digit" });

/** "09:12" */
export function clock(time: UnixTime): string {
  return clockFormat.format(time * 1000);
}

// Made when first used: each takes milliseconds, which the first picture would wait for.
function formatter(options: Intl.DateTimeFormatOptions): (day: Day) => string {
  let format: Intl.DateTimeFormat | undefined;
  return (day) =>
    (format ??= new Intl.DateTimeFormat("fr-FR", { ...options, timeZone: "UTC" }))
      .format(utc(day))
      .replace(/(?<!\d)1(?= \p{L}|$)/u, "1er");
}

/** "jeudi 19 novembre 2026" */
export const longDay = formatter({ weekday: "long", day: "numeric", month: "long", year: "numeric" });
/** "jeudi 19 novembre" */
export const plainDay = formatter({ weekday: "long", day: "numeric", month: "long" });
/** "jeudi 19": enough within a week */
export const dayInWeek = formatter({ weekday: "long", day: "numeric" });
/** "19 novembre 2026" */
export const dateOnly = formatter({ day: "numeric", month: "long", year: "numeric" });
/** "novembre 2026" */
export const monthName = formatter({ month: "long", year: "numeric" });
/** "nov. 2026" */
export const monthShort = formatter({ month: "short", year: "numeric" });
/** "lun." */
export const weekdayShort = formatter({ weekday: "short" });
const dayAndMonth = formatter({ day: "numeric", month: "long" });
/** "19 nov." */
export const dayShort = formatter({ day: "numeric", month: "short" });
/** "nov." */
export const monthOnly = formatter({ month: "short" });

/** "du 16 au 22 novembre 2026", "du 28 septembre au 4 octobre 2026" */
export function weekName(monday: Day): string {
  const sunday = addDays(monday, 6);
  let start = dateOnly(monday);
  if (monday.slice(0, 7) === sunday.slice(0, 7)) start = dayAndMonth(monday).split(" ")[0]!;
  else if (monday.slice(0, 4) === sunday.slice(0, 4)) start = dayAndMonth(monday);
  return `du ${start} au ${dateOnly(sunday)}`;
}

/** A sentence of the program's, which it writes as people type, as French is set. */
export function typeset(sentence: string): string {
  return sentence.replace(/ (?=[:;!?»])|(?<=«) /g, "\u00a0").replaceAll("'", "’");
}

export function capitalize(text: string): string {
  return text.charAt(0).toLocaleUpperCase("fr-FR") + text.slice(1);
}

/** A site as people call it. */
export function plainDomain(domain: string): string {
  return domain.replace(/^www\.(?=.*\.)/i, "");
}

/** Clipped text from the outside for the middle of a sentence, whose direction it cannot turn. */
export function isolated(text: string, length: number): string {
  return `\u2068${clip(text, length)}\u2069`;
}

/** At most `length` characters, never half of one; what is cut shows as "…". */
export function clip(text: string, length: number): string {
  if (text.length <= length) return text;
  const cut =
    text.charCodeAt(length - 1) >= 0xd800 && text.charCodeAt(length - 1) < 0xdc00 ? length - 1 : length;
  return `${text.slice(0, cut)}…`;
}
