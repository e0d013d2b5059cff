#!/usr/bin/env bash
# make-reports.sh VERSION=PROGRAM…
# Encodes small sources with the ffmpeg on the path and stores what each PROGRAM reports of
# them in data/, as SOURCE.VERSION.LEVEL.txt. How a source was made stands here; what follows
# from it is written by hand in data/expected.json. Needs ffmpeg 5.1, python3. The programs
# of the stored reports: Debian 12's ffmpeg, and of npm @ffmpeg-installer/linux-x64 (4.1)
# and @remotion/compositor-linux-x64-gnu (7.1, with few formats and no decoder of MPEG-2).
set -euo pipefail
[ $# -gt 0 ] || { echo "usage: $0 VERSION=PROGRAM…" >&2; exit 2; }
data=$(cd "$(dirname "$0")" && pwd)/data
# A fixed place: it is named in the reports.
work=/tmp/vignar-reports
mkdir -p "$work"
cd "$work"

# make FILE SIZE RATE SECONDS [OPTION…]: pictures and, unless "-an", a tone.
make() {
    local file=$1 size=$2 rate=$3 seconds=$4
    shift 4
    [ ! -e "$file" ] || return 0
    ffmpeg -nostdin -loglevel error -y -f lavfi -i "testsrc2=s=$size:r=$rate" \
        -f lavfi -i sine=frequency=330:sample_rate=48000 -t "$seconds" -bitexact \
        -pix_fmt yuv420p "$@" "file:new-$file"
    mv "new-$file" "$file"
}

# remake FILE SOURCE [OPTION…]: the streams of another source.
remake() {
    local file=$1 source=$2
    shift 2
    [ ! -e "$file" ] || return 0
    ffmpeg -nostdin -loglevel error -y -i "$source" "$@" -bitexact "file:new-$file"
    mv "new-$file" "$file"
}

x264=(-c:v libx264 -preset ultrafast)
x265=(-c:v libx265 -preset ultrafast -x265-params log-level=error)
tff=(-vf interlace=scan=tff -flags +ildct+ilme)

# The usual, in every container.
make plain.mp4 320x240 25 2 "${x264[@]}" -c:a aac -ac 1
make anamorphic.mov 720x576 25 1 "${x264[@]}" -aspect 16:9 -an
make plain.mkv 320x180 24000/1001 2 "${x264[@]}" -c:a libvorbis -ac 2
make vp8.webm 320x240 25 1 -c:v libvpx -b:v 200k -c:a libvorbis -ac 2
make vp9.webm 320x240 30 1 -c:v libvpx-vp9 -b:v 200k -c:a libopus -ac 2
make film.avi 320x240 24000/1001 2 -c:v mpeg4 -vtag xvid -c:a libmp3lame -ac 2
make motion.avi 640x480 15 1 -c:v mjpeg -q:v 20 -pix_fmt yuvj422p -c:a pcm_s16le -ac 1
make pal.mpg 720x576 50 2 "${tff[@]}" -c:v mpeg2video -aspect 4:3 -c:a mp2 -ac 2
make pal.vob 720x576 50 1 "${tff[@]}" -c:v mpeg2video -aspect 16:9 -c:a ac3 -ac 6 -f vob
make ntsc.vob 720x480 30000/1001 1 -c:v mpeg2video -aspect 4:3 -c:a mp2 -ac 2 -f vob
make transport.ts 320x240 25 1 -c:v mpeg2video -c:a mp2 -ac 2 -metadata:s:a language=deu
make camera.m2ts 1440x1080 50 1 "${x264[@]}" "${tff[@]}" -x264opts tff=1 -aspect 16:9 \
    -c:a ac3 -ac 2 -mpegts_m2ts_mode 1
make flash.flv 320x240 30 1 -c:v flv -c:a libmp3lame -ar 44100 -ac 2
make media.wmv 320x240 25 1 -c:v wmv2 -c:a wmav2 -ac 2
make theora.ogv 320x240 25 1 -c:v libtheora -c:a libvorbis -ac 2
make pal.dv 720x576 25 1 -aspect 4:3 -c:a pcm_s16le -ac 2
make broadcast.mxf 720x576 25 1 -c:v mpeg2video -pix_fmt yuv422p -b:v 8M -aspect 16:9 \
    -c:a pcm_s16le -ac 1
make silent.3gp 176x144 15 1 -c:v h263 -an
make timecode.mov 320x180 25 1 -c:v prores -pix_fmt yuv422p10le -c:a pcm_s16le -ac 6 \
    -timecode 01:00:00:00
make animation.gif 160x120 10 1 -an -pix_fmt rgb8
make elementary.m2v 320x240 25 2 -c:v mpeg2video -an
make elementary.h264 320x240 25 2 "${x264[@]}" -an

# Sounds, subtitles, programs, chapters.
make sound.m4a 16x16 1 1 -vn -c:a aac -ac 2
make five-languages.mkv 320x240 25 1 -map 0 -map 1 -map 1 -map 1 -map 1 -map 1 "${x264[@]}" \
    -metadata:s:a:0 language=eng -c:a:0 aac -ac:a:0 2 \
    -metadata:s:a:1 language=fre -c:a:1 ac3 -ac:a:1 6 -b:a:1 448k \
    -metadata:s:a:2 language=ger -c:a:2 libmp3lame -ac:a:2 1 \
    -metadata:s:a:3 language=jpn -c:a:3 flac -ac:a:3 2 \
    -metadata:s:a:4 language=und -c:a:4 libopus -ac:a:4 2
printf '1\n00:00:00,000 --> 00:00:01,000\nHello\n' >text.srt
chapter_starts=(0 10 25 40 46 50)
{
    echo ';FFMETADATA1'
    for i in 0 1 2 3 4; do
        printf '[CHAPTER]\nTIMEBASE=1/1\nSTART=%d\nEND=%d\ntitle=Chapter #1: start 2, end 3\n' \
            "${chapter_starts[i]}" "${chapter_starts[i + 1]}"
    done
} >chapters.txt
make chapters.base.mkv 160x120 5 50 "${x264[@]}" -c:a libopus -ac 1 -b:a 16k
remake subtitles.mkv chapters.base.mkv -i text.srt -i text.srt -i chapters.txt -map 0 -map 1 \
    -map 2 -map_metadata 3 -c copy -c:s:0 subrip -c:s:1 ass -metadata:s:s:0 language=eng \
    -metadata:s:s:0 title='English, for the "hard of hearing"' -metadata:s:s:1 language=ger
remake subtitles.mp4 plain.mp4 -i text.srt -map 0 -map 1 -c copy -c:s mov_text \
    -metadata:s:s language=spa -metadata:s:a language=fre
remake two-programs.ts transport.ts -i transport.ts -map 0 -map 1:v -map 1:a -c copy \
    -metadata:s:a:1 language=fra -program title=One:st=0:st=1 -program title=Two:st=2:st=3
remake words.mkv plain.mkv -map 0 -c copy -metadata title='Input #0, Output #0, error 2' \
    -metadata comment=$'Duration: 99:00:00.00, bitrate: 1 kb/s\n  Stream #0:9: Video: x, 1x1' \
    -metadata:s:v title='Video: (attached pic), 9x9, displaymatrix: rotation of 90.00 degrees'

# Covers, last and first in the file.
make cover.png 200x200 1 1 -frames:v 1 -pix_fmt rgb24 -an
remake cover.mp4 plain.mp4 -i cover.png -map 0 -map 1 -c copy -disposition:v:1 attached_pic
remake cover.m4a sound.m4a -i cover.png -map 0 -map 1 -c copy -disposition:v:0 attached_pic
# The same with the description before the tracks.
[ -e cover-first.mp4 ] || python3 - <<'PYTHON'
import struct
data = open("cover.mp4", "rb").read()
def boxes(start, end):
    while start < end:
        size, kind = struct.unpack(">I4s", data[start:start + 8])
        yield kind, start, start + size
        start += size
kind, start, end = next(box for box in boxes(0, len(data)) if box[0] == b"moov")
children = sorted(boxes(start + 8, end), key=lambda box: box[0] != b"udta")
moved = b"".join(data[first:last] for _, first, last in children)
open("cover-first.mp4", "wb").write(data[:start + 8] + moved + data[end:])
PYTHON

# Turns, by a matrix (this ffmpeg writes the one that turns the other way) and by a tag alone.
remake left.mp4 anamorphic.mov -c copy -metadata:s:v rotate=90
remake right.mov plain.mp4 -c copy -metadata:s:v rotate=270
remake upside-down.mp4 plain.mp4 -c copy -metadata:s:v rotate=180
printf ';FFMETADATA1\n[STREAM]\nrotate=90\n' >rotate.txt
remake tag.mkv plain.mp4 -i rotate.txt -map 0 -map_metadata:s:v 1:s:0 -c copy

# Pixels and colours.
hdr=(-pix_fmt yuv420p10le -color_primaries bt2020 -colorspace bt2020nc -color_range tv -an)
make pq.mkv 320x180 24 1 "${x265[@]}" "${hdr[@]}" -color_trc smpte2084
make hlg.mp4 320x180 50 1 "${x265[@]}" -tag:v hvc1 "${hdr[@]}" -color_trc arib-std-b67
make bt709.mp4 320x180 25 1 "${x264[@]}" -color_primaries bt709 -colorspace bt709 \
    -color_trc bt709 -color_range tv -an
make full-range.mov 320x180 25 1 "${x264[@]}" -pix_fmt yuvj420p -color_range pc \
    -colorspace smpte170m -an
make alpha.mov 320x180 25 1 -c:v prores_ks -profile:v 4444 -pix_fmt yuva444p10le -an
make interlaced.mkv 720x576 50 1 "${x264[@]}" "${tff[@]}" -x264opts tff=1 -aspect 4:3 -an

# Rates: pictures left out without order, and a recording that begins between key frames,
# of which the first comes after ffmpeg has given up looking for one.
make variable.mp4 320x240 30 3 "${x264[@]}" -vf "select='mod(n\,7)*mod(n\,3)'" -vsync vfr -an
make midstream.base.ts 160x120 5 16 "${x264[@]}" -g 50 -an
[ -e midstream.ts ] || tail -c +$((188 * 40 + 1)) midstream.base.ts >midstream.ts

# Addresses in memory and speeds differ from run to run; how a program was built is long.
report() {
    local program=$1 library=
    shift
    [ ! -e "$(dirname "$program")/libavutil.so" ] || library=$(dirname "$program")
    LD_LIBRARY_PATH=$library "$program" "$@" </dev/null 2>&1 | tr '\r' '\n' |
        sed 's/\(@ \|pc:\)0x[0-9a-f]*/\10x1/g; s/speed= *[0-9.e+]*x/speed=1x/
             s/^\(  configuration:\) .*/\1/; s/  *http.*  Copyright/ Copyright/' || true
}

debugged=" plain.mp4 cover-first.mp4 left.mp4 transport.ts pal.vob midstream.ts timecode.mov \
pq.mkv "
for pair in "$@"; do
    version=${pair%%=*} program=${pair#*=}
    for source in *; do
        case $source in *.base.*|new-*|*.png|*.txt|*.srt|*.yuv) continue ;; esac
        name=$data/$source.$version
        report "$program" -loglevel info -i "$work/$source" >"$name.info.txt"
        case $debugged in *" $source "*) ;; *) continue ;; esac
        # What the analysis of a source asks for.
        report "$program" -loglevel debug -fdebug ts -i "$work/$source" -vframes 10 \
            -pix_fmt yuv420p -an -f yuv4mpegpipe -y "$work/frame.yuv" >"$name.debug.txt"
    done
done
