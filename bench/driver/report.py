"""The tables, in Markdown and without a date, so that they can be pasted into a document."""

import os
import platform
import statistics

FLOOR, PEER, OURS = "nullfs", "sshfs", "tarnel"


class Results:
    """Seconds of every round, by measurement and contender."""

    def __init__(self):
        self.seconds = {}

    def add(self, measurement, contender, seconds):
        self.seconds.setdefault((measurement.key, contender.name), []).append(seconds)

    def median(self, key, name):
        rounds = self.seconds.get((key, name))
        return statistics.median(rounds) if rounds else None

    def ratio(self, key, name, base):
        ours, theirs = self.median(key, name), self.median(key, base)
        return ours / theirs if ours is not None and theirs else None

    def spread(self, key, name):
        rounds = self.seconds[(key, name)]
        return f"{min(rounds):.3f} to {max(rounds):.3f}"


def machine():
    memory_kib = int(next(open("/proc/meminfo", encoding="ascii")).split()[1])
    return (
        f"{processor()}, {len(os.sched_getaffinity(0))} cores, {memory_kib / (1 << 20):.1f} GiB, "
        f"{platform.system()} {platform.release()}"
    )


def processor():
    with open("/proc/cpuinfo", encoding="utf-8", errors="replace") as file:
        names = (line.split(":", 1)[1].strip() for line in file if line.startswith("model name"))
        return next(names, platform.machine())


def table(rows):
    head, *body = rows
    lines = [head, ["---"] * len(head), *body]
    return "\n".join("| " + " | ".join(row) + " |" for row in lines)


def times(number):
    return "-" if number is None else f"{number:.2f}"


def comparison(results, measurements, contenders):
    rows = [["Measurement", "Contender", "Seconds", "All rounds", "Rate", "x floor", "x sshfs"]]
    for measurement in measurements:
        for contender in contenders:
            key, name = measurement.key, contender.name
            median = results.median(key, name)
            rows.append(
                [
                    measurement.title,
                    name,
                    f"{median:.3f}",
                    results.spread(key, name),
                    measurement.rate(median),
                    times(results.ratio(key, name, FLOOR)),
                    times(results.ratio(key, name, PEER)),
                ]
            )
    return table(rows)


def growth(results, measurements, contenders):
    head = ["ls -lU of"]
    for contender in contenders:
        head += [f"{contender.name}: seconds", "µs a file"]
    rows = [head]
    for measurement in measurements:
        row = [f"{measurement.files:,} files"]
        for contender in contenders:
            median = results.median(measurement.key, contender.name)
            row += [f"{median:.3f}", f"{median / measurement.files * 1e6:.1f}"]
        rows.append(row)
    return table(rows)


def memory(measured):
    rows = [["Memory of `tarnel mount`", "KiB"]]
    rows += [[f"resident after: {title}", f"{kib:,}"] for title, kib in measured.after]
    rows.append(["resident at the end (VmRSS)", f"{measured.resident_kib:,}"])
    rows.append(["peak (VmHWM)", f"{measured.peak_kib:,}"])
    bound = f"bound: 64 MiB + 200 bytes x {measured.paths:,} paths"
    rows.append([bound, f"{measured.bound_kib:,}"])
    verdict = "PASS" if measured.within else "OVER"
    return f"{table(rows)}\n\nMemory: {verdict}"


def verdict(results, measurements):
    """(ahead of sshfs on all four, the lines that say so)."""
    ratios = [(m.title, results.ratio(m.key, OURS, PEER)) for m in measurements]
    if any(ratio is None for _, ratio in ratios):
        return False, f"No verdict: {OURS} and {PEER} were not both measured."
    behind = [f"{title} ({ratio:.2f})" for title, ratio in ratios if ratio >= 1]
    if behind:
        return False, f"{OURS} is BEHIND {PEER} on: " + "; ".join(behind)
    return True, f"{OURS} is ahead of {PEER} on all four."
