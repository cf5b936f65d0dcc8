import assert from "node:assert/strict";
import { test } from "node:test";
import { shares } from "../src/model/shares";
import {
  addDays,
  addMonths,
  clip,
  clock,
  dayOf,
  duration,
  durationChange,
  instant,
  isDay,
  isolated,
  mondayOf,
  plainDomain,
  readClock,
  share,
  weekName,
} from "../src/model/time";

const plain = (text: string) => text.replace(/[\u00a0\u202f]/g, " ");

test("durations read as in the menu", () => {
  const cases: [number, string][] = [
    [0, "0 s"],
    [59.4, "59 s"],
    [59.6, "1 min"],
    [119, "1 min"],
    [3599, "59 min"],
    [3600, "1 h 00"],
    [3725, "1 h 02"],
    [7325, "2 h 02"],
    [360000, "100 h 00"],
  ];
  for (const [seconds, text] of cases) {
    assert.equal(plain(duration(seconds)), text);
    assert.ok(!duration(seconds).includes(" "), "a duration never breaks across lines");
  }
  assert.equal(plain(durationChange(-3725)), "− 1 h 02");
  assert.equal(durationChange(-59), "=");
  assert.equal(plain(share(1, 3)), "33 %");
  assert.equal(plain(share(1, 1000)), "< 1 %");
  assert.equal(plain(share(0, 0)), "0 %");
  assert.deepEqual(shares([302, 22, 3, 34], 361).map(plain), ["84 %", "6 %", "1 %", "9 %"]);
  assert.deepEqual(shares([997, 3, 0, 1000], 4000).map(plain), ["25 %", "< 1 %", "0 %", "25 %"]);
  assert.deepEqual(shares([1], 0).map(plain), ["0 %"]);
});

test("days go on across months, years and changes of the clock", () => {
  assert.equal(addDays("2026-03-28", 1), "2026-03-29");
  assert.equal(addDays("2026-03-29", 1), "2026-03-30");
  assert.equal(addDays("2026-10-25", 1), "2026-10-26");
  assert.equal(addDays("2026-12-31", 1), "2027-01-01");
  assert.equal(addDays("2028-02-28", 1), "2028-02-29");
  assert.equal(addMonths("2026-01-31", 1), "2026-02-28");
  assert.equal(addMonths("2026-03-15", -3), "2025-12-15");
  assert.equal(mondayOf("2026-11-22"), "2026-11-16");
  assert.equal(mondayOf("2026-11-16"), "2026-11-16");
  for (const text of ["2026-02-29", "2026-13-01", "26-1-1", "", null, 20260101])
    assert.equal(isDay(text), false, String(text));
  // In Paris the 29th of March has 23 hours and the 25th of October 25.
  assert.equal(instant("2026-03-30", 0, 0) - instant("2026-03-29", 0, 0), 23 * 3600);
  assert.equal(instant("2026-10-26", 0, 0) - instant("2026-10-25", 0, 0), 25 * 3600);
  assert.equal(dayOf(instant("2026-10-26", 0, 0) - 1), "2026-10-25");
  assert.equal(clock(instant("2026-10-25", 9, 5)), "09:05");
});

test("weeks are named without saying a month twice", () => {
  assert.equal(plain(weekName("2026-11-16")), "du 16 au 22 novembre 2026");
  assert.equal(plain(weekName("2026-09-28")), "du 28 septembre au 4 octobre 2026");
  assert.equal(plain(weekName("2026-06-01")), "du 1er au 7 juin 2026");
  assert.equal(plain(weekName("2026-12-28")), "du 28 décembre 2026 au 3 janvier 2027");
});

test("a time of day is read as people write it", () => {
  const cases: [string, string | null][] = [
    ["9:05", "9:5"],
    ["09h30", "9:30"],
    ["9 h", "9:0"],
    ["0905", "9:5"],
    ["14.15", "14:15"],
    ["24:00", null],
    ["9:60", null],
    ["neuf", null],
    ["", null],
    ["123456", null],
  ];
  for (const [text, expected] of cases) {
    const time = readClock(text);
    assert.equal(time && `${time.hours}:${time.minutes}`, expected, text);
  }
});

test("a cut text never ends in half a character", () => {
  assert.equal(clip("abc", 3), "abc");
  assert.equal(clip("abcd", 3), "abc…");
  assert.equal(clip("a😀b", 2), "a…");
  // What turns the direction of the text turns back before the sentence goes on.
  assert.equal(isolated("\u202eabc", 3), "\u2068\u202eab…\u2069");
});

test("a site is shown without the www that it is found under", () => {
  const sites = ["www.exemple.fr", "WWW.exemple.fr", "exemple.fr", "www.fr", "wwww.exemple.fr", "Firefox"];
  assert.deepEqual(sites.map(plainDomain), [
    "exemple.fr",
    "exemple.fr",
    "exemple.fr",
    "www.fr",
    "wwww.exemple.fr",
    "Firefox",
  ]);
});
