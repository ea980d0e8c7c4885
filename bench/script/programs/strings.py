def main():
    round = 0
    size = 0
    matches = 0
    while round < 400:
        i = 0
        text = ""
        line = ""
        while i < 300:
            line = "item " + str(i) + "; "
            if line == "item 7; ":
                matches = matches + 1
            text = text + line
            i = i + 1
        size = size + len(text)
        round = round + 1
    return size + matches
