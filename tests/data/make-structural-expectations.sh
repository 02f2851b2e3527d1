#!/usr/bin/env bash
# Flattens what ffprobe and mediainfo said about each clean fixture (expected/NAME.ffprobe.json,
# expected/NAME.mediainfo.json, expected/NAME.partitions.txt) into expected/structural/NAME.txt,
# the few facts the structural metadata tests check, one record a line:
#
#   header offset=O byte_count=N            first line of NAME.partitions.txt
#   sids body=B index=I                     largest BodySID and IndexSID of the partitions
#   operational_pattern UL                  ffprobe format tag operational_pattern_ul
#   identification company=C product=P platform=L
#                                           ffprobe format tags (spaces as _)
#   package material UMID tracks=N          ffprobe material_package_umid; N = streams, plus
#   package file UMID tracks=N              one when mediainfo shows that package's MXF TC
#   timecode PACKAGE track=T rate=R drop=D start=HH:MM:SS:FF duration=F
#                                           mediainfo "MXF TC" of the package (";" = drop frame,
#                                           R = FrameRate rounded)
#   video track=T rate=N/D duration=F stored=WxH sampled=WxH display=WxH+Y scan=S aspect=A:B
#         container=HEX coding=HEX
#   audio track=T rate=R duration=F sampling=S channels=C bits=B container=HEX
#
# The stored size is the descriptor's StoredWidth and StoredHeight (tags 3203, 3202) as the
# mediainfo trace (NAME.mediainfo-trace.txt) shows them: for separate fields, one field's. The
# other sizes are mediainfo's Sampled_*, Width/Height and Height_Offset (display), for the whole
# frame; ffprobe's width and height are the decoder's, not the descriptor's. HEX is bytes 8..15 of the label as mediainfo's
# CodecID gives them (container, then picture coding). An audio rate is mediainfo's FrameRate, or
# FrameCount / Duration when it gives none, with three decimals.
#
#   make-structural-expectations.sh [DIR]    DIR holds expected/ (default: this dir)
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
dir=${1:-$here}
mkdir -p "$dir/expected/structural"

for probe in "$dir"/expected/*.ffprobe.json; do
  name=$(basename "$probe" .ffprobe.json)
  case $name in damaged_*) continue ;; esac
  python3 - "$dir/expected" "$name" > "$dir/expected/structural/$name.txt" <<'EOF'
import json, sys

expected, name = sys.argv[1], sys.argv[2]
probe = json.load(open(f"{expected}/{name}.ffprobe.json"))
info = json.load(open(f"{expected}/{name}.mediainfo.json"))["media"]["track"]
trace = open(f"{expected}/{name}.mediainfo-trace.txt").read().splitlines()
def traced(tag):
    """The Data of the first local item of `tag` in the trace."""
    at = next(i for i, l in enumerate(trace) if l.split()[1:2] == ["Code:"] and l.endswith(f"({tag})"))
    return int(next(l for l in trace[at:at + 4] if "Data:" in l).split()[2])
partitions = [l.split() for l in open(f"{expected}/{name}.partitions.txt") if not l.startswith("#")]

print(f"# {name}: from {name}.ffprobe.json, {name}.mediainfo.json and {name}.partitions.txt"
      " by make-structural-expectations.sh")
header = partitions[0]
assert header[1] == "header"
print(f"header offset={header[0]} byte_count={header[7]}")
print(f"sids body={max(int(p[10]) for p in partitions)} index={max(int(p[9]) for p in partitions)}")

tags = probe["format"]["tags"]
print(f"operational_pattern {tags['operational_pattern_ul']}")
word = lambda s: s.replace(" ", "_")
print(f"identification company={word(tags['company_name'])} product={word(tags['product_name'])}"
      f" platform={word(tags['application_platform'])}")

timecodes = {t["TimeCode_Settings"].split()[0].lower(): t for t in info
             if t["@type"] == "Other" and t.get("Format") == "MXF TC"}
streams = probe["streams"]
files = sorted({s["tags"]["file_package_umid"] for s in streams})
assert len(files) == 1
for package, umid in (("material", tags["material_package_umid"]), ("file", files[0])):
    tracks = len(streams) + (1 if ("material" if package == "material" else "source") in timecodes else 0)
    print(f"package {package} {umid[2:]} tracks={tracks}")
for package, tc in sorted(timecodes.items()):
    start = tc["TimeCode_FirstFrame"]
    print(f"timecode {package} track={tc['ID'].split('-')[0]} rate={round(float(tc['FrameRate']))}"
          f" drop={int(';' in start)} start={start.replace(';', ':')} duration={tc['FrameCount']}")

video = [t for t in info if t["@type"] == "Video"]
audio = [t for t in info if t["@type"] == "Audio"]
probe_video = [s for s in streams if s["codec_type"] == "video"]
probe_audio = [s for s in streams if s["codec_type"] == "audio"]
assert len(video) == len(probe_video) and len(audio) == len(probe_audio)
for t, s in zip(video, probe_video):
    container, coding = t["CodecID"].split("-")
    print(f"video track={t['ID']} rate={t['FrameRate_Num']}/{t['FrameRate_Den']}"
          f" duration={t['FrameCount']} stored={traced('0x3203')}x{traced('0x3202')}"
          f" sampled={t['Sampled_Width']}x{t['Sampled_Height']}"
          f" display={t['Width']}x{t['Height']}+{t.get('Height_Offset', '0')}"
          f" scan={t['ScanType']} aspect={s['display_aspect_ratio']}"
          f" container={container} coding={coding}")
for t, s in zip(audio, probe_audio):
    rate = float(t["FrameRate"]) if "FrameRate" in t else int(t["FrameCount"]) / float(t["Duration"])
    assert int(s["sample_rate"]) == int(t["SamplingRate"]) and s["channels"] == int(t["Channels"])
    print(f"audio track={t['ID']} rate={rate:.3f} duration={t['FrameCount']}"
          f" sampling={s['sample_rate']} channels={s['channels']} bits={s['bits_per_sample']}"
          f" container={t['CodecID']}")
EOF
done
