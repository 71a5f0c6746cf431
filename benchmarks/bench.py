#!/usr/bin/env python3
"""Runs the benchmarks of a build, prints a table of them, and writes it to docs/performance.md.

    benchmarks/bench.py [--quick] [--long] [--write] BUILD-FOLDER [NAME ...]
    benchmarks/bench.py --check | --update BUILD-FOLDER

script/bench calls it after building. Each benchmark is a program that prints one line of JSON per
result (benchmarks/Result.h). A result holds the samples of Hushbox and those of its baselines, which
took turns in one run, so that other work on the machine slows both down. Tables go between the markers
`<!-- bench: NAME -->` and `<!-- end -->` of docs/performance.md, plots to docs/performance/.

--quick takes few samples and writes no file, unless --write asks for it. --check compares the
instructions of the core with benchmarks/core-instructions.json, --update writes that file.
"""

import argparse
import datetime
import html
import json
import math
import os
import pathlib
import platform
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
PAGE = ROOT / "docs" / "performance.md"
PLOTS = ROOT / "docs" / "performance"
CORE_FIGURES = ROOT / "benchmarks" / "core-instructions.json"

# How much worse than the committed figure a change may make the core.
TOLERANCE = 0.02
# What core_instructions measures, how many events a round has, and what an event is called.
CORE_SUBJECTS = {
    "volume": (2, "volume change that is not a press"),
    "presses": (2, "press, with one poll per two presses"),
    "polls": (1, "poll with the cached button"),
    "labels": (1, "lower case of a label"),
    "reports": (1, "reading of a power report"),
}
# What one line of each benchmark costs at most before it counts as hung, in seconds.
TIMEOUT = 1800
# How long nothing happens in the benchmark of idling; --long makes it ten minutes.
IDLE_SECONDS = 60


# --- Statistics ---------------------------------------------------------------------------------

def percentile(samples, fraction):
    ordered = sorted(samples)
    return ordered[min(len(ordered) - 1, int(fraction * (len(ordered) - 1) + 0.5))]


def paired_ratios(program, baseline):
    """Sample by sample where they were taken in pairs, else the ratio of the medians."""
    if len(program) == len(baseline) and all(baseline):
        return [one / other for one, other in zip(program, baseline)]
    if not baseline or not statistics.median(baseline):
        return []
    return [statistics.median(program) / statistics.median(baseline)]


def measured(result):
    """(value, bound, whether the bound is kept) of a result's goal, or None."""
    goal = result.get("goal")
    if not goal:
        return None
    samples = result["program"]
    if "ratio_to" in goal:
        samples = paired_ratios(samples, result["baselines"].get(goal["ratio_to"], []))
    if not samples:
        return None
    value = {"median": statistics.median, "maximum": max,
             "99th percentile": lambda each: percentile(each, 0.99)}[goal["statistic"]](samples)
    return value, goal["bound"], value <= goal["bound"]


# --- Tables -------------------------------------------------------------------------------------

def number(value):
    if value == 0:
        return "0"
    digits = max(0, 2 - int(math.floor(math.log10(abs(value)))))
    text = f"{value:,.{min(digits, 4)}f}"
    return text.rstrip("0").rstrip(".") if "." in text else text


def spread(samples):
    """The median, and from the 10th to the 90th percentile."""
    if not samples:
        return ""
    low, high = percentile(samples, 0.1), percentile(samples, 0.9)
    text = number(statistics.median(samples))
    return text if number(low) == number(high) else f"{text} ({number(low)} to {number(high)})"


def goal_text(result):
    found = measured(result)
    if not found:
        return ""
    value, bound, kept = found
    goal = result["goal"]
    what = {"median": "", "maximum": "maximum ", "99th percentile": "99th percentile "}[goal["statistic"]]
    ratio = " of " + goal["ratio_to"] if "ratio_to" in goal else ""
    shown = f"{what}{number(value)}, " if what else ""
    return f"{shown}at most {number(bound)}{ratio}: {'met' if kept else '**missed**'}"


def rows(results):
    """The table's rows: one per result and baseline."""
    yield ["", "Hushbox", "in its place", "", "ratio", "goal"]
    for result in results:
        name = f"{result['name']}, {result['unit']}"
        baselines = list(result["baselines"].items()) or [("", [])]
        for index, (baseline, samples) in enumerate(baselines):
            ratios = paired_ratios(result["program"], samples) if samples else []
            first = index == 0
            yield [name if first else "", spread(result["program"]) if first else "", baseline,
                   spread(samples), spread(ratios), goal_text(result) if first else ""]


def markdown(results):
    lines = [list(row) for row in rows(results)]
    if not any(line[2] for line in lines[1:]):
        lines = [line[:2] + line[5:] for line in lines]
    if not any(line[-1] for line in lines[1:]):
        lines = [line[:-1] for line in lines]
    lines.insert(1, ["---"] * len(lines[0]))
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)


def plain(results):
    lines = [[cell.replace("**", "") for cell in row] for row in rows(results)]
    widths = [max(len(row[column]) for row in lines) for column in range(len(lines[0]))]
    return "\n".join("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip()
                     for row in lines)


# --- Plots --------------------------------------------------------------------------------------

COLOURS = ["#1f77b4", "#d62728", "#2ca02c", "#9467bd", "#8c564b", "#e377c2"]
WIDTH, HEIGHT, LEFT, RIGHT, TOP, BOTTOM = 720, 400, 80, 230, 36, 52


class Axis:
    """Maps values to pixels: logarithmic if they span more than a factor of 20."""

    def __init__(self, values, start, end):
        low, high = min(values), max(values)
        self.is_log = low > 0 and high / low > 20
        if self.is_log:
            low, high = 10 ** math.floor(math.log10(low)), 10 ** math.ceil(math.log10(high))
        else:
            low, high = 0, (high or 1) * 1.1
        self.low, self.high, self.start, self.end = low, high, start, end

    def at(self, value):
        if self.is_log:
            part = math.log(max(value, self.low) / self.low) / math.log(self.high / self.low)
        else:
            part = (value - self.low) / (self.high - self.low)
        return round(self.start + part * (self.end - self.start), 1)

    def ticks(self):
        if self.is_log:
            return [10.0 ** power for power in range(round(math.log10(self.low)),
                                                     round(math.log10(self.high)) + 1)]
        step = 10 ** math.floor(math.log10(self.high))
        step = next(step * each for each in (0.1, 0.2, 0.5, 1, 2) if self.high / (step * each) <= 6)
        return [step * index for index in range(int(self.high / step) + 1)]


def lines_of(points):
    """{series: [(x, median, low, high)]} of Hushbox and of each baseline."""
    series = {}
    for result in points:
        point = result["point"]
        label = f"Hushbox, {point['series']}" if point["series"] else "Hushbox"
        for name, samples in [(label, result["program"]), *result["baselines"].items()]:
            if samples:
                series.setdefault(name, []).append(
                    (point["x"], statistics.median(samples), percentile(samples, 0.1),
                     percentile(samples, 0.9)))
    return {name: sorted(values) for name, values in series.items()}


def svg(title, unit, axis_name, series):
    xs = [value[0] for line in series.values() for value in line]
    ys = [each for line in series.values() for value in line for each in value[1:]]
    x, y = Axis(xs, LEFT, WIDTH - RIGHT), Axis(ys, HEIGHT - BOTTOM, TOP)
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{WIDTH}" height="{HEIGHT}" '
           f'viewBox="0 0 {WIDTH} {HEIGHT}" font-family="sans-serif" font-size="12">',
           f'<rect width="{WIDTH}" height="{HEIGHT}" fill="#fff"/>',
           f'<text x="{LEFT}" y="20" font-size="14">{html.escape(title)}</text>']
    for tick in y.ticks():
        out.append(f'<path d="M{LEFT} {y.at(tick)}H{WIDTH - RIGHT}" stroke="#ddd"/>')
        out.append(f'<text x="{LEFT - 6}" y="{y.at(tick) + 4}" text-anchor="end">{number(tick)}</text>')
    for tick in x.ticks():
        out.append(f'<path d="M{x.at(tick)} {HEIGHT - BOTTOM}v5" stroke="#000"/>')
        out.append(f'<text x="{x.at(tick)}" y="{HEIGHT - BOTTOM + 19}" text-anchor="middle">'
                   f'{number(tick)}</text>')
    out.append(f'<path d="M{LEFT} {TOP}V{HEIGHT - BOTTOM}H{WIDTH - RIGHT}" stroke="#000" fill="none"/>')
    out.append(f'<text x="{(LEFT + WIDTH - RIGHT) / 2}" y="{HEIGHT - 12}" text-anchor="middle">'
               f'{html.escape(axis_name)}</text>')
    out.append(f'<text transform="translate(18 {(TOP + HEIGHT - BOTTOM) / 2}) rotate(-90)" '
               f'text-anchor="middle">{html.escape(unit)}</text>')
    for index, (name, line) in enumerate(series.items()):
        colour = COLOURS[index % len(COLOURS)]
        dashes = "" if name.startswith("Hushbox") else ' stroke-dasharray="5 4"'
        path = "L".join(f"{x.at(point[0])} {y.at(point[1])}" for point in line)
        out.append(f'<path d="M{path}" stroke="{colour}" stroke-width="2" fill="none"{dashes}/>')
        for point in line:
            out.append(f'<path d="M{x.at(point[0])} {y.at(point[2])}V{y.at(point[3])}" '
                       f'stroke="{colour}"/>')
            out.append(f'<circle cx="{x.at(point[0])}" cy="{y.at(point[1])}" r="3" fill="{colour}"/>')
        at = TOP + 10 + 20 * index
        out.append(f'<path d="M{WIDTH - RIGHT + 16} {at}h20" stroke="{colour}" stroke-width="2"{dashes}/>')
        out.append(f'<text x="{WIDTH - RIGHT + 42}" y="{at + 4}">{html.escape(name)}</text>')
    return "\n".join(out + ["</svg>"]) + "\n"


def plots(results):
    """{file name: SVG} of the results that are points of a plot."""
    found = {}
    for result in results:
        if "point" in result:
            found.setdefault(result["point"]["plot"], []).append(result)
    return {re.sub(r"[^a-z0-9]+", "-", title.lower()).strip("-") + ".svg":
            svg(title, points[0]["unit"], points[0]["point"]["axis"], lines_of(points))
            for title, points in found.items()}


# --- Instructions of the core -------------------------------------------------------------------

def system():
    """The compiler and the system, on which instruction counts depend."""
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True, check=True).stdout
    release = dict(line.split("=", 1) for line in pathlib.Path("/etc/os-release").read_text().splitlines()
                   if "=" in line) if os.path.exists("/etc/os-release") else {}
    version = re.search(r"\b(\d+\.\d+)\.\d+", compiler)
    return (f"{'clang' if 'clang' in compiler else 'g++'} {version[1] if version else '?'}, "
            f"{release.get('ID', platform.system())} {release.get('VERSION_ID', '').strip(chr(34))}, "
            f"{platform.machine()}")


def callgrind(command, *options, out="/dev/null"):
    """Runs the command; what happens in hushboxMeasured() counts, and counts the same on each run.

    Returns the instructions and what the command printed.
    """
    # The C library picks functions by the processor's features, which would change the count.
    environment = {**os.environ, "GLIBC_TUNABLES": "glibc.cpu.hwcaps=-AVX2,-AVX,-BMI2,-ERMS,-FSRM"}
    run = subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={out}",
                          "--toggle-collect=hushboxMeasured", *options, *map(str, command)],
                         capture_output=True, text=True, env=environment, check=False)
    counted = re.search(r"Collected : (\d+)", run.stderr)
    if run.returncode != 0 or not counted:
        raise RuntimeError(run.stderr.strip()[-2000:])
    return int(counted[1]), run.stdout


def is_desk_caller(chain):
    """Whether the nearest function of ours among these callers belongs to the simulated desk."""
    for function in chain:
        # A library's function says nothing, except that the call of a lambda bears its name.
        if "hushbox" in function and ("_M_invoke" in function or not re.match(
                r"(void |bool )?(std::|_ZNSt|__gnu_cxx)", function)):
            return bool(re.search(r"Simulated|hushbox::Journal|PressCycle", function))
    return False


def allocations(command):
    """{"core": calls of operator new by the core, "desk": those by the simulated desk}"""
    function = "operator new(unsigned long)"
    with tempfile.NamedTemporaryFile() as profile:
        callgrind(command, f"--separate-callers16={function}", out=profile.name)
        names, called, counts = {}, "", {"core": 0, "desk": 0}
        for line in pathlib.Path(profile.name).read_text().splitlines():
            # The profile writes a name once, and its number from then on.
            if named := re.match(r"c?fn=(\(\d+\))(?: (.*))?", line):
                names.setdefault(named[1], named[2])
                called = names[named[1]]
            elif (count := re.match(r"calls=(\d+)", line)) and called.startswith(function + "'"):
                by = "desk" if is_desk_caller(called.split("'")[1:]) else "core"
                counts[by] += int(count[1])
    return counts


def core_figures(build):
    """{subject: instructions per event}"""
    rounds = 100
    return {subject: round(callgrind([build / "benchmarks/core_instructions", subject, rounds])[0]
                           / rounds / events)
            for subject, (events, _) in CORE_SUBJECTS.items()}


def committed_figures():
    return json.loads(CORE_FIGURES.read_text()) if CORE_FIGURES.exists() else {}


def check_core(build):
    """Compares with the committed figures. Returns the exit status."""
    known = committed_figures().get(system())
    if not known:
        print(f"bench: skipped the instructions of the core: no figures for {system()}")
        return 0
    worse = False
    for subject, now in core_figures(build).items():
        change = now / known[subject] - 1
        verdict = "ok"
        if change > TOLERANCE:
            worse, verdict = True, "not ok"
        elif change < -TOLERANCE:
            verdict = "better"
        print(f"{verdict} {CORE_SUBJECTS[subject][1]}: {now:,} instructions, "
              f"{known[subject]:,} committed ({change:+.1%})")
    if (by_core := allocations([build / "benchmarks/core_instructions", "volume", 100])["core"]) > 0:
        worse = True
        print(f"not ok {CORE_SUBJECTS['volume'][1]}: the core allocates memory, "
              f"{by_core} times in 200 events")
    if worse:
        print("The core takes more instructions than before. If that is worth it, run "
              "script/bench --update and commit benchmarks/core-instructions.json.")
    return int(worse)


def update_core(build):
    figures = committed_figures()
    figures[system()] = core_figures(build)
    CORE_FIGURES.write_text(json.dumps(figures, indent=2, sort_keys=True) + "\n")
    print(f"bench: wrote {CORE_FIGURES.relative_to(ROOT)} for {system()}")
    return 0


# --- The benchmarks -----------------------------------------------------------------------------

FAILURES = []


def run(build, quick, command):
    """Runs a benchmark's program and returns the results that it prints."""
    name = command[0]
    out = subprocess.run([str(build / "benchmarks" / name), *map(str, command[1:])],
                         stdout=subprocess.PIPE, text=True, timeout=TIMEOUT, check=False)
    results = [json.loads(line) for line in out.stdout.splitlines() if line.startswith("{")]
    if out.returncode != 0:
        FAILURES.append(f"{name} exited with {out.returncode}; its results so far count")
    for reason in dict.fromkeys(result["skipped"] for result in results if "skipped" in result):
        print(f"bench: {name}: skipped {reason}", flush=True)
    return [result for result in results if "skipped" not in result]


def core(build, quick):
    results, rounds = [], 100
    for subject, count in core_figures(build).items():
        events, what = CORE_SUBJECTS[subject]
        results.append({"name": what, "unit": "instructions", "program": [count], "baselines": {}})
        by = allocations([build / "benchmarks/core_instructions", subject, rounds])
        results.append({"name": what, "unit": "allocations by the core", "baselines": {},
                        "program": [by["core"] / rounds / events]})
        results.append({"name": what, "unit": "allocations by the simulated desk", "baselines": {},
                        "program": [by["desk"] / rounds / events]})
    return results


def press(build, quick):
    return run(build, quick, ["press_cost", build / "platform/linux/hushbox", 10 if quick else 60])


def poll(build, quick):
    return run(build, quick, ["poll_cost", *((5, 2) if quick else (20, 5))])


def idle(build, quick):
    return run(build, quick, ["idle_cost", build / "platform/linux/hushbox",
                              20 if quick else IDLE_SECONDS])


def first_look(build, quick):
    return run(build, quick, ["first_look", 1 if quick else 4])


def frozen(build, quick):
    return run(build, quick, ["frozen_cost", 1 if quick else 2])


def start(build, quick):
    return run(build, quick, ["start_cost", build / "platform/linux/hushbox"])


def redraw(build, quick):
    rounds = 20
    results = [{"name": f"drawing the icon, {size} pixels", "unit": "instructions", "baselines": {},
                "program": [callgrind([build / "benchmarks/redraw_instructions", size, rounds])[0] / rounds]}
               for size in (18, 36)]
    out = subprocess.run([str(build / "benchmarks/core_instructions"), "unchanged", "3600"],
                         capture_output=True, text=True, check=True).stdout
    announcements = int(re.search(r"announcements (\d+)", out)[1])
    results.append({"name": f"{announcements:,} announcements that change nothing", "unit": "redraws",
                    "baselines": {}, "program": [int(re.search(r"redraws (\d+)", out)[1])],
                    "goal": {"bound": 0, "statistic": "maximum"}})
    return results


def point(plot, unit, axis, x, samples):
    return {"name": plot.lower(), "unit": unit, "program": samples, "baselines": {},
            "point": {"plot": plot, "axis": axis, "series": "", "x": x}}


def growth(build, quick):
    """What grows on the simulated desk. The other programs print points of growth themselves."""
    program, rounds, results = build / "benchmarks/core_instructions", 20, []
    for devices in (1, 10, 100, 1000):
        count = callgrind([program, "devices", rounds, devices])[0] / rounds
        results.append(point("Change of the device list by number of devices", "instructions",
                             "devices", devices, [count]))
    for hours in (1, 6, 12, 24):
        out = subprocess.run([str(program), "hours", str(hours)], capture_output=True, text=True, check=True)
        results.append(point("Memory blocks left over by hours of a call", "blocks", "simulated hours",
                             hours, [int(re.search(r"left (-?\d+)", out.stdout)[1])]))
    return results


# In the order in which they run, and the program that each needs.
BENCHMARKS = {"core": (core, "valgrind"), "redraw": (redraw, "valgrind"), "start": (start, None),
              "growth": (growth, "valgrind"),
              "press": (press, None), "poll": (poll, None),
              "first-look": (first_look, None), "frozen": (frozen, None), "idle": (idle, None)}


def environment():
    """What the figures were taken on, in one line."""
    def first_line(*command):
        try:
            return subprocess.run(command, capture_output=True, text=True, check=False).stdout.split("\n")[0]
        except OSError:
            return ""
    model = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    browser = re.search(r"\d+", first_line("chromium", "--version"))
    return (f"Taken on {datetime.date.today()} with {system()}, Chromium {browser[0] if browser else '?'}, "
            f"{first_line('pulseaudio', '--version')}, {os.cpu_count()} processors "
            f"({model[1].strip() if model else 'unknown'}), load {os.getloadavg()[0]:.1f} at the start.")


def write_page(tables):
    """Replaces the text between the markers of each name."""
    text = PAGE.read_text(encoding="utf-8")
    for name, table in tables.items():
        start, end = f"<!-- bench: {name} -->\n", "<!-- end -->"
        if start not in text:
            sys.exit(f"bench: docs/performance.md has no marker for {name}")
        before, after = text.split(start, 1)
        text = before + start + table + "\n" + after[after.index(end):]
    PAGE.write_text(text, encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--quick", action="store_true", help="take few samples")
    parser.add_argument("--long", action="store_true", help="idle for ten minutes instead of one")
    parser.add_argument("--write", action="store_true", help="write the page after --quick too")
    parser.add_argument("--check", action="store_true", help="check the instructions of the core")
    parser.add_argument("--update", action="store_true", help="commit to the instructions of the core")
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("names", nargs="*", metavar="NAME", help="of " + ", ".join(BENCHMARKS))
    options = parser.parse_intermixed_args()
    if options.check:
        return check_core(options.build)
    if options.update:
        return update_core(options.build)
    global IDLE_SECONDS
    IDLE_SECONDS = 600 if options.long else IDLE_SECONDS
    unknown = set(options.names) - set(BENCHMARKS)
    if unknown:
        parser.error("no such benchmark: " + ", ".join(sorted(unknown)))
    tables, images = {"environment": environment()}, {}
    for name in options.names or BENCHMARKS:
        measure, tool = BENCHMARKS[name]
        if tool and not shutil.which(tool):
            print(f"bench: {name}: skipped, because {tool} is not installed")
            continue
        began = time.monotonic()
        try:
            results = measure(options.build, options.quick)
        except (RuntimeError, OSError, subprocess.SubprocessError) as error:
            FAILURES.append(f"{name}: {error}")
            continue
        print(f"\n== {name} ({time.monotonic() - began:.0f} s)\n{plain(results)}", flush=True)
        table = [each for each in results if "point" not in each]
        if table:
            tables[name] = markdown(table)
        images.update(plots(results))
    if not options.quick or options.write:
        write_page(tables)
        PLOTS.mkdir(exist_ok=True)
        for file, image in images.items():
            (PLOTS / file).write_text(image, encoding="utf-8")
        print("\nbench: wrote docs/performance.md")
    for failure in FAILURES:
        print(f"bench: failed: {failure}")
    return int(bool(FAILURES))


if __name__ == "__main__":
    sys.exit(main())
