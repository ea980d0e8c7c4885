function main()
    local outer, sum, best = 0, 0, 0
    while outer < 500 do
        local i = 0
        sum = 0
        while i < 2000 do
            local x = i * 0.25 - 16
            if x > 0 then sum = sum + x / 2 else sum = sum - x end
            i = i + 1
        end
        if sum > best then best = sum end
        outer = outer + 1
    end
    return best
end
