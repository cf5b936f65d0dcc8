// What the page remembers between two openings. Losing it loses no data of the user's.

export function load<T>(key: string, fallback: T, valid: (value: unknown) => boolean): T {
  try {
    const text = localStorage.getItem(`orvanta.${key}`);
    const value: unknown = text === null ? undefined : JSON.parse(text);
    return valid(value) ? (value as T) : fallback;
  } catch {
    return fallback;
  }
}

export function save(key: string, value: unknown): void {
  try {
    localStorage.setItem(`orvanta.${key}`, JSON.stringify(value));
  } catch {
    // A full or forbidden storage only means that the page opens at its beginning.
  }
}
