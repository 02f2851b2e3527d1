#!/usr/bin/env bash
# Writes small seed inputs for the fuzz targets, cut from the fixtures of tests/data: the starts
# and ends of files and the damaged stretches, not whole files; and the packs of the file frame,
# each behind the byte that tells fuzz_packs what it is.
#   fuzz/make-seed-corpus.sh OUT_DIR     (writes OUT_DIR/klv_walk/* and OUT_DIR/packs/*)
#   and OUT_DIR/index_segment/*
set -euo pipefail
data="$(cd "$(dirname "$0")/../tests/data" && pwd)"
out="$1/klv_walk"
mkdir -p "$out"

cut() { # name file offset length
    dd if="$data/$2" of="$out/$1" bs=1 skip="$3" count="$4" status=none
}
offset() { # file what
    awk -v f="$1" -v w="$2" '$1 == f && $2 == w { print $3 }' "$data/damage-offsets.txt"
}

cut header_1080i25 xdcamhd422_1080i25.mxf 0 3000
cut header_imx imx50_625.mxf 0 600
cut header_opatom_pcm opatom_pcm.mxf 0 2400
cut body_start_1080i25 xdcamhd422_1080i25.mxf 11595 2200
cut system_item_imx imx50_625.mxf 6600 700
cut footer_opatom_pcm opatom_pcm.mxf 149657 1440
garbage=$(offset damaged_garbage.mxf garbage_at)
cut garbage damaged_garbage.mxf $((garbage - 181)) 1600
key=$(offset damaged_bad_length.mxf element_key_at)
cut bad_length damaged_bad_length.mxf "$key" 300
cut truncated_tail damaged_truncated_30.mxf $(($(offset damaged_truncated_30.mxf cut_at) - 1200)) 1200
# Avid's root object and object directory, whose keys lie outside the SMPTE registry: MediaInfo
# lost the thread at both.
awk '/Synchronisation lost/ { print $2 }' "$data/expected/imx50_a1.klv.txt" | while read -r at; do
    cut "avid_$at" imx50_a1.mxf $((at - 80)) 600
done

# fuzz_packs: first byte 00 partition pack, 01 primer, 02 random index pack, 03 the partitions
# walk over the rest. Packs are cut where MediaInfo saw them and as long as their BER says.
packs="$1/packs"
mkdir -p "$packs"
number() { # file offset count: big-endian bytes as a decimal number
    od -An -tu1 -j "$2" -N "$3" "$data/$1" | awk '{ for (i = 1; i <= NF; i++) v = v * 256 + $i } END { print v + 0 }'
}
item_size() { # file offset: key, BER length and value
    local first
    first=$(number "$1" $(($2 + 16)) 1)
    if [ "$first" -lt 128 ]; then
        echo $((17 + first))
    else
        echo $((17 + (first & 127) + $(number "$1" $(($2 + 17)) $((first & 127)))))
    fi
}
pack() { # name selector file offset
    { printf "\\x$2"; dd if="$data/$3" bs=1 skip="$4" count="$(item_size "$3" "$4")" status=none; } >"$packs/$1"
}
for fixture in xdcamhd422_1080i25 imx50_625 opatom_pcm; do
    file=$fixture.mxf
    grep -v '^#' "$data/expected/$fixture.partitions.txt" | while read -r at kind _; do
        pack "partition_${kind}_$fixture" 00 "$file" "$at"
    done
    size=$(stat -c %s "$data/$file")
    pack "rip_$fixture" 02 "$file" $((size - $(number "$file" $((size - 4)) 4)))
done
primer=$(awk '$NF == "Primer" { print $1; exit }' "$data/expected/xdcamhd422_1080i25.klv.txt")
pack primer_1080i25 01 xdcamhd422_1080i25.mxf "$primer"
walk() { # name file offset length
    { printf '\x03'; dd if="$data/$2" bs=1 skip="$3" count="$4" status=none; } >"$packs/$1"
}
walk walk_header_1080i25 xdcamhd422_1080i25.mxf 0 3000
walk walk_footer_opatom_pcm opatom_pcm.mxf 150016 1081
walk walk_garbage damaged_garbage.mxf $((garbage - 600)) 1600

# fuzz_index_segment: every index table segment of the fixtures, where MediaInfo saw it.
segments="$1/index_segment"
mkdir -p "$segments"
for list in "$data"/expected/index/*.index.txt; do
    name=$(basename "$list" .index.txt)
    awk '$1 == "segment" { print $2, $3 }' "$list" | while read -r at size; do
        dd if="$data/$name.mxf" of="$segments/${name}_$at" bs=1 skip="$at" count="$size" status=none
    done
done

# fuzz_metadata: header partitions, from the pack to the end of what HeaderByteCount covers (it
# counts from the primer, which follows the pack's fill).
metadata="$1/metadata"
mkdir -p "$metadata"
for fixture in xdcamhd422_1080i25 imx50_625 opatom_pcm opatom_mpeg2; do
    at=$(awk '$NF == "Primer" { print $1; exit }' "$data/expected/$fixture.klv.txt")
    end=$((at + $(number "$fixture.mxf" 52 8)))
    dd if="$data/$fixture.mxf" of="$metadata/header_$fixture" bs=1 count="$end" status=none
done
# An Avid header: root object, meta-dictionary, dictionary, object directory. The fill that ends
# it (144 KB) is cut off, and HeaderByteCount made to end where the fill began (its pack has a
# 9-byte length: HeaderByteCount is at 57).
avid=imx50_a1
at=$(awk '$NF == "Primer" { print $1; exit }' "$data/expected/$avid.klv.txt")
end=$(awk '/Body Partition Pack/ { print previous; exit } { previous = $1 }' \
    "$data/expected/$avid.klv.txt")
{
    head -c 57 "$data/$avid.mxf"
    printf '%016x' $((end - at)) | xxd -r -p
    (tail -c +66 "$data/$avid.mxf" || true) | head -c $((end - 65))
} >"$metadata/header_$avid"

# fuzz_reader: the small fixtures, whole files.
reader="$1/reader"
mkdir -p "$reader"
for fixture in opatom_pcm damaged_truncated_header damaged_truncated_index; do
    cp "$data/$fixture.mxf" "$reader/$fixture"
done

# fuzz_sidecars: the sidecar fixtures, whole; they are small.
sidecars="$1/sidecars"
mkdir -p "$sidecars"
find "$data/sidecars" -type f ! -name README.md | while read -r file; do
    name=${file#"$data/sidecars/"}
    cp "$file" "$sidecars/${name//\//_}"
done

# fuzz_essence: small fixtures whole, clip- and frame-wrapped, and a cut one.
essence="$1/essence"
mkdir -p "$essence"
for fixture in opatom_pcm imx50_625 damaged_truncated_30; do
    cp "$data/$fixture.mxf" "$essence/$fixture"
done
