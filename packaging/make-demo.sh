#!/usr/bin/env bash
# make-demo.sh FILE
# Encodes a clip of ninety seconds, nine scenes and one tone, to show a sheet of when
# there is no video at hand. The file appears whole or not at all.
set -euo pipefail
[ $# -eq 1 ] || { echo "usage: $0 FILE" >&2; exit 2; }

size=960x540
half=480x270
scenes=(
    "gradients=s=$size:c0=0x0b1d51:c1=0x725ac1:c2=0xf7a072:c3=0xffe8c2:nb_colors=4:speed=0.01:x0=480:y0=0:x1=480:y1=539,vignette=PI/5"
    "mandelbrot=s=$size:start_scale=2.6:end_scale=0.3:end_pts=260:maxiter=400"
    "life=s=$half:mold=12:ratio=0.25:seed=7:death_color=#0a1f44:life_color=#ffd060:mold_color=#274690,scale=$size,gblur=1.2"
    "gradients=s=$size:c0=0xff5e62:c1=0x24243e:c2=0x00c6ff:c3=0xfbd786:nb_colors=4:speed=0.02:type=spiral:seed=3"
    "testsrc2=s=$size"
    "sierpinski=s=$size:type=triangle:seed=5,negate,colorchannelmixer=rr=0.9:gg=0.6:bb=0.35"
    "mandelbrot=s=$size:start_x=-0.7436:start_y=-0.1318:start_scale=0.02:end_scale=0.0005:end_pts=260:maxiter=600,hue=h=200"
    "colorspectrum=s=$size:type=all,hue=h=36*t,vignette"
    "gradients=s=$size:c0=0x06141f:c1=0x1f6f78:c2=0xf2a541:nb_colors=3:type=radial:speed=0.03:seed=11,vignette=PI/4"
)

inputs=()
joined=
for number in "${!scenes[@]}"; do
    inputs+=(-f lavfi -t 10 -i "${scenes[number]},fps=25,format=yuv420p,setsar=1")
    joined+="[$number:v]"
done
count=${#scenes[@]}

part="$1.part.mp4"
trap 'rm -f -- "$part"' EXIT
ffmpeg -nostdin -loglevel error -y "${inputs[@]}" \
    -f lavfi -t $((10 * count)) -i 'sine=frequency=220:beep_factor=4' \
    -filter_complex "${joined}concat=n=${count}[scenes]" -map '[scenes]' -map "$count:a" \
    -c:v libx264 -preset veryfast -crf 23 -g 50 -c:a aac -b:a 96k \
    -metadata title='Vignar demo' -movflags +faststart "$part"
mv -- "$part" "$1"
