local sum

local function for_each(list, f)
    for i = 1, #list do f(list[i]) end
end

local function add(x) sum = sum + x end

function main()
    local round, best = 0, 0
    while round < 100 do
        local i, numbers = 0, {}
        while i < 3000 do
            numbers[#numbers + 1] = i * 0.5
            i = i + 1
        end
        sum = 0
        for_each(numbers, add)
        if sum > best then best = sum end
        round = round + 1
    end
    return best
end
