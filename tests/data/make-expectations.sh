#!/usr/bin/env bash
# Writes what mediainfo and ffprobe say about every fixture into expected/.
# These tools are the independent reference our parser is tested against, so
# nothing here uses code of ours.
#
#   make-expectations.sh [DIR]     DIR holds the *.mxf fixtures (default: this dir)
#
# Per fixture NAME.mxf:
#   expected/NAME.mediainfo-trace.txt   mediainfo --Details=1 (KLV trace)
#   expected/NAME.mediainfo.json        mediainfo --Output=JSON, file dates dropped
#   expected/NAME.ffprobe.json          ffprobe -show_streams -show_format
#   expected/NAME.ffprobe-packets.csv   one line per packet: stream,pts,dts,duration,size,pos,flags
#   expected/NAME.ffprobe-stderr.txt    ffprobe's complaints (damaged files only)
#   expected/NAME.klv.txt               top-level KLV items, from the trace
#   expected/NAME.partitions.txt        partition packs, from the trace
#   expected/NAME.essence-md5.txt       per stream: MD5, bytes and packets of what
#                                       ffmpeg delivers (only when it finds streams)
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
dir=${1:-$here}

command -v mediainfo >/dev/null || { echo "mediainfo not found" >&2; exit 1; }
command -v ffprobe >/dev/null || { echo "ffprobe not found" >&2; exit 1; }

cd "$dir"
mkdir -p expected

# File dates change with every checkout; everything else must stay stable.
drop_dates() {
  python3 -c '
import json, sys
doc = json.load(sys.stdin)
for track in doc.get("media", {}).get("track", []):
    for k in [k for k in track if k.startswith(("File_Modified_Date", "File_Created_Date"))]:
        del track[k]
json.dump(doc, sys.stdout, indent=2, ensure_ascii=False)
print()
'
}

# One line per stream, in ffmpeg's order and numbering ("v0", "a0", ...):
#   TAG MD5 BYTES PACKETS
# of `ffmpeg -map 0:v:N -c copy -f mpeg2video` or `-map 0:a:N -c copy -f s24le`
# (s16le, by the stream's codec). ffmpeg's D-10 demuxer already turns the AES3
# element into plain PCM; for those files the sound is re-encoded to the same
# PCM format instead of copied (same bytes, checked on imx50_625). PACKETS
# counts the stream's lines in the packet list. A stream copy that ffmpeg
# ends with an error gets a comment line "# TAG ffmpeg exit N".
essence_digests() { # NAME.mxf packets.csv d10(0|1)
  local f=$1 csv=$2 d10=$3 idx type codec tag nv=0 na=0 rc md5 bytes packets tmp
  local -a how
  tmp=$(mktemp)
  while IFS=, read -r idx type codec; do
    case $type/$codec in
      video/mpeg2video) tag=v$nv; how=(-map "0:v:$nv" -c copy -f mpeg2video); nv=$((nv + 1)) ;;
      audio/pcm_s16le | audio/pcm_s24le)
        tag=a$na
        if [[ $d10 -eq 1 ]]; then how=(-map "0:a:$na" -c:a "$codec"); else how=(-map "0:a:$na" -c copy); fi
        how+=(-f "${codec#pcm_}")
        na=$((na + 1)) ;;
      *) echo "# stream $idx: $type $codec not digested"; continue ;;
    esac
    rc=0
    ffmpeg -nostdin -v error -fflags +bitexact -i "$f" "${how[@]}" -fflags +bitexact - \
      >"$tmp" 2>/dev/null || rc=$?
    md5=$(md5sum <"$tmp" | cut -d' ' -f1)
    bytes=$(stat -c %s "$tmp")
    packets=$(awk -F, -v i="$idx" '$1 == i' "$csv" | wc -l)
    echo "$tag $md5 $bytes $packets"
    [[ $rc -eq 0 ]] || echo "# $tag ffmpeg exit $rc"
  done < <(ffprobe -v error -show_entries stream=index,codec_type,codec_name -of csv=p=0 "$f" 2>/dev/null |
             awk -F, 'NF >= 3 { print $1 "," $3 "," $2 }')
  rm -f "$tmp"
}

for f in *.mxf; do
  name=${f%.mxf}
  e=expected/$name
  rm -f "$e".*
  # Relative names keep the outputs free of the checkout path.
  mediainfo --Details=1 "$f" >"$e.mediainfo-trace.txt" ||
    echo "warning: mediainfo --Details=1 $f exited $?" >&2
  mediainfo --Output=JSON "$f" | drop_dates >"$e.mediainfo.json"
  rc=0
  ffprobe -v error -show_streams -show_format -of json "$f" \
    >"$e.ffprobe.json" 2>"$e.stderr.tmp" || rc=$?
  [[ $rc -eq 0 ]] || echo "ffprobe exit status $rc" >>"$e.stderr.tmp"
  # ffprobe gives no frame counts for MXF; its packet list does, with the
  # file position of every element (for OP-Atom: inside the clip KLV).
  rc=0
  ffprobe -v error -show_entries packet=stream_index,pts,dts,duration,size,pos,flags \
    -of csv=p=0 "$f" >"$e.ffprobe-packets.csv" 2>>"$e.stderr.tmp" || rc=$?
  [[ $rc -eq 0 ]] || echo "ffprobe (packets) exit status $rc" >>"$e.stderr.tmp"
  # Log lines carry a heap address ("[mxf @ 0x55...]") that changes per run.
  sed -E 's/ @ 0x[0-9a-f]+\]/]/' "$e.stderr.tmp" >"$e.ffprobe-stderr.txt"
  rm -f "$e.stderr.tmp"
  [[ -s "$e.ffprobe-stderr.txt" ]] || rm -f "$e.ffprobe-stderr.txt"
  d10=0
  grep -q '"Format_Settings_Wrapping": "Frame (D-10)"' "$e.mediainfo.json" && d10=1
  essence_digests "$f" "$e.ffprobe-packets.csv" "$d10" >"$e.essence-md5.txt"
  grep -q '^[va]' "$e.essence-md5.txt" || rm -f "$e.essence-md5.txt"
  python3 "$here/mediainfo-klv-list.py" "$e.mediainfo-trace.txt" \
    --klv "$e.klv.txt" --partitions "$e.partitions.txt"
  printf '%-32s %5d KLV items, %d partition packs\n' "$f" \
    "$(grep -vc '^#' "$e.klv.txt")" "$(grep -vc '^#' "$e.partitions.txt")"
done
