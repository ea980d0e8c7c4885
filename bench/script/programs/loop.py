def main():
    outer = 0
    sum = 0
    best = 0
    while outer < 500:
        i = 0
        sum = 0
        while i < 2000:
            x = i * 0.25 - 16
            if x > 0:
                sum = sum + x / 2
            else:
                sum = sum - x
            i = i + 1
        if sum > best:
            best = sum
        outer = outer + 1
    return best
