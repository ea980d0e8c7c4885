#!/usr/bin/env bash
# Prints the table of docs/memory.md: new and delete through the allocator chain, the C library, mimalloc and jemalloc.
# Needs the bench preset built, and libmimalloc2.0 and libjemalloc2 from Debian. The four take turns size by size, so that
# a busy machine is busy for all of them. Takes about a minute.
set -euo pipefail
cd "$(dirname "$0")/.."
bench=build/bench/bench/utility
libraries=/usr/lib/$(uname -m)-linux-gnu

run() { # allocator, filter
    local program=$bench/bench_utility_memory preload=
    case $1 in
        chain) program=$bench/bench_utility_memory_chain ;;
        mimalloc) preload=$libraries/libmimalloc.so.2.0 ;;
        jemalloc) preload=$libraries/libjemalloc.so.2 ;;
    esac
    LD_PRELOAD=$preload "$program" --benchmark_filter="$2" --benchmark_format=csv 2>/dev/null |
        awk -F, -v who="$1" '/^"/ { gsub(/"/, "", $1); split($1, part, "/"); print who, part[1], part[2], part[3], part[4], $NF }'
}

for size in 4 16 20 24 64 512; do
    for allocator in chain libc mimalloc jemalloc; do
        # A process that had a second thread takes locks ever after, so the rows with one thread have their own.
        run $allocator "^pairs/$size/.*/threads:1"
        run $allocator "^pairs/$size/.*/threads:2"
        run $allocator "^overhead/$size/"
    done
done | awk '
    $2 == "pairs" { time[$1, $3, $4, $5] = $6 }
    $2 == "overhead" { extra[$1, $3] = $NF }
    END {
        split("chain libc mimalloc jemalloc", who, " ")
        for (threads = 1; threads <= 2; ++threads) {
            printf "%s, nanoseconds for one new and delete:\n\n", threads == 1 ? "One thread" : "Two threads"
            print "| bytes | order | chain | C library | mimalloc | jemalloc | chain / C library | chain / mimalloc |"
            print "|---|---|---|---|---|---|---|---|"
            for (s = 1; s <= split("4 16 20 24 64 512", size, " "); ++s)
                for (o = 1; o <= split("LIFO FIFO random", order, " "); ++o) {
                    printf "| %d | %s |", size[s], order[o]
                    for (w = 1; w <= 4; ++w) printf " %.1f |", time[who[w], size[s], order[o], threads]
                    ours = time["chain", size[s], order[o], threads]
                    printf " %.2f | %.2f |\n", ours / time["libc", size[s], order[o], threads], ours / time["mimalloc", size[s], order[o], threads]
                }
            print ""
        }
        print "Memory beyond its own bytes that the process grows by for each object:\n"
        print "| bytes | chain | C library | mimalloc | jemalloc |"
        print "|---|---|---|---|---|"
        for (s = 1; s <= 6; ++s) {
            printf "| %d |", size[s]
            for (w = 1; w <= 4; ++w) printf " %.1f |", extra[who[w], size[s]]
            print ""
        }
    }'
