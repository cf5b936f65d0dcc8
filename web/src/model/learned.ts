// Which rules were learnt from assignments. The program keeps learnt rules and the user's own alike;
// it says once, when it learns one, and the page notes it here to tell them apart in the list.
import { load, save } from "./stored";

const key = "learnedRules";

function read(): Set<number> {
  return new Set(load<number[]>(key, [], (value) => Array.isArray(value) && value.every(Number.isInteger)));
}

export const learnedRules = {
  all: read,
  add(ids: readonly number[]): void {
    if (ids.length > 0) save(key, [...new Set([...read(), ...ids])]);
  },
  remove(ids: readonly number[]): void {
    const known = read();
    if (ids.filter((id) => known.delete(id)).length > 0) save(key, [...known]);
  },
};
