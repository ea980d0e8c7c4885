sum = 0


def for_each(items, f):
    for item in items:
        f(item)


def add(x):
    global sum
    sum = sum + x


def main():
    global sum
    round = 0
    best = 0
    while round < 100:
        i = 0
        numbers = []
        while i < 3000:
            numbers.append(i * 0.5)
            i = i + 1
        sum = 0
        for_each(numbers, add)
        if sum > best:
            best = sum
        round = round + 1
    return best
