function main()
    local round, size, matches = 0, 0, 0
    while round < 400 do
        local i, text, line = 0, "", ""
        while i < 300 do
            line = "item " .. i .. "; "
            if line == "item 7; " then matches = matches + 1 end
            text = text .. line
            i = i + 1
        end
        size = size + #text
        round = round + 1
    end
    return size + matches
end
