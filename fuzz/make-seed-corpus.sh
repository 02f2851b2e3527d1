#!/usr/bin/env bash
# Writes small seed inputs for the fuzz targets, cut from the fixtures of tests/data: the starts
# and ends of files and the damaged stretches, not whole files.
#   fuzz/make-seed-corpus.sh OUT_DIR     (writes OUT_DIR/klv_walk/*)
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
