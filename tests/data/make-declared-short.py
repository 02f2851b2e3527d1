#!/usr/bin/env python3
"""Makes declared/declared_short.mxf: xdcamhd422_1080i25.mxf whose header metadata declares 24 frames
where the file holds 25, as some writers' long-GOP files do. Every Duration (local tag 0202) and
ContainerDuration (3002) of 25 in the header metadata becomes 24; the essence, the index table
(IndexDuration 25) and the footer (no metadata) stay as they are. The file then still holds the
bytes behind the original's essence digests (expected/xdcamhd422_1080i25.essence-md5.txt).
It lives in a folder of its own, so that the tests that take every fixture of this folder, and
their counts, stay as they are; its expectations are in expected/declared/.

    make-declared-short.py [DIR]    reads DIR/xdcamhd422_1080i25.mxf (default: this script's dir)
"""
import os
import struct
import sys

DIR = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__))
SRC = os.path.join(DIR, "xdcamhd422_1080i25.mxf")
OUT = os.path.join(DIR, "declared", "declared_short.mxf")
DURATION_TAGS = (0x0202, 0x3002)
PARTITION_PREFIX = bytes.fromhex("060e2b34020501010d01020101")
FILL = bytes.fromhex("0301021001")
PRIMER = bytes.fromhex("0d01020101050100")
LOCAL_SET_PREFIX = bytes.fromhex("060e2b34025301010d010101")


def ber(data, at):
    first = data[at]
    if first < 0x80:
        return first, at + 1
    n = first & 0x7F
    return int.from_bytes(data[at + 1:at + 1 + n], "big"), at + 1 + n


def main():
    data = bytearray(open(SRC, "rb").read())
    assert data[:13] == PARTITION_PREFIX and data[13] == 0x02, "no header partition pack at 0"
    pack_len, pack_value = ber(data, 16)
    header_byte_count = struct.unpack(">Q", data[pack_value + 32:pack_value + 40])[0]
    # The metadata starts at the primer, after the pack and the fill that follows it.
    at = pack_value + pack_len
    if data[at + 8:at + 13] == FILL:
        fill_len, fill_value = ber(data, at + 16)
        at = fill_value + fill_len
    assert data[at + 8:at + 16] == PRIMER, "no primer pack at %d" % at
    end = at + header_byte_count
    changed = []
    while at < end:
        length, value = ber(data, at + 16)
        if data[at:at + 12] == LOCAL_SET_PREFIX:
            p = value
            while p < value + length:
                tag, size = struct.unpack(">HH", data[p:p + 4])
                if tag in DURATION_TAGS and size == 8:
                    old = struct.unpack(">q", data[p + 4:p + 12])[0]
                    if old == 25:
                        data[p + 4:p + 12] = struct.pack(">q", 24)
                        changed.append((p + 4, tag))
                p += 4 + size
            assert p == value + length, "local set overruns at %d" % at
        at = value + length
    assert at == end, "metadata does not end at HeaderByteCount"
    assert changed, "no duration of 25 found"
    os.makedirs(os.path.dirname(OUT), exist_ok=True)
    open(OUT, "wb").write(data)
    print("declared_short.mxf: %d durations 25 -> 24, from %d to %d"
          % (len(changed), changed[0][0], changed[-1][0]))


main()
