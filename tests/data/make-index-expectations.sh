#!/usr/bin/env bash
# Writes expected/index/NAME.index.txt for every expected/NAME.mediainfo-trace.txt: the index table
# segments MediaInfo traced, item by item. Only the text of the trace is read, never an MXF file,
# so the lists stay an independent yardstick for our segment parser.
#
#   make-index-expectations.sh        (run make-expectations.sh first when the fixtures change)
#
# Output, one line each, numbers decimal, as MediaInfo prints them (Int8 fields unsigned):
#   segment OFFSET TOTAL_SIZE        key position in the file; key + length + value
#   item TAG LENGTH                  a local item, tag in hex, in file order
#   value V...                       its value: a UUID, numerator denominator, or an integer
#   array COUNT ENTRY_SIZE           NDE or NIE and the entry size of 3f09/3f0a
#   delta POS_TABLE_INDEX SLICE ELEMENT_DELTA
#   index TEMPORAL_OFFSET KEY_FRAME_OFFSET FLAGS STREAM_OFFSET [SLICE_OFFSET...] [POS_TABLE N D...]
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
mkdir -p "$here/expected/index"

for trace in "$here"/expected/*.mediainfo-trace.txt; do
  name=$(basename "$trace" .mediainfo-trace.txt)
  python3 - "$trace" >"$here/expected/index/$name.index.txt" <<'PY'
import re, sys

LINE = re.compile(r"^([0-9A-Fa-f]+) ( *)(.*)$")
FIELD = re.compile(r"^([^:]+):\s+(\S+)")
SEGMENT = re.compile(r"^Index Table \(Segment\) \((\d+) bytes\)$")

name = sys.argv[1].split("/")[-1].replace(".mediainfo-trace.txt", "")
print(f"# index table segments of {name}.mxf, from mediainfo --Details=1")
entry = None  # the delta/index line being gathered


def flush():
    global entry
    if entry:
        print(" ".join(entry))
    entry = None


inside = False
count = None
for raw in open(sys.argv[1], encoding="utf-8", errors="replace"):
    m = LINE.match(raw.rstrip("\n"))
    if not m:
        continue
    offset, indent, text = int(m.group(1), 16), len(m.group(2)), m.group(3)
    if indent == 0:
        flush()
        seg = SEGMENT.match(text)
        inside = bool(seg)
        if inside:
            print(f"segment {offset} {seg.group(1)}")
        continue
    if not inside:
        continue
    if indent == 1:
        flush()
        count = None
        continue
    f = FIELD.match(text)
    if text.startswith("Delta Entry ("):
        flush()
        entry = ["delta"]
        continue
    if text.startswith("Index Entry ("):
        flush()
        entry = ["index"]
        continue
    if not f:
        continue
    key, value = f.group(1).strip(), f.group(2)
    if indent == 3 and key == "Code":
        tag = int(re.search(r"\(0x([0-9A-Fa-f]+)\)", text).group(1), 16)
        pending = f"item {tag:04x}"
    elif indent == 3 and key == "Length":
        print(f"{pending} {value}")
    elif indent == 2 and key in ("NDE", "NIE"):
        count = value
    elif indent == 2 and key == "Length" and count is not None:
        print(f"array {count} {value}")
    elif indent == 2 and key in ("UUID", "Data"):
        print(f"value {value}")
    elif indent == 2 and key == "Numerator":
        numerator = value
    elif indent == 2 and key == "Denominator":
        print(f"value {numerator} {value}")
    elif indent == 3 and entry is not None and key in (
            "PosTableIndex", "Slice", "Element Delta", "Temporal Offset", "Key-Frame Offset",
            "Flags", "Stream Offset", "SliceOffset", "PosTable", "Numerator", "Denominator"):
        entry.append(value)
flush()
PY
  printf '%-28s %d segments\n' "$name" "$(grep -c '^segment' "$here/expected/index/$name.index.txt")"
done
