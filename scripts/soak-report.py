#!/usr/bin/python3
"""soak-report.py soak.csv soak.png: how much memory grew, and a picture of the whole run.

What is in use while nothing is open is what counts: rows that say so. The first fifth of them is warm-up. A line through
the rest by the median of all slopes (Theil and Sen), which a few rows that are out of line do not move. What was allocated
and not freed tells of leaks to the kibibyte; private memory is what the system sees, free pages of the allocator included.
"""

import csv
import itertools
import statistics
import sys

# Column, what it is, and the bound in MiB: a line may not rise by more in an hour, nor in the run when that is shorter.
MEASURES = (("allocated_kib", "allocated", 0.5), ("own_kib", "private", 32.0))


def growth(times, values):
    """Slope and the value at time 0 of the line."""
    slopes = [(values[j] - values[i]) / (times[j] - times[i]) for i, j in itertools.combinations(range(len(times)), 2)]
    slope = statistics.median(slopes) if slopes else 0.0
    return slope, statistics.median(v - slope * t for t, v in zip(times, values))


def draw(rows, idle, lines, name):
    import matplotlib

    matplotlib.use("Agg")
    from matplotlib import pyplot

    column = lambda key, of=rows, scale=1.0: [row[key] * scale for row in of]
    unit, seconds = ("hours", 3600) if rows[-1]["seconds"] > 7200 else ("minutes", 60)
    times, idle_times = column("seconds", scale=1 / seconds), column("seconds", idle, 1 / seconds)
    figure, (memory, still, held, frames, events) = pyplot.subplots(5, 1, figsize=(12, 14), dpi=100, sharex=True)

    memory.plot(times, column("resident_kib", scale=1 / 1024), color="0.75", lw=0.8, label="resident")
    memory.plot(times, column("own_kib", scale=1 / 1024), color="tab:blue", lw=0.8, label="private, all the time")
    memory.set(ylabel="memory (MiB)", ylim=(0, None))
    memory.legend(loc="upper right", ncols=2)

    for (key, label, _), color in zip(MEASURES, ("tab:red", "tab:blue")):
        still.plot(idle_times, column(key, idle, 1 / 1024), "o", color=color, ms=3, label=label)
        slope, start = lines[key]
        still.plot(idle_times, [(start + slope * t * seconds) / 1024 for t in idle_times], color=color, lw=1)
    still.set(ylabel="nothing open (MiB)", ylim=(0, None))
    still.legend(loc="upper right", ncols=2)

    for key, color in (("threads", "tab:green"), ("handles", "tab:purple")):
        held.plot(times, column(key), lw=0.8, color=color, label=key)
        held.plot(idle_times, column(key, idle), "o", ms=4, color=color)
    held.set(ylabel="number (dots: idle)", ylim=(0, None))
    held.legend(loc="upper right", ncols=2)

    for key, label in (("sent", "sent"), ("taken", "taken by the application"), ("passed_over", "passed over for newer ones"),
                       ("no_buffer", "no free buffer"), ("lost", "lost on the link"),
                       ("aborted", "waited in a run that was given up"), ("unaccounted", "unaccounted for")):
        frames.plot(times, column(key), lw=1.2, label=f"{label}: {int(rows[-1][key]):,}")
    frames.set(ylabel="frames since start", yscale="symlog", ylim=(0, None))
    frames.legend(loc="lower right", ncols=2, fontsize="small")

    for key in rows[0]:
        if key.startswith("error_") and rows[-1][key] or key in ("sessions", "runs", "searches", "faults", "missing_records"):
            events.plot(times, column(key), lw=1.2, label=f"{key.replace('_', ' ')}: {int(rows[-1][key]):,}")
    events.set(ylabel="events since start", yscale="symlog", ylim=(0, None), xlabel=unit)
    events.legend(loc="lower right", ncols=2, fontsize="small")
    for axes in (memory, still, held, frames, events):
        axes.grid(alpha=0.3)
        axes.set_xlim(0, times[-1])
    figure.tight_layout()
    figure.savefig(name)


def main(table, picture):
    rows = [{key: float(value) for key, value in row.items()} for row in csv.DictReader(open(table)) if None not in row.values()]
    every_idle = [row for row in rows if row["idle"]]
    idle = every_idle[len(every_idle) // 5 :]
    if len(idle) < 3:
        print("too short to tell growth: fewer than three moments with nothing open after warm-up")
        return 1
    times = [row["seconds"] for row in idle]
    grows, lines = False, {}
    for key, name, bound in MEASURES:
        slope, start = lines[key] = growth(times, [row[key] for row in idle])
        per_hour, whole = slope * 3600 / 1024, slope * (times[-1] - times[0]) / 1024
        too_much = min(per_hour, whole) > bound
        grows |= too_much
        print(f"{name} memory with nothing open, {len(idle)} moments: {start / 1024:.2f} MiB, {per_hour:+.2f} MiB an hour"
              f" ({whole * 1024:+.1f} KiB in all); bound {bound} MiB" + (" GROWS" if too_much else ""))
    print(f"at most {max(row['resident_kib'] for row in rows) / 1024:.0f} MiB, {max(row['threads'] for row in rows):.0f} threads,"
          f" {max(row['handles'] for row in rows):.0f} handles")
    try:
        draw(rows, every_idle, lines, picture)
        print(f"picture: {picture}")
    except ImportError as error:
        print(f"no picture: {error}")
    return 1 if grows else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:3]))
