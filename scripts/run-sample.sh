#!/usr/bin/env bash
# Installs what is missing, builds, makes a sample recording with ffmpeg (a still scene in
# which a box moves during two stretches) and runs the main job on it: the scene scan with
# its segments. Prints the scenes, their segment files and the saved project.
set -euo pipefail

here=$(cd "$(dirname "$0")/.." && pwd)
bash "$here/scripts/setup.sh" "$here/build"
cli="$here/build/bin/tarnwickmp4-cli"

sample_dir="$here/out/sample"
mkdir -p "$sample_dir"
sample="$sample_dir/sample.mp4"
# 12 seconds at 25 fps; a grey box moves over a dark background from 2 to 4 s and from 7 to 9 s.
ffmpeg -y -loglevel error \
    -f lavfi -i "color=c=0x404040:s=320x240:r=25:d=12" \
    -f lavfi -i "color=c=0xA0A0A0:s=64x64:r=25:d=12" \
    -filter_complex "[0][1]overlay=x='if(between(t,2,4),(t-2)*100,if(between(t,7,9),(t-7)*100,-200))':y=88:shortest=1,format=yuv420p" \
    -c:v libx264 "$sample"

"$cli" --version
"$cli" extract "$sample"
