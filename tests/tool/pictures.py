"""Pictures for the tests of the tool: read from files, cut, and compared with references."""
import os
import struct
import zlib
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class Picture:
    """Rows of bytes, three for each pixel: red, green, blue."""

    ALIKE = "nothing differs any more"

    def __init__(self, width, height, rows):
        self.width, self.height, self.rows = width, height, rows

    def cut(self, left, top, width, height):
        return Picture(width, height, [row[left * 3:(left + width) * 3] for row in self.rows[top:top + height]])

    def __eq__(self, other):
        return self.rows == other.rows

    def difference(self, other):
        """The box around all pixels that differ, for the report of a failure."""
        if (self.width, self.height) != (other.width, other.height):
            return f"{self.width}x{self.height} instead of {other.width}x{other.height}"
        if self == other:
            return self.ALIKE
        lines = [y for y in range(self.height) if self.rows[y] != other.rows[y]]
        columns = [x // 3 for y in lines for x in range(self.width * 3) if self.rows[y][x] != other.rows[y][x]]
        return f"pixels {min(columns)},{lines[0]} to {max(columns)},{lines[-1]} differ"


def swap_channels(row, blue, green, red, step):
    pixels = bytearray(len(row) // step * 3)
    pixels[0::3], pixels[1::3], pixels[2::3] = row[red::step], row[green::step], row[blue::step]
    return bytes(pixels)


def read_png(path):
    """Eight bits a channel, with or without alpha, not interlaced: what the tool writes."""
    data = Path(path).read_bytes()
    place, packed = 8, b""
    while place < len(data):
        length, kind = struct.unpack_from(">I4s", data, place)
        if kind == b"IHDR":
            width, height, depth, colour, _, _, interlace = struct.unpack_from(">IIBBBBB", data, place + 8)
        elif kind == b"IDAT":
            packed += data[place + 8:place + 8 + length]
        place += 12 + length
    assert (depth, interlace) == (8, 0) and colour in (2, 6), f"{path} has another form"
    step = 4 if colour == 6 else 3
    raw, above, rows = zlib.decompress(packed), bytes(width * step), []
    for start in range(0, len(raw), width * step + 1):
        above = unfilter(raw[start], bytearray(raw[start + 1:start + 1 + width * step]), above, step)
        rows.append(swap_channels(above, blue=2, green=1, red=0, step=step))
    return Picture(width, height, rows)


def unfilter(kind, row, above, step):
    if kind == 1:
        for i in range(step, len(row)):
            row[i] = row[i] + row[i - step] & 255
    elif kind == 2:
        row = bytearray(a + b & 255 for a, b in zip(row, above))
    elif kind == 3:
        for i, up in enumerate(above):
            row[i] = row[i] + ((row[i - step] if i >= step else 0) + up >> 1) & 255
    elif kind == 4:
        for i, up in enumerate(above):
            left, corner = (row[i - step], above[i - step]) if i >= step else (0, 0)
            to_left, to_up, to_corner = abs(up - corner), abs(left - corner), abs(left + up - 2 * corner)
            nearest = left if to_left <= to_up and to_left <= to_corner else up if to_up <= to_corner else corner
            row[i] = row[i] + nearest & 255
    return row


def check_picture(test, actual, reference):
    """Every pixel must be that of the reference, which stands in the tree. With QORL_UPDATE_GOLDEN=1 in the environment
    one that differs is written anew, and the comparison still fails."""
    path = ROOT / reference
    if path.exists() and actual.read_bytes() == path.read_bytes():
        return
    difference = read_png(actual).difference(read_png(path)) if path.exists() else "there is no reference"
    if difference == Picture.ALIKE:
        return
    if os.environ.get("QORL_UPDATE_GOLDEN") == "1":
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(actual.read_bytes())
        difference += "; written anew: look at it, then run again"
    test.fail(f"{reference}: {difference}. It was made with the libraries of tests/golden/versions.txt.")
