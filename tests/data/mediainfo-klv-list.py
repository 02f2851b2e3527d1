#!/usr/bin/env python3
"""Reduce a MediaInfo KLV trace (mediainfo --Details=1) to two plain lists.

Only the text of the trace is used, never the MXF file, so the lists stay an
independent expectation for our own parser.

A trace line is "HEXOFFSET<space><indent>TEXT"; one space of indent per level.
Level 0 is a top-level KLV item ("002E00 Closed and Complete Body Partition
Pack (156 bytes)", the size counting key + length + value) or a "--- MXF,
... ---" progress banner.  Below an item, level 1 "Header (N bytes)" holds
level 2 "Code (16 bytes)" with one level-3 line per key byte (sometimes a few
bytes grouped, as "(0x0000000200000000)") and level 2 "Length:" lines: the
first BER byte, then the decoded length for long-form lengths.  Partition
pack fields are level-1 lines "ThisPartition:   11776 (0x...)".

Output (columns separated by one space, "-" when the trace lacks the value):
  --klv:        OFFSET KEY_HEX LENGTH NAME
  --partitions: OFFSET KIND STATUS COMPLETENESS ThisPartition PreviousPartition
                FooterPartition HeaderByteCount IndexByteCount IndexSID
                BodySID KAG
OFFSET is decimal, LENGTH is the value length (without key and length).

Top-level lines that are no KLV item go to the KLV list as "#" comments, in
place: the banners ("MXF, accepted", "MXF, finished": where mediainfo stopped),
essence traced in chunks without its key and length (clip-wrapped OP-Atom, or
an element whose length runs past the end), and "Synchronisation lost".
"""

import argparse
import re
import sys

LINE = re.compile(r"^([0-9A-Fa-f]+) ( *)(.*)$")
SIZED = re.compile(r"^(.*) \((\d+) bytes\)$")
HEX_VALUE = re.compile(r"\(0x([0-9A-Fa-f]+)\)")

PARTITION_FIELDS = ["ThisPartition", "PreviousPartition", "FooterPartition",
                    "HeaderByteCount", "IndexByteCount", "IndexSID", "BodySID",
                    "KAGSize"]


class Item:
    def __init__(self, offset, name, size):
        self.offset = offset
        self.name = name
        self.size = size          # key + length + value, as mediainfo says
        self.key = {}             # byte index -> 2 hex digits
        self.lengths = []         # "Length:" values under Header, in order
        self.header_size = None
        self.fields = {}          # level-1 "Name: value" pairs

    def key_hex(self):
        if sorted(self.key) != list(range(16)):
            return "-"
        return "".join(self.key[i] for i in range(16))

    def value_length(self):
        if self.lengths:
            return str(self.lengths[-1])
        if self.size is not None and self.header_size is not None:
            return str(self.size - self.header_size)
        return "-"


def field_value(text):
    """'KAGSize:     512 (0x00000200)' -> ('KAGSize', '512 (0x00000200)')."""
    name, sep, value = text.partition(":")
    if not sep:
        return None, None
    return name.strip(), value.strip()


class Note:
    """A top-level trace line that is not a KLV item: a progress banner."""
    def __init__(self, offset, text):
        self.offset = offset
        self.text = text


def parse(lines):
    items = []
    item = None
    code_offset = None       # offset of the key while inside "Code (16 bytes)"
    in_header = False
    for raw in lines:
        m = LINE.match(raw.rstrip("\n"))
        if not m:
            continue
        offset, depth, text = int(m.group(1), 16), len(m.group(2)), m.group(3)
        if depth == 0:
            code_offset, in_header = None, False
            if text.startswith("---"):
                item = None   # progress banner, not a KLV item
                banner = text.strip("- ")   # the rule lines around it are empty
                if banner:
                    items.append(Note(offset, banner))
                continue
            sized = SIZED.match(text)
            if sized:
                item = Item(offset, sized.group(1), int(sized.group(2)))
            else:
                name, _ = field_value(text)   # "Synchronisation lost:   0 (0x0)"
                item = Item(offset, name or text, None)
            items.append(item)
            continue
        if item is None:
            continue
        if depth == 1:
            code_offset = None
            in_header = text.startswith("Header (")
            if in_header:
                item.header_size = int(SIZED.match(text).group(2))
            else:
                name, value = field_value(text)
                if name and name not in item.fields:
                    item.fields[name] = value
        elif depth == 2 and in_header:
            code_offset = offset if text.startswith("Code (16 bytes)") else None
            name, value = field_value(text)
            if name == "Length":
                item.lengths.append(int(value.split()[0]))
        elif depth == 3 and code_offset is not None:
            # The label before ':' may itself hold "(0x06)"; read the value side.
            _, value = field_value(text)
            hv = HEX_VALUE.search(value or "")
            if hv and len(hv.group(1)) % 2 == 0:
                digits = hv.group(1).lower()
                first = offset - code_offset
                for i in range(len(digits) // 2):
                    if 0 <= first + i < 16:
                        item.key[first + i] = digits[2 * i:2 * i + 2]
    return items


def partition_line(item):
    words = item.name.split()
    kind = next((w.lower() for w in words if w in ("Header", "Body", "Footer")), "-")
    status = next((w.lower() for w in words if w in ("Open", "Closed")), "-")
    complete = next((w.lower() for w in words if w in ("Complete", "Incomplete")), "-")
    cols = [str(item.offset), kind, status, complete]
    for f in PARTITION_FIELDS:
        v = item.fields.get(f)
        cols.append(v.split()[0] if v else "-")
    return " ".join(cols)


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("trace", help="output of mediainfo --Details=1 FILE")
    ap.add_argument("--klv", required=True, help="where to write the KLV list")
    ap.add_argument("--partitions", required=True, help="where to write the partition list")
    args = ap.parse_args()

    with open(args.trace, encoding="utf-8", errors="replace") as f:
        items = parse(f)

    with open(args.klv, "w") as out:
        out.write("# OFFSET KEY_HEX LENGTH NAME  (from mediainfo --Details=1)\n")
        for it in items:
            if isinstance(it, Note):
                out.write(f"# {it.offset} mediainfo: {it.text}\n")
            elif it.header_size is None:
                # Essence shown in chunks, or "Synchronisation lost": mediainfo
                # traced no key or length here, so this is no KLV item.
                size = f" ({it.size} bytes)" if it.size is not None else ""
                out.write(f"# {it.offset} no KLV header traced: {it.name}{size}\n")
            else:
                out.write(f"{it.offset} {it.key_hex()} {it.value_length()} {it.name}\n")

    with open(args.partitions, "w") as out:
        out.write("# OFFSET KIND STATUS COMPLETENESS " + " ".join(PARTITION_FIELDS[:-1])
                  + " KAG  (from mediainfo --Details=1)\n")
        for it in items:
            if isinstance(it, Item) and it.header_size is not None and "Partition Pack" in it.name:
                out.write(partition_line(it) + "\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
