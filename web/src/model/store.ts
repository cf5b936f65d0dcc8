// The file that keeps everything, in words.
import type { StoreContent } from "../bridge/store";
import type { UnixTime } from "../bridge/routes";
import { addDays, clock, dateOnly, dayOf } from "./time";

const nbsp = "\u00a0";
const units = ["o", "ko", "Mo", "Go", "To"];
const number = new Intl.NumberFormat("fr-FR", { maximumSignificantDigits: 3 });

/** "812 o", "12,4 Mo" */
export function fileSize(bytes: number): string {
  let unit = 0;
  let value = Math.max(0, bytes);
  // What would be written as 1 000 is one of the next unit.
  for (; value >= 999.5 && unit < units.length - 1; unit++) value /= 1000;
  return `${number.format(value)}${nbsp}${units[unit]}`;
}

/** "aujourd’hui à 14:32", "hier à 09:12", "le 12 novembre 2026 à 18:00" */
export function moment(time: UnixTime, now: UnixTime): string {
  const day = dayOf(time);
  const today = dayOf(now);
  let name = `le ${dateOnly(day)}`;
  if (day === today) name = "aujourd’hui";
  else if (day === addDays(today, -1)) name = "hier";
  return `${name} à ${clock(time)}`;
}

/** "depuis 14:32", "depuis hier à 09:12" */
export function since(time: UnixTime, now: UnixTime): string {
  return dayOf(time) === dayOf(now) ? `depuis ${clock(time)}` : `depuis ${moment(time, now)}`;
}

/** "jusqu’à 14:30", "jusqu’à demain, 04:00", "jusqu’au 12 novembre 2026, 09:00" */
export function until(time: UnixTime, now: UnixTime): string {
  const day = dayOf(time);
  const today = dayOf(now);
  if (day === today) return `jusqu’à ${clock(time)}`;
  return `jusqu’${day === addDays(today, 1) ? "à demain" : `au ${dateOnly(day)}`}, ${clock(time)}`;
}

/** "du 3 mars 2024 au 19 novembre 2026" */
export function covered({ first, last }: Pick<StoreContent, "first" | "last">): string {
  if (first === null || last === null) return "rien d’enregistré";
  const [from, to] = [dayOf(first), dayOf(last)];
  return from === to ? `le ${dateOnly(from)}` : `du ${dateOnly(from)} au ${dateOnly(to)}`;
}
