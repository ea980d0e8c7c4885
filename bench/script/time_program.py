"""python3 time_program.py PROGRAM RUNS: the result of main, and the least processor time of a run in seconds."""

import runpy
import sys
import time

main = runpy.run_path(sys.argv[1])["main"]
best = float("inf")
result = None
for _ in range(int(sys.argv[2])):
    start = time.process_time()
    result = main()
    best = min(best, time.process_time() - start)
print(f"{result:.8g} {best:.6f}")
