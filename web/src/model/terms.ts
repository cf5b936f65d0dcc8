// What is agreed for a project, as it is typed and as the program stores it.
import type { Day, RoundingMode, RoundingScope, Terms } from "../bridge/routes";
import { duration, isDay } from "./time";

/** As it stands in the form's fields. */
export interface TermsText {
  currency: string;
  rate: string;
  billable: boolean;
  budget: string;
  from: string;
  rounding: string;
  mode: RoundingMode;
  scope: RoundingScope;
}

const usual: Terms = {
  currency: "EUR",
  rate: null,
  billable: true,
  budget: null,
  budget_from: null,
  rounding: null,
  rounding_mode: null,
  rounding_scope: null,
};

/** "85,50" */
function moneyText(cents: number): string {
  return `${Math.floor(cents / 100)}${cents % 100 ? `,${String(cents % 100).padStart(2, "0")}` : ""}`;
}

/** "40", "40 h 30" */
function hoursText(seconds: number): string {
  const minutes = Math.round(seconds / 60);
  return minutes % 60
    ? `${Math.floor(minutes / 60)}\u00a0h\u00a0${String(minutes % 60).padStart(2, "0")}`
    : String(minutes / 60);
}

export function termsText(terms: Terms = usual): TermsText {
  return {
    currency: terms.currency,
    rate: terms.rate === null ? "" : moneyText(terms.rate),
    billable: terms.billable,
    budget: terms.budget === null ? "" : hoursText(terms.budget),
    from: terms.budget_from === null ? "" : dayText(terms.budget_from),
    rounding: terms.rounding === null ? "" : String(terms.rounding),
    mode: terms.rounding_mode ?? "nearest",
    scope: terms.rounding_scope ?? "day",
  };
}

/** Reads "85", "85,5", "1 200.50 €" as cents; null when it is no amount. */
export function readMoney(text: string): number | null {
  const found = /^(\d{1,6})(?:[.,](\d{1,2}))?$/.exec(text.replace(/[\s€]/g, ""));
  return found ? Number(found[1]) * 100 + Number((found[2] ?? "").padEnd(2, "0")) : null;
}

/** Reads "40", "40,5", "40 h 30", "40:30" as seconds; null when it is no number of hours. */
export function readHours(text: string): number | null {
  const plain = text.replace(/\s/g, "");
  const decimal = /^(\d{1,5})(?:[.,](\d{1,2}))?h?$/i.exec(plain);
  if (decimal) return Number(decimal[1]) * 3600 + Number((decimal[2] ?? "").padEnd(2, "0")) * 36;
  const clock = /^(\d{1,5})[h:](\d{2})$/i.exec(plain);
  return clock && Number(clock[2]) < 60 ? Number(clock[1]) * 3600 + Number(clock[2]) * 60 : null;
}

/** "40 h", "40 h 30" */
export function budgetName(seconds: number): string {
  return duration(seconds).replace(/(h)\s00$/, "$1");
}

/** "01/09/2026" */
function dayText(day: Day): string {
  return day.split("-").reverse().join("/");
}

/** Reads "1/9/2026", "01.09.2026", "2026-09-01"; null when it is no day. */
export function readDay(text: string): Day | null {
  const plain = text.trim();
  const found = /^(\d{1,2})[/. -](\d{1,2})[/. -](\d{4})$/.exec(plain);
  const day = found ? `${found[3]}-${found[2]!.padStart(2, "0")}-${found[1]!.padStart(2, "0")}` : plain;
  return isDay(day) ? day : null;
}

/** What is typed, or in French what is wrong with it. */
export function readTerms(text: TermsText): Terms | string {
  const rate = text.rate.trim() === "" ? null : readMoney(text.rate);
  const budget = text.budget.trim() === "" ? null : readHours(text.budget);
  if (rate === null && text.rate.trim() !== "") return "Le tarif n’est pas un montant, comme 85 ou 85,50.";
  if (budget === null && text.budget.trim() !== "")
    return "Le budget n’est pas un nombre d’heures, comme 40 ou 40 h 30.";
  const from = text.from.trim() === "" ? null : readDay(text.from);
  if (from === null && text.from.trim() !== "")
    return "Le début du budget n’est pas un jour, comme 01/09/2026.";
  const currency = text.currency.trim().toUpperCase();
  if (!/^[A-Z]{3}$/.test(currency)) return "La devise s’écrit en trois lettres, comme EUR.";
  const rounded = text.rounding !== "";
  return {
    currency,
    rate,
    billable: text.billable,
    budget,
    budget_from: from,
    rounding: rounded ? Number(text.rounding) : null,
    rounding_mode: rounded ? text.mode : null,
    rounding_scope: rounded ? text.scope : null,
  };
}
