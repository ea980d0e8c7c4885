#!/usr/bin/env python3
"""Times the programs of this folder beside their twins in Lua 5.4 and Python 3, and prints one table.

usage: compare.py script_time_program [ROUNDS]

Each language times `main` within its own process, so that starting up and compiling count nowhere. The processes of
the three take turns, and the best of all runs counts. Programs that do not agree on their result are an error.
"""

import os
import subprocess
import sys

FOLDER = os.path.dirname(os.path.abspath(__file__))
PROGRAMS = ["fib", "loop", "strings", "vectors", "methods"]
RUNS = "5"


def timed(command, program, ending):
    path = os.path.join(FOLDER, "programs", program + ending)
    done = subprocess.run(command + [path, RUNS], capture_output=True, text=True)
    if done.returncode != 0:
        return None, done.stderr.strip()
    result, seconds = done.stdout.split()
    return result, float(seconds)


def main():
    ours = [sys.argv[1]]
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 3
    lua = ["lua5.4", os.path.join(FOLDER, "time_program.lua")]
    python = ["/usr/bin/python3", os.path.join(FOLDER, "time_program.py")]
    print(f"{'program':10}{'script ms':>11}{'Lua ms':>9}{'Python ms':>11}{'of Lua':>9}{'of Python':>11}")
    failed = False
    for program in PROGRAMS:
        best = [float("inf")] * 3
        for _ in range(rounds):
            outcomes = [timed(ours, program, ".kvs"), timed(lua, program, ".lua"), timed(python, program, ".py")]
            faults = [outcome[1] for outcome in outcomes if outcome[0] is None]
            if faults or len({outcome[0] for outcome in outcomes}) != 1:
                print(f"{program:10} {faults[0] if faults else 'results differ: ' + str(outcomes)}")
                failed = True
                break
            best = [min(old, outcome[1]) for old, outcome in zip(best, outcomes)]
        else:
            a, b, c = best
            print(f"{program:10}{a * 1e3:11.1f}{b * 1e3:9.1f}{c * 1e3:11.1f}{a / b:9.2f}{a / c:11.2f}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
