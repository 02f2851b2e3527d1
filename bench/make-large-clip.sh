#!/usr/bin/env bash
# Makes the large XDCAM HD 422 clip the benchmarks read: OP1a, MPEG-2 4:2:2
# 1080i25 at 50 Mbit/s CBR, 8 mono PCM 24-bit tracks, about MIB MiB (default
# 1024, i.e. ~1 GiB, ~3,640 frames, 1-2 minutes of encoding). It is made at
# bench time and never committed; an existing clip of that size is reused.
#
#   bench/make-large-clip.sh [DIR [MIB]]    default DIR: build/bench-data
#
# Prints the clip's path on the last line. Needs ffmpeg (Debian 12's 5.1).
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
dir=${1:-$root/build/bench-data}
mib=${2:-1024}
clip="$dir/xdcamhd422_1080i25_${mib}MiB.mxf"

if [[ ! -s "$clip" ]]; then
  "$root/tests/data/make-fixtures.sh" --large "$dir" "$mib" >&2
fi
echo "$clip"
