#!/usr/bin/env bash
# Makes the MXF test fixtures with ffmpeg, then the damaged copies by byte
# surgery, then the expectations (make-expectations.sh).
#
#   make-fixtures.sh [OUTDIR]      fixtures + expectations (default: this dir)
#   make-fixtures.sh --large DIR   only the big clip for benchmarks (not committed)
#   make-fixtures.sh --large DIR MIB   a big clip of about MIB MiB, 50 Mbit/s
#
# Every ffmpeg run uses -fflags +bitexact so a rerun gives identical bytes; the
# damage offsets are derived from the file itself, printed, and written to
# damage-offsets.txt so tests can assert where a reader should notice.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

die() { echo "make-fixtures.sh: $*" >&2; exit 1; }

large_dir="" large_mib=""
out="$here"
case "${1:-}" in
  --large)
    [[ $# -eq 2 || $# -eq 3 ]] || die "usage: $0 --large DIR [MIB]"
    large_dir=$2 large_mib=${3:-}
    [[ -z "$large_mib" || "$large_mib" =~ ^[1-9][0-9]*$ ]] || die "MIB must be a positive integer" ;;
  -h|--help) sed -n '2,12p' "$0"; exit 0 ;;
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
  if [[ -z "$large_mib" ]]; then
    big="$large_dir/xdcamhd422_1080i25_10s.mxf"
    xdcam_hd "$big" 1920x1080 25 10 12 10:00:00:00 "${interlaced[@]}"
  else
    # XDCAM HD 422's own 50 Mbit/s: one frame with its 8 sound elements and
    # KLV/fill overhead is about 295,500 bytes. Whole GOPs, so the clip ends
    # on a closed GOP; every 252 frames ffmpeg starts a body partition.
    frames=$(( (large_mib * 1048576 + 295499) / 295500 ))
    frames=$(( (frames + 11) / 12 * 12 ))
    cs=$((frames * 4))
    dur=$((cs / 100)).$(printf %02d $((cs % 100)))
    mpeg2_hd=(-c:v mpeg2video -pix_fmt yuv422p -profile:v 0 -level:v 2 -bf 2
              -b:v 50M -minrate 50M -maxrate 50M -bufsize 18M)
    big="$large_dir/xdcamhd422_1080i25_${large_mib}MiB.mxf"
    xdcam_hd "$big" 1920x1080 25 "$dur" 12 10:00:00:00 "${interlaced[@]}"
  fi
  ls -l "$big"
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

# ffmpeg starts a new body partition at the first I-frame after more than 250
# edit units (EDIT_UNITS_PER_BODY, no option changes it) and puts the index
# segment of the edit units before it there. 525 frames at 50p give body
# partitions at edit units 0, 262 and 514 (I-frames in stored order at 10,
# 22, 34, ...); a small picture and one 16-bit track keep the file near 2 MB.
ff -f lavfi -i testsrc2=size=320x180:rate=50:duration=10.5 -f lavfi -i sine=f=1000:r=48000:d=10.5 \
   -map 0:v -map 1:a -c:v mpeg2video -pix_fmt yuv422p -profile:v 0 -level:v 5 -bf 2 -g 12 -b:v 200k \
   -c:a pcm_s16le -timecode 10:00:00:00 -fflags +bitexact -f mxf multibody_180p50.mxf

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

# --- more damaged and unusual copies -----------------------------------------
# Each is made from a committed fixture by byte surgery in python (stdlib
# only). The python side checks every byte it relies on and prints
# "FILE KEY VALUE" lines that go to damage-offsets.txt like the ones above.

echo "more damaged copies (of $src unless named):"
surgery=$(python3 - "$src" imx50_625.mxf multibody_180p50.mxf "$body_off" "$footer_off" "$rip_off" <<'EOF'
import sys

src, imx, multi = sys.argv[1:4]
body_off, footer_off, rip_off = map(int, sys.argv[4:7])
PACK = bytes.fromhex("060e2b34020501010d01020101")    # 13-byte partition pack key prefix
FILL = bytes.fromhex("060e2b34010101020301021001000000")
PRIMER = bytes.fromhex("060e2b34020501010d01020101050100")
INDEX = bytes.fromhex("060e2b34025301010d01020101100100")
RIP = bytes.fromhex("060e2b34020501010d01020101110100")

def die(msg):
    sys.exit("make-fixtures.sh: " + msg)

def u(d, off, n):
    return int.from_bytes(d[off:off + n], "big")

def put(d, off, n, value):
    d[off:off + n] = value.to_bytes(n, "big")

def klv(d, off):
    """(key, value offset, value length) of the KLV at off."""
    b = d[off + 16]
    if b < 0x80:
        return d[off:off + 16], off + 17, b
    n = b & 0x7F
    return d[off:off + 16], off + 17 + n, u(d, off + 17, n)

def end_of(d, off):
    _, v, n = klv(d, off)
    return v + n

def skip_fill(d, off):
    while d[off:off + 16] == FILL:
        off = end_of(d, off)
    return off

def note(f, k, v):
    print(f, k, v)

def write(name, d):
    with open(name, "wb") as out:
        out.write(d)

def lcg(seed, n):
    x, out = seed, bytearray()
    while len(out) < n:
        x = (x * 1103515245 + 12345) & 0x7FFFFFFF
        out.append((x >> 16) & 0xFF)
    return out

# Partition pack fields, offsets from the pack key.
THIS, FOOTER, HBC, IBC = 28, 44, 52, 60

clean = open(src, "rb").read()
if clean[:13] != PACK or clean[13] != 0x02 or clean[14] != 0x04:
    die("header of %s is not a closed complete header partition pack" % src)
hbc = u(clean, HBC, 8)
meta_at = skip_fill(clean, end_of(clean, 0))
if clean[meta_at:meta_at + 16] != PRIMER or meta_at + hbc != body_off:
    die("header metadata of %s is not primer..body partition" % src)
if clean[footer_off:footer_off + 13] != PACK or clean[footer_off + 13] != 0x04 \
        or u(clean, footer_off + HBC, 8) != 0:
    die("footer of %s is not a footer without metadata" % src)
footer_index_at = skip_fill(clean, end_of(clean, footer_off))
if clean[footer_index_at:footer_index_at + 16] != INDEX:
    die("no index segment after the footer pack")

# Writer died before it could go back and close the header: the header pack
# says open incomplete (status byte 0x01) over its metadata, left as it is;
# the footer, closed complete, carries the final metadata: a verbatim copy of
# the header's (primer .. last fill, HeaderByteCount bytes) put between the
# footer pack's KAG fill and its index segment. Offsets before the footer,
# the RIP entries and every FooterPartition field stay right.
name = "damaged_open_header.mxf"
d = bytearray(clean)
d[14] = 0x01
d[footer_index_at:footer_index_at] = clean[meta_at:meta_at + hbc]
put(d, footer_off + HBC, 8, hbc)
if d[footer_index_at + hbc:footer_index_at + hbc + 16] != INDEX or d[rip_off + hbc:rip_off + hbc + 16] != RIP:
    die(name + ": index segment or RIP not where expected")
write(name, d)
note(name, "status_byte_at", 14)
note(name, "old_status", 4)
note(name, "new_status", 1)
note(name, "header_metadata_at", meta_at)
note(name, "header_byte_count", hbc)
note(name, "footer_partition_at", footer_off)
note(name, "footer_header_byte_count_at", footer_off + HBC)
note(name, "footer_metadata_at", footer_index_at)
note(name, "footer_index_segment_now_at", footer_index_at + hbc)
note(name, "rip_now_at", rip_off + hbc)

# No random index pack: the file ends with the fill that closes the footer's
# index area (IndexByteCount still right).
name = "damaged_no_rip.mxf"
write(name, clean[:rip_off])
note(name, "cut_at", rip_off)
note(name, "rip_len", len(clean) - rip_off)

# FooterPartition 0 in the header and the body partition pack, as a writer
# on a non-seekable output leaves them; the footer's own field and the RIP
# still name the footer.
name = "damaged_footer_zero.mxf"
d = bytearray(clean)
for at in (FOOTER, body_off + FOOTER):
    if u(d, at, 8) != footer_off:
        die(name + ": FooterPartition at %d is not %d" % (at, footer_off))
    put(d, at, 8, 0)
write(name, d)
note(name, "header_footer_field_at", FOOTER)
note(name, "body_footer_field_at", body_off + FOOTER)
note(name, "old_footer_partition", footer_off)

# Cut in the middle of the header metadata (half HeaderByteCount after the
# primer); the item cut is found by walking the KLVs.
name = "damaged_truncated_header.mxf"
cut = meta_at + hbc // 2
at = meta_at
while end_of(clean, at) <= cut:
    at = end_of(clean, at)
write(name, clean[:cut])
note(name, "cut_at", cut)
note(name, "header_metadata_at", meta_at)
note(name, "header_metadata_end", meta_at + hbc)
note(name, "cut_item_key_at", at)
note(name, "cut_item_value_at", klv(clean, at)[1])

# Cut in the middle of an index table segment: imx50_625's only segment sits
# in the header partition's index area, right after the metadata.
name = "damaged_truncated_index.mxf"
x = open(imx, "rb").read()
ihbc, iibc = u(x, HBC, 8), u(x, IBC, 8)
imeta = skip_fill(x, end_of(x, 0))
seg = imeta + ihbc
if x[seg:seg + 16] != INDEX or iibc == 0:
    die(imx + ": no index segment at %d" % seg)
_, sv, sn = klv(x, seg)
cut = sv + sn // 2
write(name, x[:cut])
note(name, "cut_at", cut)
note(name, "index_segment_at", seg)
note(name, "index_segment_value_at", sv)
note(name, "index_segment_len", sn)

# 100 bytes of run-in (fixed LCG noise, seed 54321, free of 06 0e 2b 34)
# before an unchanged copy; all pack and RIP offsets stay relative.
name = "runin_100.mxf"
runin = lcg(54321, 100)
if (runin + clean[:16]).find(b"\x06\x0e\x2b\x34") != 100:
    die(name + ": run-in contains a key prefix")
write(name, runin + clean)
note(name, "run_in_len", len(runin))
note(name, "header_partition_at", len(runin))

# Index entries that disagree with the essence, in the footer's segment
# (IndexEntryArray, local tag 3F0A: NDE, entry length, then per entry
# TemporalOffset, KeyFrameOffset, Flags, StreamOffset (8 bytes), ...):
# entry 3 one byte late, entry 11 a copy of entry 10, entry 20 4096 late
# (inside its picture element).
name = "damaged_bad_index.mxf"
d = bytearray(clean)
_, sv, sn = klv(d, footer_index_at)
p = sv
while p < sv + sn and u(d, p, 2) != 0x3F0A:
    p += 4 + u(d, p + 2, 2)
if p >= sv + sn:
    die(name + ": no IndexEntryArray")
nde, elen = u(d, p + 4, 4), u(d, p + 8, 4)
def entry(i):
    return p + 12 + i * elen + 3
old = {i: u(d, entry(i), 8) for i in (3, 10, 11, 20)}
new = {3: old[3] + 1, 11: old[10], 20: old[20] + 4096}
for i, v in new.items():
    put(d, entry(i), 8, v)
write(name, d)
note(name, "index_segment_at", footer_index_at)
note(name, "entry_array_at", p)
note(name, "entry_count", nde)
note(name, "entry_len", elen)
for i in sorted(new):
    note(name, "entry%d_stream_offset_at" % i, entry(i))
    note(name, "entry%d_old" % i, old[i])
    note(name, "entry%d_new" % i, new[i])

# Not damaged: where multibody_180p50's partitions are, from its RIP
# (MediaInfo's trace misses the last body partition).
m = open(multi, "rb").read()
rl = u(m, len(m) - 4, 4)
ro = len(m) - rl
if m[ro:ro + 16] != RIP:
    die(multi + ": no RIP")
_, pv, _ = klv(m, ro)
n = 0
for e in range(pv, len(m) - 4, 12):
    off = u(m, e + 4, 8)
    kind = m[off + 13]
    if m[off:off + 13] != PACK or u(m, off + THIS, 8) != off:
        die(multi + ": RIP entry %d is no partition" % off)
    if kind == 0x03:
        n += 1
        note(multi, "body_partition_%d_at" % n, off)
    elif kind == 0x04:
        note(multi, "footer_partition_at", off)
note(multi, "rip_at", ro)
EOF
)
while read -r f k v; do note "$f" "$k" "$v"; done <<<"$surgery"

# --- size limit and expectations --------------------------------------------

limit=$((3 * 1000 * 1000))
for f in *.mxf; do
  s=$(stat -c %s "$f")
  (( s <= limit )) || die "$f is $s bytes, over $limit"
  printf '%10d %s\n' "$s" "$f"
done

"$here/make-expectations.sh" "$out"
