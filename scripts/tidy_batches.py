#!/usr/bin/env python3
"""tidy_batches.py COMPILE_COMMANDS SCRATCH [SOURCE...]: clang-tidy over the sources listed, or those named.

Nine tenths of the time of a source go into the headers it includes, so sources of equal flags are included
together by one file in the folder SCRATCH. Neighbours often have helpers of equal names and do not compile
together; therefore a batch takes every n-th source, and one that does not compile is cut in halves. Prints what
clang-tidy prints. Exit status 1 if clang-tidy did not end well.
"""
import collections
import concurrent.futures
import itertools
import json
import os
import re
import shlex
import subprocess
import sys

SOURCES_PER_BATCH = 18


def flags_of(entry):
    words = shlex.split(re.sub(r" -o .*", "", entry["command"]))
    return tuple(words[1:])


def plan(entries):
    groups = collections.defaultdict(list)
    for entry in entries:
        groups[flags_of(entry)].append(entry["file"])
    for flags, sources in groups.items():
        count = -(-len(sources) // SOURCES_PER_BATCH)
        for first in range(count):
            yield flags, sources[first::count]


class Checker:
    def __init__(self, scratch):
        self.scratch = scratch
        self.numbers = itertools.count()

    def write_batch(self, sources):
        path = os.path.join(self.scratch, f"batch_{next(self.numbers)}.cpp")
        with open(path, "w", encoding="utf-8") as file:
            file.writelines(f'#include "{source}"\n' for source in sources)
        return path

    def compiles(self, flags, path):
        command = ["clang++", *flags, "-w", "-fsyntax-only", path]
        return subprocess.run(command, capture_output=True, check=False).returncode == 0

    def check(self, batch):
        flags, sources = batch
        path = sources[0] if len(sources) == 1 else self.write_batch(sources)
        if len(sources) > 1 and not self.compiles(flags, path):
            half = len(sources) // 2
            return self.check((flags, sources[:half])) + self.check((flags, sources[half:]))
        # A batch includes sources on purpose.
        command = ["clang-tidy", "--quiet", "--config-file=.clang-tidy", "--checks=-bugprone-suspicious-include",
                   path, "--", *flags]
        return [subprocess.run(command, capture_output=True, text=True, check=False)]


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        entries = json.load(file)
    wanted = {os.path.abspath(source) for source in sys.argv[3:]}
    entries = [entry for entry in entries if not wanted or entry["file"] in wanted]
    if not entries:
        sys.exit("no sources found")
    batches = list(plan(entries))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(itertools.chain.from_iterable(pool.map(Checker(sys.argv[2]).check, batches)))
    for result in results:
        sys.stdout.write(result.stdout)
        sys.stderr.write(result.stderr)
    return int(any(result.returncode != 0 for result in results))


if __name__ == "__main__":
    sys.exit(main())
