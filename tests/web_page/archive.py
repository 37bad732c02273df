"""A second reader of the archives, for what the page must say of them.

It shares nothing with the program under test: block files, directory tree, land blocks and the
heights of the region record are read from the bytes here."""

import struct
from dataclasses import dataclass

SIDE = 9
LAND_BLOCK = 0xFFFF
OBJECT_BLOCK = 0xFFFE
REGION = 0x13000000


class Archive:
    """All files of one archive, by identifier."""

    def __init__(self, path):
        self.bytes = path.read_bytes()
        self.block_size, = struct.unpack_from("<I", self.bytes, 324)
        root, = struct.unpack_from("<I", self.bytes, 352)
        self.files = {}
        self.read_directory(root)

    def chain(self, offset, length):
        parts, left = [], length
        while left > 0:
            following, = struct.unpack_from("<I", self.bytes, offset)
            part = self.bytes[offset + 4:offset + min(self.block_size, left + 4)]
            parts.append(part)
            left -= len(part)
            offset = following
        return b"".join(parts)

    def read_directory(self, offset):
        node = self.chain(offset, 1740)
        count, = struct.unpack_from("<I", node, 248)
        children = struct.unpack_from(f"<{count + 1}I", node)
        for index in range(count):
            _, identifier, start, size, _, _ = struct.unpack_from("<6I", node, 252 + 24 * index)
            self.files[identifier] = (start, size)
        for child in children:
            if child in (0, 0xCDCDCDCD):
                break
            self.read_directory(child)

    def read(self, identifier):
        return self.chain(*self.files[identifier])


@dataclass
class Block:
    words: tuple
    heights: bytes
    has_objects: bool


def type_names(region):
    """Names of the land types, found by the first of them: each a text of 16 bits' length, aligned,
    then a colour and a list of words."""
    at, names = region.index(b"\x0b\0Barren Rock"), []
    while len(names) < 33:
        length, = struct.unpack_from("<H", region, at)
        names.append(region[at + 2:at + 2 + length].decode("cp1252"))
        at += (2 + length + 3) // 4 * 4 + 4
        count, = struct.unpack_from("<I", region, at)
        at += 4 + 4 * count
    return names


class World:
    """The land of a directory with archives."""

    def __init__(self, directory):
        self.cells = Archive(directory / "client_cell_1.dat")
        region = Archive(directory / "client_portal.dat").read(REGION)
        name_length, = struct.unpack_from("<H", region, 12)
        self.heights = struct.unpack_from("<256f", region, 14 + name_length + 32)
        self.type_names = type_names(region)
        self.blocks = {}
        for identifier in self.cells.files:
            if identifier & 0xFFFF == LAND_BLOCK and identifier != 0xFFFFFFFF:
                self.blocks[identifier >> 16] = self.block(identifier)

    def block(self, identifier):
        record = self.cells.read(identifier)
        flag, = struct.unpack_from("<I", record, 4)
        return Block(struct.unpack_from("<81H", record, 8), record[170:251], flag == 1)

    def point(self, x, y):
        """Terrain word and height index of a land point. Of the blocks that share it the one with
        the greatest number counts."""
        numbers = [column << 8 | row
                   for column in {x // 8, (x - 1) // 8} for row in {y // 8, (y - 1) // 8}]
        for number in sorted(numbers, reverse=True):
            if number in self.blocks:
                block = self.blocks[number]
                element = (x - (number >> 8) * 8) * SIDE + y - (number & 0xFF) * 8
                return block.words[element], block.heights[element]
        return None

    def type_name(self, kind):
        return self.type_names[kind].lower().capitalize()

    def type_and_height(self, x, y):
        word, index = self.point(x, y)
        return 32 if word & 3 else (word & 0xFF) >> 2, self.heights[index]
