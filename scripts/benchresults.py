"""What bench-table and bench-page share: reading the reports of Google Benchmark and comparing the library with its peers.

Measurements are named BM_<work>/<who>, <who> being "orvabase" or a peer. Time is CPU time, or real time where the
measurement's name says so; the best of all repetitions counts.

The targets file has lines "work ratio [peer…]"; where peers are named, only these are compared with. A comment right above a
work is the title of the works that follow. Works come in the order of that file, then those that it lacks by name.
"""

import dataclasses
import json
import re
import typing

LIBRARY = "orvabase"
MODIFIERS = re.compile(r"^(min_time|min_warmup_time|iterations|repeats|threads|process_time|real_time|manual_time)")
UNITS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


class Target(typing.NamedTuple):
    ratio: float
    peers: list
    group: str


@dataclasses.dataclass
class Row:
    """A work. Times are in nanoseconds, and None where nothing was measured."""

    work: str
    group: str = ""
    library: typing.Optional[float] = None
    peer: typing.Optional[str] = None
    peer_time: typing.Optional[float] = None
    ratio: typing.Optional[float] = None
    target: typing.Optional[float] = None
    verdict: str = ""  # "ok", "over", "no pair" (the library or all peers are missing), or nothing without a target


def read_targets(path):
    """{work: Target}"""
    targets = {}
    group = title = ""
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            words = line.split("#")[0].split()
            if words:
                group, title = title or group, ""
                targets[words[0]] = Target(float(words[1]), words[2:], group)
            else:
                title = line.strip().lstrip("# ")
    return targets


def read_reports(paths):
    reports = []
    for path in paths:
        with open(path, encoding="utf-8") as file:
            reports.append(json.load(file))
    return reports


def best_times(reports):
    """{work: {who: best time in nanoseconds}}"""
    times = {}
    for report in reports:
        for run in report["benchmarks"]:
            if run.get("run_type") != "iteration" or run.get("error_occurred"):
                continue
            parts = run["name"].split("/")
            modifiers = [part for part in parts if MODIFIERS.match(part)]
            rest = [part for part in parts[2:] if not MODIFIERS.match(part)]
            work = "/".join([parts[0].removeprefix("BM_")] + rest)
            who = parts[1] if len(parts) > 1 else LIBRARY
            real = any(part.startswith(("real_time", "manual_time")) for part in modifiers)
            time = run["real_time" if real else "cpu_time"] * UNITS[run["time_unit"]]
            best = times.setdefault(work, {})
            best[who] = min(time, best.get(who, time))
    return times


def compare(targets, times):
    """The rows of all works measured."""
    rows = []
    order = {work: number for number, work in enumerate(targets)}
    for work in sorted(times, key=lambda work: (order.get(work, len(order)), work)):
        best = times[work]
        target, among, group = targets.get(work, Target(None, [], ""))
        row = Row(work, group, best.get(LIBRARY), target=target)
        peers = {who: time for who, time in best.items() if who != LIBRARY and (not among or who in among)}
        if peers:
            row.peer = min(peers, key=peers.get)
            row.peer_time = peers[row.peer]
        if row.library is None or row.peer is None:
            row.verdict = "no pair"
        else:
            row.ratio = row.library / row.peer_time
            if target is not None:
                row.verdict = "ok" if row.ratio <= target else "over"
        rows.append(row)
    return rows


def summary(rows):
    verdicts = [row.verdict for row in rows if row.verdict in ("ok", "over")]
    return f"{verdicts.count('ok')} of {len(verdicts)} works with a target are within it"


def time_text(nanoseconds):
    if nanoseconds is None:
        return "-"
    for unit, factor in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= factor:
            return f"{nanoseconds / factor:.4g} {unit}"
    return f"{nanoseconds:.4g} ns"


def ratio_text(row):
    """Two digits, and more where these would not show on which side of the target the ratio is."""
    if row.ratio is None:
        return "-"
    digits = 2
    while row.verdict == "over" and float(f"{row.ratio:.{digits}f}") <= row.target and digits < 6:
        digits += 1
    return f"{row.ratio:.{digits}f}"


def target_text(row):
    return "-" if row.target is None else f"{row.target:g}"
