// Goals and limits in words: how far one is, and what a person writes of one.
import type { GoalBound, GoalFacts, GoalHistory, GoalOutcome, GoalPeriod, GoalSubject, Seconds } from "../bridge/routes";
import { count, duration } from "./time";

export const subjectNames: Record<GoalSubject, string> = {
  category: "Catégorie",
  project: "Projet",
  site: "Site",
  app: "Application",
};
export const boundNames: Record<GoalBound, string> = { least: "Au moins", most: "Au plus" };
export const periodNames: Record<GoalPeriod, string> = { day: "par jour", week: "par semaine" };

/** How a goal stands: for a limit "near" and "over" are what is to be seen. */
export type GoalState = "going" | "reached" | "near" | "over";

const near = 0.8;

export function stateOf({ bound, seconds }: Pick<GoalFacts, "bound" | "seconds">, done: Seconds): GoalState {
  if (bound === "least") return done >= seconds ? "reached" : "going";
  if (done > seconds) return "over";
  return done >= near * seconds ? "near" : "going";
}

/** "atteint", "dépassé de 10 min", "reste 2 h 50" */
export function stateText(goal: Pick<GoalFacts, "bound" | "seconds">, done: Seconds): string {
  const state = stateOf(goal, done);
  if (state === "reached") return "atteint";
  if (state === "over") return `dépassé de ${duration(done - goal.seconds)}`;
  return `reste ${duration(goal.seconds - done)}`;
}

export const outcomeNames: Record<GoalOutcome, string> = {
  before: "avant cet objectif",
  off: "aucune activité",
  missed: "manqué",
  kept: "tenu",
  running: "en cours",
};

/** "12 jours tenus sur 15", and how many of them are in a row. */
export function keptText({ period, kept, counted, streak, pieces }: GoalHistory): string {
  const running = pieces.some(({ outcome }) => outcome === "running");
  if (counted === 0) return running ? "En cours." : "Rien à compter ces jours-là.";
  const [one, many] = period === "day" ? ["jour tenu", "jours tenus"] : ["semaine tenue", "semaines tenues"];
  const text = `${count(kept, one, many)} sur ${counted}`;
  return streak > 1 ? `${text}, dont ${streak} de suite` : text;
}

/** What is written of a length, hours and minutes apart; null when it is none. */
export function readLength(hours: string, minutes: string): Seconds | null {
  const part = (text: string) => (text.trim() === "" ? 0 : /^\s*\d{1,3}\s*$/.test(text) ? Number(text) : NaN);
  const seconds = part(hours) * 3600 + part(minutes) * 60;
  return Number.isNaN(seconds) ? null : seconds;
}

/** What is wrong with a length, in French; "" when nothing is. */
export function lengthError(seconds: Seconds | null, period: GoalPeriod): string {
  if (seconds === null) return "Les heures et les minutes sont des nombres.";
  if (seconds < 60) return "Une minute au moins.";
  const most = period === "day" ? 24 : 7 * 24;
  return seconds > most * 3600 ? `${most}\u00a0h au plus.` : "";
}
