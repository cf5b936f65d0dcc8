"""What the dashboard has to show of a week, worked out from the spans in the store."""

import datetime

MONTHS = ("janvier février mars avril mai juin juillet août septembre octobre novembre"
          " décembre").split()
WEEKDAYS = "lundi mardi mercredi jeudi vendredi samedi dimanche".split()


def spelt(seconds):
    """A duration as the page writes it."""
    whole = round(seconds)
    if whole < 60:
        return f"{whole} s"
    hours, minutes = divmod(whole // 60, 60)
    return f"{hours} h {minutes:02}" if hours else f"{minutes} min"


def changed(seconds):
    if abs(seconds) < 60:
        return "="
    return f"{'+' if seconds > 0 else '−'} {spelt(abs(seconds))}"


class Period:
    """Some days from a midnight on; spans are (start, end, category, project, idle), in order."""

    def __init__(self, spans, start, days=7):
        self.days = [start + datetime.timedelta(days=i) for i in range(days)]
        end = start + datetime.timedelta(days=days)
        self.spans = [(max(span[0], start), min(span[1], end), *span[2:])
                      for span in spans if span[1] > start and span[0] < end]
        self.active = sum(self.by(2).values())

    def by(self, column):
        """Seconds of activity for each value of a column of the spans."""
        sums = {}
        for span in self.spans:
            if not span[4]:
                sums[span[column]] = (sums.get(span[column], 0)
                                      + (span[1] - span[0]).total_seconds())
        return sums

    def day(self, start):
        return Period(self.spans, start, 1)

    def name(self):
        first, last = self.days[0], self.days[6]
        start = str(first.day)
        if first.month != last.month:
            start += f" {MONTHS[first.month - 1]}"
        if first.year != last.year:
            start += f" {first.year}"
        return f"{start} – {last.day} {MONTHS[last.month - 1]} {last.year}"

    def longest_session(self):
        longest, begun = 0, None
        for start, end, _, _, idle in self.spans:
            begun = None if idle else begun or start
            if begun:
                longest = max(longest, (end - begun).total_seconds())
        return longest
