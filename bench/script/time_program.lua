-- lua5.4 time_program.lua PROGRAM RUNS: the result of main, and the least processor time of a run in seconds.
dofile(arg[1])
local best, result = math.huge, nil
for _ = 1, tonumber(arg[2]) do
    local start = os.clock()
    result = main()
    best = math.min(best, os.clock() - start)
end
print(string.format("%.8g %.6f", result, best))
