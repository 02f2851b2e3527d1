#!/usr/bin/env bash
# Makes the MXF test fixtures with ffmpeg, then the damaged copies by byte
# surgery, then the expectations (make-expectations.sh).
#
#   make-fixtures.sh [OUTDIR]      fixtures + expectations (default: this dir)
#   make-fixtures.sh --large DIR   only the big clip for benchmarks (not committed)
#
# Every ffmpeg run uses -fflags +bitexact so a rerun gives identical bytes; the
# damage offsets are derived from the file itself, printed, and written to
# damage-offsets.txt so tests can assert where a reader should notice.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

die() { echo "make-fixtures.sh: $*" >&2; exit 1; }

large_dir=""
out="$here"
case "${1:-}" in
  --large) [[ $# -eq 2 ]] || die "usage: $0 --large DIR"; large_dir=$2 ;;
  -h|--help) sed -n '2,11p' "$0"; exit 0 ;;
  "") ;;
  *) out=$1 ;;
esac

command -v ffmpeg >/dev/null || die "ffmpeg not found"
command -v ffprobe >/dev/null || die "ffprobe not found"

ff() { ffmpeg -nostdin -hide_banner -loglevel error -y "$@"; }

# Eight mono sines, track n at 250*n Hz, so a swapped channel is audible/visible.
sines() { # $1 = duration in seconds
  local i g=""
  for i in 1 2 3 4 5 6 7 8; do
    g+="sine=f=$((250 * i)):r=48000:d=$1[a$i];"
  done
  echo "${g%;}"
}
maps=(-map 0:v -map '[a1]' -map '[a2]' -map '[a3]' -map '[a4]' -map '[a5]' -map '[a6]' -map '[a7]' -map '[a8]')

# 10 Mbit/s CBR keeps one second of 4:2:2@High under 3 MB.
mpeg2_hd=(-c:v mpeg2video -pix_fmt yuv422p -profile:v 0 -level:v 2 -bf 2
          -b:v 10M -minrate 10M -maxrate 10M -bufsize 4M)
interlaced=(-flags +ildct+ilme -top 1 -field_order tt)

# OP1a, XDCAM HD 422 style: $1 output, $2 size, $3 rate, $4 duration, $5 GOP,
# $6 timecode, rest: extra video flags.
xdcam_hd() {
  local o=$1 size=$2 rate=$3 dur=$4 gop=$5 tc=$6; shift 6
  ff -f lavfi -i "testsrc2=size=$size:rate=$rate:duration=$dur" \
     -filter_complex "$(sines "$dur")" "${maps[@]}" \
     "${mpeg2_hd[@]}" -g "$gop" "$@" \
     -c:a pcm_s24le -timecode "$tc" -fflags +bitexact -f mxf "$o"
}

if [[ -n "$large_dir" ]]; then
  mkdir -p "$large_dir"
  xdcam_hd "$large_dir/xdcamhd422_1080i25_10s.mxf" 1920x1080 25 10 12 10:00:00:00 "${interlaced[@]}"
  ls -l "$large_dir/xdcamhd422_1080i25_10s.mxf"
  exit 0
fi

mkdir -p "$out"
cd "$out"

# --- clean fixtures ---------------------------------------------------------

xdcam_hd xdcamhd422_1080i25.mxf     1920x1080 25         1     12 10:00:00:00 "${interlaced[@]}"
xdcam_hd xdcamhd422_720p50.mxf      1280x720  50         1     12 10:00:00:00
xdcam_hd xdcamhd422_1080i2997df.mxf 1920x1080 30000/1001 1.001 15 '10:00:00;00' "${interlaced[@]}"

# D-10 needs every frame at exactly 250,000 bytes, hence the CBR/VBV options;
# 0.32 s = 8 frames (312,832 B each) stays under 3 MB.
ff -f lavfi -i testsrc2=size=720x576:rate=25:duration=0.32 \
   -f lavfi -i "aevalsrc=exprs=0.25*sin(2*PI*250*t)|0.25*sin(2*PI*500*t)|0.25*sin(2*PI*750*t)|0.25*sin(2*PI*1000*t):c=4.0:s=48000:d=0.32" \
   -vf pad=720:608:0:32,setdar=4/3 \
   -c:v mpeg2video -pix_fmt yuv422p -profile:v 0 -level:v 5 -g 1 \
   -b:v 50M -minrate 50M -maxrate 50M -bufsize 2000000 -rc_init_occupancy 2000000 \
   -flags +ildct+low_delay -top 1 -field_order tt -intra_vlc 1 -non_linear_quant 1 -qmax 28 -dc 10 \
   -c:a pcm_s16le -timecode 10:00:00:00 -fflags +bitexact -f mxf_d10 imx50_625.mxf

ff -f lavfi -i testsrc2=size=1920x1080:rate=25:duration=1 \
   "${mpeg2_hd[@]}" -g 12 "${interlaced[@]}" \
   -timecode 10:00:00:00 -fflags +bitexact -f mxf_opatom opatom_mpeg2.mxf

ff -f lavfi -i sine=f=1000:r=48000:d=1 -c:a pcm_s24le -mxf_audio_edit_rate 25 \
   -timecode 10:00:00:00 -fflags +bitexact -f mxf_opatom opatom_pcm.mxf

# --- damaged copies of xdcamhd422_1080i25.mxf --------------------------------

src=xdcamhd422_1080i25.mxf
size=$(stat -c %s "$src")

hexat() { od -An -v -tx1 -j "$2" -N "$3" "$1" | tr -d ' \n'; }   # file off n
uintat() { echo $((16#$(hexat "$1" "$2" "$3"))); }               # big-endian

partition_prefix=060e2b34020501010d01020101          # first 13 bytes of any partition pack key
rip_key=060e2b34020501010d01020101110100

# The RIP is the last KLV; its last 4 bytes give its own total length.
rip_len=$(uintat "$src" $((size - 4)) 4)
rip_off=$((size - rip_len))
[[ $(hexat "$src" "$rip_off" 16) == "$rip_key" ]] || die "no RIP at $rip_off"
ber0=$((16#$(hexat "$src" $((rip_off + 16)) 1)))
if (( ber0 & 0x80 )); then ber_n=$((ber0 & 0x7f)); else ber_n=0; fi
pairs_off=$((rip_off + 17 + ber_n))
npairs=$(( (size - 4 - pairs_off) / 12 ))

body_off="" footer_off=""
for ((i = 0; i < npairs; i++)); do
  sid=$(uintat "$src" $((pairs_off + 12 * i)) 4)
  poff=$(uintat "$src" $((pairs_off + 12 * i + 4)) 8)
  kind=$(hexat "$src" "$poff" 14)
  [[ ${kind:0:26} == "$partition_prefix" ]] || die "RIP entry $i ($poff) is not a partition pack"
  case ${kind:26:2} in
    03) if [[ -z "$body_off" && $sid -ne 0 ]]; then body_off=$poff; fi ;;
    04) footer_off=$poff ;;
  esac
done
[[ -n "$body_off" && -n "$footer_off" ]] || die "RIP lacks body or footer partition"
# The header partition pack records the footer too; both must agree.
[[ $(uintat "$src" 44 8) -eq $footer_off ]] || die "header FooterPartition disagrees with RIP"

damage="damage-offsets.txt"
: >"$damage"
note() { # file key value
  printf '%s %s %s\n' "$1" "$2" "$3" >>"$damage"
  printf '  %-28s %-22s %s\n' "$1" "$2" "$3"
}
echo "damaged copies of $src ($size bytes; RIP at $rip_off, body partition at $body_off, footer partition at $footer_off):"

t30=$((size * 30 / 100))
head -c "$t30" "$src" >damaged_truncated_30.mxf
note damaged_truncated_30.mxf cut_at "$t30"

t90=$((size * 90 / 100))
head -c "$t90" "$src" >damaged_truncated_90.mxf
note damaged_truncated_90.mxf cut_at "$t90"

head -c "$footer_off" "$src" >damaged_no_footer.mxf
note damaged_no_footer.mxf cut_at "$footer_off"

# 1,000 bytes from a fixed LCG so the noise is the same on every run, with a
# lone key prefix 06 0e 2b 34 at byte 500 to lure a naive resync scan.
garbage_len=1000 lure_at=500
python3 - "$garbage_len" "$lure_at" >garbage.bin <<'EOF'
import sys
n, lure = int(sys.argv[1]), int(sys.argv[2])
x, out = 12345, bytearray()
while len(out) < n:
    x = (x * 1103515245 + 12345) & 0x7FFFFFFF
    out.append((x >> 16) & 0xFF)
out[lure:lure + 4] = b"\x06\x0e\x2b\x34"
assert out.count(b"\x06\x0e\x2b\x34") == 1
sys.stdout.buffer.write(out)
EOF
{ head -c "$body_off" "$src"; cat garbage.bin; tail -c +$((body_off + 1)) "$src"; } >damaged_garbage.mxf
rm -f garbage.bin
note damaged_garbage.mxf garbage_at "$body_off"
note damaged_garbage.mxf garbage_len "$garbage_len"
note damaged_garbage.mxf lure_key_prefix_at $((body_off + lure_at))
note damaged_garbage.mxf body_partition_now_at $((body_off + garbage_len))

# Third picture element in file order (ffprobe's packet pos is the element
# key): two frames read fine before the length runs past the end of the file.
pic_off=$(ffprobe -v error -select_streams v -show_entries packet=pos -of csv=p=0 "$src" | sed -n 3p)
[[ $(hexat "$src" "$pic_off" 13) == 060e2b34010201010d01030115 ]] || die "no picture element at $pic_off"
len_off=$((pic_off + 16))
ber0=$((16#$(hexat "$src" "$len_off" 1)))
(( ber0 & 0x80 )) || die "short-form length at $len_off"
ber_n=$((ber0 & 0x7f))
old_len=$(uintat "$src" $((len_off + 1)) "$ber_n")
new_len=$(( (1 << (8 * ber_n)) - 1 ))          # all ones, same BER width
(( len_off + 1 + ber_n + new_len > size )) || die "new length does not pass EOF"
cp "$src" damaged_bad_length.mxf
ones=$(printf '\\xff%.0s' $(seq "$ber_n"))
printf '%b' "$ones" | dd of=damaged_bad_length.mxf bs=1 seek=$((len_off + 1)) conv=notrunc status=none
[[ $(stat -c %s damaged_bad_length.mxf) -eq $size ]] || die "bad_length changed size"
note damaged_bad_length.mxf element_key_at "$pic_off"
note damaged_bad_length.mxf ber_length_at "$len_off"
note damaged_bad_length.mxf ber_width "$((1 + ber_n))"
note damaged_bad_length.mxf old_length "$old_len"
note damaged_bad_length.mxf new_length "$new_len"

# --- size limit and expectations --------------------------------------------

limit=$((3 * 1000 * 1000))
for f in *.mxf; do
  s=$(stat -c %s "$f")
  (( s <= limit )) || die "$f is $s bytes, over $limit"
  printf '%10d %s\n' "$s" "$f"
done

"$here/make-expectations.sh" "$out"
