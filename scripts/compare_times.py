#!/usr/bin/env python3
"""Compares the timings of two builds.

compare_times.py OLD NEW [--limit PERCENT]
    OLD and NEW are folders of results of Google Benchmark (--benchmark_out, JSON), one file for each turn.
    Prints for each benchmark both medians, the spread, the ratio and a verdict. Ends with status 1 if a
    benchmark lost more than the limit and more than the spread explains.

compare_times.py --self-test
"""

import argparse
import json
import pathlib
import statistics
import sys
import unittest

LIMIT_PERCENT = 3.0


def read_turns(folder):
    """Seconds of each benchmark, one value a run: {name: [seconds, ...]}."""
    unit_in_seconds = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
    times = {}
    for path in sorted(pathlib.Path(folder).glob("*.json")):
        for run in json.loads(path.read_text())["benchmarks"]:
            if run.get("run_type", "iteration") != "iteration":
                continue
            if run.get("error_occurred"):
                raise ValueError(f"{run['name']} failed: {run.get('error_message')}")
            seconds = run["real_time"] * unit_in_seconds[run["time_unit"]]
            times.setdefault(run["name"], []).append(seconds)
    return times


def spread(values):
    """Half the distance between the quartiles, as a part of the median."""
    if len(values) < 2:
        return 0.0
    low, _, high = statistics.quantiles(values, n=4, method="inclusive")
    return 0.5 * (high - low) / statistics.median(values)


def judge(old, new, limit):
    """Returns ratio, spread of both together, and "slower", "faster" or "same".

    A difference counts if it exceeds the limit and twice the spread. Median and quartiles stay where they are
    when a single turn of several is slow.
    """
    ratio = statistics.median(new) / statistics.median(old)
    both = spread(old) + spread(new)
    threshold = max(limit, 2.0 * both)
    if ratio > 1.0 + threshold:
        return ratio, both, "slower"
    if 1.0 / ratio > 1.0 + threshold:
        return ratio, both, "faster"
    return ratio, both, "same"


def report(old, new, limit, out=sys.stdout):
    """Prints the table; returns whether nothing got slower."""
    missing = sorted(set(old) ^ set(new))
    width = max([len(name) for name in old] + [9])
    print(f"{'benchmark':{width}}  {'old':>11}  {'new':>11}  {'spread':>7}  {'ratio':>6}  verdict", file=out)
    sound = True
    for name in old:
        if name not in new:
            continue
        ratio, both, verdict = judge(old[name], new[name], limit)
        sound = sound and verdict != "slower"
        print(
            f"{name:{width}}  {statistics.median(old[name]):9.4f} s  {statistics.median(new[name]):9.4f} s  "
            f"{100 * both:5.1f} %  {ratio:6.3f}  {verdict.upper() if verdict == 'slower' else verdict}",
            file=out,
        )
    for name in missing:
        print(f"{name:{width}}  only in {'old' if name in old else 'new'}", file=out)
    if not set(old) & set(new):
        print("nothing to compare", file=out)
        return False
    return sound


class SelfTest(unittest.TestCase):
    CASES = [
        # name, old, new, verdict
        ("equal", [1.0, 1.01, 0.99], [1.0, 1.01, 0.99], "same"),
        ("five per cent, quiet", [1.0, 1.001, 0.999], [1.05, 1.051, 1.049], "slower"),
        ("two per cent, quiet: below the limit", [1.0, 1.001, 0.999], [1.02, 1.021, 1.019], "same"),
        ("five per cent, noisy", [1.0, 1.1, 0.9, 1.2, 0.95], [1.05, 1.15, 0.95, 1.2, 1.0], "same"),
        ("one slow turn of five", [1.0, 1.0, 1.0, 1.0, 1.0], [1.0, 1.0, 9.0, 1.0, 1.0], "same"),
        ("half the time", [1.0, 1.01, 0.99], [0.5, 0.51, 0.49], "faster"),
        ("a single turn each", [1.0], [1.1], "slower"),
    ]

    def test_verdicts(self):
        for name, old, new, verdict in self.CASES:
            with self.subTest(name):
                self.assertEqual(judge(old, new, 0.03)[2], verdict)

    def test_swapping_turns_the_verdict_round(self):
        opposite = {"slower": "faster", "faster": "slower", "same": "same"}
        for name, old, new, verdict in self.CASES:
            with self.subTest(name):
                self.assertEqual(judge(new, old, 0.03)[2], opposite[verdict])

    def test_one_regression_among_many_is_red(self):
        quiet = {name: [1.0, 1.0, 1.0] for name in "abc"}
        with open("/dev/null", "w") as nowhere:
            self.assertTrue(report(quiet, quiet, 0.03, nowhere))
            self.assertFalse(report(quiet, {**quiet, "b": [1.1, 1.1, 1.1]}, 0.03, nowhere))
            self.assertFalse(report(quiet, {}, 0.03, nowhere))


def main():
    if sys.argv[1:] == ["--self-test"]:
        unittest.main(argv=sys.argv[:1])
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("old")
    parser.add_argument("new")
    parser.add_argument("--limit", type=float, default=LIMIT_PERCENT, metavar="PERCENT")
    options = parser.parse_args()
    return 0 if report(read_turns(options.old), read_turns(options.new), options.limit / 100.0) else 1


if __name__ == "__main__":
    sys.exit(main())
