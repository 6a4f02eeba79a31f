#!/usr/bin/env bash
# Makes the sample reel's picture: one small video for the old cut and one for
# the new, each a dark frame with the record timecode burnt in at the bottom
# and, above it, the roll and the running source timecode of the shot that
# the EDL puts there. A Change event then shows the same roll and source
# timecode on its SRC frame of the old video and its DST frame of the new.
#
#   scripts/make-sample-videos.sh [EDL folder] [output folder]
#
#   scripts/make-sample-videos.sh --test-clip
#
# Needs only the ffmpeg program. Writes <output>/old.mp4 and <output>/new.mp4;
# with --test-clip, the tests' clip of 25 frames that tell themselves apart by
# colour (frame n: red 10 n, green 250 - 10 n, blue 128), kept without loss.
set -euo pipefail

here="$(cd "$(dirname "$0")/.." && pwd)"
if [ "${1:-}" = "--test-clip" ]; then
    ffmpeg -hide_banner -loglevel error -y \
        -f lavfi -i "color=c=black:s=64x36:r=25:d=1,format=gbrp,geq=r='N*10':g='250-N*10':b='128'" \
        -frames:v 25 -c:v ffv1 -pix_fmt bgr0 "$here/tests/sim/fixtures/numbered-frames.mkv"
    exit 0
fi
edls="${1:-$here/samples/edl/short-film-25}"
out="${2:-$here/samples/video}"
font=/usr/share/fonts/truetype/dejavu/DejaVuSansMono-Bold.ttf
rate=25
mkdir -p "$out"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

# frames of a timecode hh:mm:ss:ff at $rate
frames() { awk -v r="$rate" -F: '{ print (($1 * 60 + $2) * 60 + $3) * r + $4 }' <<<"$1"; }

make_cut() { # edl label output
    local edl="$1" label="$2" output="$3"
    local first last start end
    # Event lines: the last four fields are SRC IN, SRC OUT, REC IN, REC OUT.
    awk '/^[0-9][0-9][0-9] / && NF >= 8 { print $2, $(NF-3), $(NF-1), $NF }' "$edl" > "$work/events"
    first="$(awk '{ print $3 }' "$work/events" | sort | head -1)"
    last="$(awk '{ print $4 }' "$work/events" | sort | tail -1)"
    start="$(frames "$first")"
    end="$(frames "$last")"
    # One command per event at its record start: the roll, and the source
    # timecode that the running counter must start from so that it reads the
    # event's SRC IN there (drawtext counts from the video's first frame).
    : > "$work/commands"
    while read -r roll srcIn recIn _; do
        local at src tc
        at=$(( $(frames "$recIn") - start ))
        src=$(( $(frames "$srcIn") - at ))
        (( src < 0 )) && src=$(( src + 24 * 3600 * rate ))
        tc="$(printf '%02d\\:%02d\\:%02d\\:%02d' $(( src / rate / 3600 )) $(( src / rate / 60 % 60 )) \
            $(( src / rate % 60 )) $(( src % rate )))"
        printf '%s drawtext@roll reinit text=%s;\n' "$(awk -v f="$at" -v r="$rate" 'BEGIN { printf "%.3f", f / r }')" "$roll" >> "$work/commands"
        printf "%s drawtext@src reinit 'timecode=%s';\n" "$(awk -v f="$at" -v r="$rate" 'BEGIN { printf "%.3f", f / r }')" "$tc" >> "$work/commands"
    done < "$work/events"
    local recTc
    recTc="$(sed 's/:/\\:/g' <<<"$first")"
    local text="fontfile=$font:fontcolor=white"
    cat > "$work/graph" <<GRAPH
sendcmd=f=$work/commands,
drawtext=$text:fontsize=14:text='$label':x=(w-tw)/2:y=10,
drawtext@roll=$text:fontsize=22:text='----':x=(w-tw)/2:y=52,
drawtext@src=$text:fontsize=22:timecode='00\:00\:00\:00':rate=$rate:x=(w-tw)/2:y=82,
drawtext=$text:fontsize=16:fontcolor=0xF0C040:timecode='$recTc':rate=$rate:text='REC ':x=(w-tw)/2:y=140
GRAPH
    ffmpeg -hide_banner -loglevel error -y -f lavfi -i "color=c=0x283038:s=320x180:r=$rate" \
        -filter_script:v "$work/graph" -frames:v $(( end - start )) \
        -c:v libx264 -preset veryslow -crf 30 -g 250 -pix_fmt yuv420p -movflags +faststart "$output"
}

make_cut "$edls/old.edl" "OLD CUT" "$out/old.mp4"
make_cut "$edls/new.edl" "NEW CUT" "$out/new.mp4"
ls -l "$out"/old.mp4 "$out"/new.mp4
