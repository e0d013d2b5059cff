#!/usr/bin/env bash
# make-corpus.sh [--quick] FOLDER
# Encodes the clips that the sheets are tried on, each only once:
#   FOLDER/good   clips of which a sheet must be made
#   FOLDER/bad    things of which none can be made
# --quick leaves out what is slow to encode. A clip whose encoder this ffmpeg lacks is
# left out with a line saying so.
set -euo pipefail

quick=no
if [ "${1-}" = --quick ]; then quick=yes; shift; fi
[ $# -eq 1 ] || { echo "usage: $0 [--quick] FOLDER" >&2; exit 2; }
mkdir -p "$1/good" "$1/bad/empty folder" "$1/parts"
cd "$1"
encoders=$(ffmpeg -nostdin -hide_banner -encoders 2>/dev/null | awk '{ print $2 }')

ff() { ffmpeg -nostdin -loglevel error -y "$@"; }

# Each clip is written under another name and renamed, so that one left half-made by an
# interruption is made again. The name may hold anything but a slash.
finish() {
    mv -- "parts/new$2" "$1/$3$2"
}

# clip NAME EXTENSION ENCODER SIZE SECONDS [OUTPUT OPTION…]
clip() {
    local name=$1 extension=$2 encoder=$3 size=$4 seconds=$5
    shift 5
    [ ! -e "good/$name$extension" ] || return 0
    if ! grep -qx -- "$encoder" <<<"$encoders"; then
        echo "left out, no encoder $encoder: $name$extension" >&2
        return 0
    fi
    ff -f lavfi -i "testsrc2=s=$size:r=25" -f lavfi -i sine=frequency=330 -t "$seconds" \
        -c:v "$encoder" -pix_fmt yuv420p "$@" "parts/new$extension"
    finish good "$extension" "$name"
}

# remake NAME EXTENSION SOURCE [OPTION…]: the same pictures in another dress.
remake() {
    local name=$1 extension=$2 source=$3
    shift 3
    [ ! -e "good/$name$extension" ] && [ -e "good/$source" ] || return 0
    ff -i "file:good/$source" -c copy "$@" "parts/new$extension"
    finish good "$extension" "$name"
}


# joined NAME EXTENSION SOURCE…: the files laid end to end, as cards and recorders leave
# them: the time stamps start again in the middle.
joined() {
    local name=$1 extension=$2
    shift 2
    [ ! -e "good/$name$extension" ] || return 0
    (cd good && cat -- "$@") >"parts/new$extension"
    finish good "$extension" "$name"
}

first_half() { head -c $(($(stat -c %s "$1") / 2)) "$1" >"$2"; }

# What cameras, phones, discs and the net hand out.
clip 'h264' .mp4 libx264 640x360 12 -preset ultrafast -c:a aac
clip 'h264 in mkv' .mkv libx264 640x360 8 -preset ultrafast -c:a libvorbis \
    -metadata title='Été à Étretat' -metadata:s:a language=fre
clip 'mpeg4' .avi mpeg4 640x480 8 -q:v 5 -c:a libmp3lame
clip 'mpeg2' .ts mpeg2video 720x576 8 -q:v 5 -aspect 16:9 -c:a mp2
clip 'mpeg2 interlaced' .vob mpeg2video 720x576 8 -q:v 5 -flags +ildct+ilme -top 1 \
    -aspect 4:3 -c:a mp2 -f vob
clip 'motion jpeg' .avi mjpeg 640x480 5 -pix_fmt yuvj420p -q:v 5 -c:a pcm_s16le
clip 'wmv' .wmv wmv2 640x360 8 -q:v 5 -c:a wmav2
clip 'flash' .flv flv 640x360 8 -q:v 5 -ar 44100 -c:a libmp3lame
clip 'theora' .ogv libtheora 640x360 5 -q:v 7 -c:a libvorbis
clip 'portrait' .mp4 libx264 360x640 8 -preset ultrafast -an
clip 'anamorphic' .mp4 libx264 720x576 8 -preset ultrafast -aspect 16:9 -an
clip 'odd and silent' .mp4 libx264 322x242 8 -preset ultrafast -an
clip 'half a second' .mp4 libx264 640x360 0.5 -preset ultrafast
clip 'one frame' .mp4 libx264 640x360 1 -preset ultrafast -an -frames:v 1
clip 'starts late' .ts libx264 640x360 8 -preset ultrafast -g 25 -an -output_ts_offset 5000
clip 'one key picture' .ts libx264 640x360 8 -preset ultrafast -g 999 -an
# ffmpeg 5.1 writes the opposite turn of the one it is told.
remake 'turned right' .mp4 h264.mp4 -metadata:s:v rotate=270
remake 'turned left' .mov h264.mp4 -metadata:s:v rotate=90
remake 'upside down' .mp4 h264.mp4 -metadata:s:v rotate=180

if [ $quick = no ]; then
    clip 'h264 1080p' .mov libx264 1920x1080 12 -preset ultrafast -c:a aac
    clip 'h264 2160p' .mp4 libx264 3840x2160 3 -preset ultrafast -an
    clip 'h264 1080i' .mts libx264 1920x1080 5 -preset ultrafast -g 12 -flags +ildct+ilme \
        -x264opts tff=1 -c:a ac3 -f mpegts
    clip 'hevc' .mp4 libx265 1280x720 6 -preset ultrafast -x265-params log-level=error -tag:v hvc1
    clip 'hevc 10 bits' .mkv libx265 1920x1080 3 -preset ultrafast -x265-params log-level=error \
        -pix_fmt yuv420p10le -an
    clip 'av1' .mp4 libsvtav1 640x360 4 -preset 12 -an
    clip 'av1 in webm' .webm libaom-av1 320x180 2 -cpu-used 8 -usage realtime -c:a libopus
    clip 'vp9' .webm libvpx-vp9 1280x720 4 -deadline realtime -cpu-used 8 -c:a libopus
    clip 'vp9 in mkv' .mkv libvpx-vp9 640x360 4 -deadline realtime -cpu-used 8 -an
    clip 'vp8' .webm libvpx 640x360 4 -deadline realtime -cpu-used 8 -c:a libvorbis
    clip 'prores' .mov prores_ks 1920x1080 2 -pix_fmt yuv422p10le -c:a pcm_s16le
    clip 'dv' .avi dvvideo 720x576 4 -ar 48000 -ac 2 -c:a pcm_s16le
    clip 'dv wide' .dv dvvideo 720x576 4 -aspect 16:9 -ar 48000 -ac 2 -c:a pcm_s16le
    clip 'mpeg1' .mpg mpeg1video 352x288 8 -q:v 5 -c:a mp2
    clip 'phone of old' .3gp h263 352x288 8 -q:v 5 -an
    clip 'a minute' .mp4 libx264 160x90 60 -preset ultrafast -an -r 5 -crf 40
fi

# What lies about itself.
clip 'old camcorder' .mod mpeg2video 720x576 6 -q:v 5 -aspect 16:9 -c:a ac3 -f vob
clip 'bare mpeg2' .m2v mpeg2video 720x576 6 -q:v 5 -g 12 -an
joined 'two titles in one' .vob 'mpeg2 interlaced.vob' 'mpeg2 interlaced.vob'
joined 'dash cam' .ts 'starts late.ts' 'one key picture.ts'
clip 'uneven frame times' .mp4 libx264 640x360 8 -preset ultrafast -an \
    -vf "select='lt(n,50)+not(mod(n,4))'" -vsync vfr
# Cuts in the second after a key picture make intra pictures that are no key pictures.
cuts=(-vf "negate=enable='lt(mod(t\,3.4)\,1.7)'" -preset fast)
clip 'cuts' .mp4 libx264 640x360 40 "${cuts[@]}" -x264-params keyint=250:min-keyint=249:scenecut=100 \
    -c:a aac
remake 'cuts' .mkv cuts.mp4
remake 'cuts' .flv cuts.mp4
remake 'cuts' .avi cuts.mp4 -bsf:v h264_mp4toannexb
remake 'cuts and delays' .mov cuts.mp4 -movflags negative_cts_offsets
remake 'cuts, late' .ts cuts.mp4 -output_ts_offset 100
clip 'open groups' .mp4 libx264 640x360 30 -preset fast -x264-params keyint=75:open-gop=1:bframes=6
clip 'fields' .mp4 libx264 640x360 12 "${cuts[@]}" -flags +ildct+ilme -g 40 -x264-params scenecut=100
clip 'no key pictures' .mp4 libx264 640x360 20 -preset fast -x264-params keyint=60:intra-refresh=1
clip 'slides' .mp4 libx264 640x360 60 -r 1 -preset slow -x264-params keyint=9:bframes=8
[ -e parts/cover.png ] || ff -f lavfi -i color=red:s=300x300 -frames:v 1 parts/cover.png
if [ ! -e 'good/cover first.mp4' ]; then
    ff -i parts/cover.png -i good/h264.mp4 -map 0 -map 1 -c copy -disposition:v:0 attached_pic \
        parts/new.mp4
    finish good .mp4 'cover first'
fi
remake 'cover attached' .mkv cuts.mp4 -attach parts/cover.png \
    -metadata:s:t mimetype=image/png -metadata:s:t filename=cover.png
if [ $quick = no ]; then
    hdr=(-preset ultrafast -pix_fmt yuv420p10le -color_primaries bt2020 -colorspace bt2020nc -an)
    clip 'phone hdr' .mov libx265 1280x720 4 "${hdr[@]}" -color_trc arib-std-b67 -tag:v hvc1 \
        -x265-params log-level=error:colorprim=bt2020:transfer=arib-std-b67:colormatrix=bt2020nc
    clip 'hdr10' .mkv libx265 1280x720 4 "${hdr[@]}" -color_trc smpte2084 \
        -x265-params log-level=error:colorprim=bt2020:transfer=smpte2084:colormatrix=bt2020nc:max-cll=1000,400
    clip 'hevc cuts' .mov libx265 640x360 30 "${cuts[@]}" -tag:v hvc1 \
        -x265-params log-level=error:keyint=250:min-keyint=249:scenecut=80:slices=2
    remake 'hevc cuts' .mkv 'hevc cuts.mov'
    clip 'vp9 in two passes' .webm libvpx-vp9 320x180 30 -deadline good -cpu-used 4 \
        -auto-alt-ref 6 -g 120
    remake 'vp9 in two passes' .mp4 'vp9 in two passes.webm'
    clip 'av1 groups' .mkv libsvtav1 320x180 30 -preset 10 -g 90
    remake 'av1 groups' .mp4 'av1 groups.mkv'
    clip 'screen recording' .mp4 libx264 1280x720 40 -preset ultrafast -g 9999 -an
    clip 'high definition camcorder' .tod mpeg2video 1440x1080 4 -q:v 5 -aspect 16:9 -c:a mp2 \
        -f mpegts
    clip 'disc recorder' .vro mpeg2video 704x480 4 -q:v 5 -aspect 4:3 -c:a mp2 -f vob
    clip 'broadcast' .mxf mpeg2video 1920x1080 2 -q:v 5 -c:a pcm_s16le -ar 48000
    clip 'disc' .m2ts libx264 1280x720 4 -preset ultrafast -g 12 -c:a ac3 -f mpegts
    clip 'bare mpeg1' .m1v mpeg1video 352x288 6 -q:v 5 -an
    clip 'fragments' .mp4 libx264 640x360 8 -preset ultrafast -g 25 -an -movflags frag_keyframe+empty_moov
    if [ ! -e 'good/five languages.mkv' ]; then
        ff -i good/h264.mp4 -map 0:v -map 0:a -map 0:a -map 0:a -map 0:a -map 0:a -c copy \
            -metadata:s:a:0 language=eng -metadata:s:a:1 language=fre -metadata:s:a:2 language=ger \
            -metadata:s:a:3 language=jpn -metadata:s:a:4 language=ukr parts/new.mkv
        finish good .mkv 'five languages'
    fi
    # Files that are still being written.
    [ -e 'good/still recording.ts' ] || first_half good/mpeg2.ts 'good/still recording.ts'
    [ -e 'good/still recording.mp4' ] || first_half good/fragments.mp4 'good/still recording.mp4'
    [ -e 'good/still recording.avi' ] || first_half good/mpeg4.avi 'good/still recording.avi'
fi

# Names that a careless program would take for something else.
# shellcheck disable=SC2016 # nothing is to expand
for name in 'Un été à Noël, 東京 и Київ' "L'été de \"Jo\"" $'two\nlines' '$(touch pwned)' \
    '`touch pwned`; touch pwned' '100%s %d %08x img%02d' '-leading dash' ' blanks  inside ' \
    'Trial and error 1' 'Invalid data found when processing input' 'back\slash and *?[x]' \
    '~' 'time=00:00:00.00' 'two.dots.in it'; do
    ln -f good/h264.mp4 "good/$name.mp4"
done
ln -f good/h264.mp4 'good/LOUD.MP4'
# Two sources of one folder that would write one sheet.
ln -f good/h264.mp4 good/twin.mp4
remake 'twin' .mkv h264.mp4

if [ ! -e 'good/forty chapters.mkv' ]; then
    {
        echo ';FFMETADATA1'
        for number in {0..39}; do
            printf '[CHAPTER]\nTIMEBASE=1/10\nSTART=%d\nEND=%d\ntitle=Chapter error %d\n' \
                $((number * 3)) $((number * 3 + 3)) "$number"
        done
    } >parts/chapters.txt
    ff -i good/h264.mp4 -f ffmetadata -i parts/chapters.txt -map_metadata 1 -c copy parts/new.mkv
    finish good .mkv 'forty chapters'
fi
if [ $quick = no ] && [ ! -e 'good/five hours.mp4' ]; then
    ff -stream_loop 299 -i 'good/a minute.mp4' -c copy parts/new.mp4
    finish good .mp4 'five hours'
fi
# What can be read of an interrupted recording is worth a sheet.
[ -e 'good/cut short.mkv' ] || first_half 'good/h264 in mkv.mkv' 'good/cut short.mkv'

echo 'This is no video.' >'bad/text.mp4'
: >'bad/empty.mp4'
first_half good/h264.mp4 'bad/no index.mp4'
head -c 300000 /dev/zero >'bad/zeros.mkv'
ln -sfn 'nowhere.mp4' 'bad/dangling.mp4'
cp good/h264.mp4 $'good/not UTF-8 \xff.mp4'
[ -p 'bad/pipe.mp4' ] || mkfifo 'bad/pipe.mp4'
ff -f lavfi -i sine=frequency=330 -t 5 -c:a aac 'bad/sound only.mp4'
ff -f lavfi -i sine=frequency=330 -f lavfi -i color=red:s=64x64 -t 5 -map 0 -map 1 -c:a aac \
    -c:v:0 png -frames:v 1 -disposition:v:0 attached_pic 'bad/sound and cover.mp4'
rm -rf parts
