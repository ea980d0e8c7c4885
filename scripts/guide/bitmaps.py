"""Pictures as rows of (red, green, blue, alpha): read from the BMP files of `kst image convert`, written as PNG."""

import math
import struct
import zlib


class Picture:
    def __init__(self, width, height, rows):
        self.width, self.height, self.rows = width, height, rows

    def crop(self, x, y, width, height):
        return Picture(width, height, [row[x : x + width] for row in self.rows[y : y + height]])

    def channel(self, index):
        """One channel in all four."""
        return Picture(self.width, self.height, [[(pixel[index],) * 4 for pixel in row] for row in self.rows])

    def enlarged(self, factor):
        """Each pixel becomes a square, so that what was stored can be seen."""
        rows = [[pixel for pixel in row for _ in range(factor)] for row in self.rows]
        return Picture(self.width * factor, self.height * factor, [row for row in rows for _ in range(factor)])

    def on_checks(self, size=8):
        """What alpha lets through, as artists are used to see it."""
        rows = []
        for y, row in enumerate(self.rows):
            checks = (204 if (x // size + y // size) % 2 else 153 for x in range(self.width))
            rows.append([tuple((c * p[3] + check * (255 - p[3])) // 255 for c in p[:3]) + (255,)
                         for p, check in zip(row, checks)])
        return Picture(self.width, self.height, rows)


def read_bmp(path):
    with open(path, "rb") as file:
        data = file.read()
    start, = struct.unpack_from("<I", data, 10)
    width, height = struct.unpack_from("<ii", data, 18)
    bits, = struct.unpack_from("<H", data, 28)
    if data[:2] != b"BM" or bits != 32:
        raise ValueError(f"{path} is no BMP of 32 bits")
    rows = []
    for y in range(abs(height)):
        row = data[start + y * width * 4 : start + (y + 1) * width * 4]
        rows.append(list(zip(row[2::4], row[1::4], row[0::4], row[3::4])))
    return Picture(width, abs(height), rows if height < 0 else rows[::-1])


def paeth(left, above, corner):
    """Whichever is nearest to left + above - corner."""
    return min((left, above, corner), key=lambda value: abs(left + above - corner - value))


def write_png(path, picture):
    """Opaque pictures: red, green and blue. Each row takes the filter with the smallest bytes, which tends to pack best."""
    raw = bytearray()
    above = bytes(picture.width * 3)
    for row in picture.rows:
        line = bytes(channel for pixel in row for channel in pixel[:3])
        left, corner = b"\0\0\0" + line, b"\0\0\0" + above
        candidates = [
            line,
            bytes((a - b) & 255 for a, b in zip(line, left)),
            bytes((a - b) & 255 for a, b in zip(line, above)),
            bytes((a - (b + c) // 2) & 255 for a, b, c in zip(line, left, above)),
            bytes((a - paeth(b, c, d)) & 255 for a, b, c, d in zip(line, left, above, corner)),
        ]
        costs = [sum(min(byte, 256 - byte) for byte in candidate) for candidate in candidates]
        best = costs.index(min(costs))
        raw += bytes([best]) + candidates[best]
        above = line

    def chunk(kind, body):
        return struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body))

    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n")
        file.write(chunk(b"IHDR", struct.pack(">IIBBBBB", picture.width, picture.height, 8, 2, 0, 0, 0)))
        file.write(chunk(b"IDAT", zlib.compress(bytes(raw), 9)))
        file.write(chunk(b"IEND", b""))


def beside(pictures, gap=8):
    """The pictures in a row, top edges level, on white."""
    white = (255, 255, 255, 255)
    height = max(picture.height for picture in pictures)
    rows = []
    for y in range(height):
        row = []
        for number, picture in enumerate(pictures):
            row += [white] * gap if number else []
            row += picture.rows[y] if y < picture.height else [white] * picture.width
        rows.append(row)
    return Picture(len(rows[0]), height, rows)


def psnr(a, b, channels):
    """In decibels; infinite for equal pictures."""
    total = sum((p[c] - q[c]) ** 2 for r, s in zip(a.rows, b.rows) for p, q in zip(r, s) for c in channels)
    count = a.width * a.height * len(channels)
    return math.inf if total == 0 else 10 * math.log10(255 * 255 * count / total)


def linear_mean(picture):
    """Mean of red, green and blue in linear light, 0 to 1, each channel alike."""
    curve = [(value / 255) ** 2.2 for value in range(256)]
    total = sum(curve[p[0]] + curve[p[1]] + curve[p[2]] for row in picture.rows for p in row)
    return total / (picture.width * picture.height * 3)


def contrast(picture):
    """Mean difference between neighbours along both axes: more is sharper."""
    total = count = 0
    for upper, lower in zip(picture.rows, picture.rows[1:]):
        for x in range(picture.width - 1):
            total += sum(abs(upper[x][c] - upper[x + 1][c]) + abs(upper[x][c] - lower[x][c]) for c in range(3))
            count += 6
    return total / count


def overshoot(top, half):
    """Share of the values of level 1 that lie more than 8 outside the range of the 6 x 6 values that they stand for:
    fringes that the picture never had."""
    outside = 0
    for y, row in enumerate(half.rows):
        around = top.rows[max(2 * y - 2, 0) : 2 * y + 4]
        for x, pixel in enumerate(row):
            near = [source for line in around for source in line[max(2 * x - 2, 0) : 2 * x + 4]]
            for c in range(3):
                values = [source[c] for source in near]
                outside += not min(values) - 8 <= pixel[c] <= max(values) + 8
    return outside / (half.width * half.height * 3)
