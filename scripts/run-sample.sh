#!/usr/bin/env bash
# Installs what is missing, builds, makes a sample recording with ffmpeg (a still scene in
# which a box moves during three known stretches, with a tone as sound) and runs the main job
# on it: scan, a segment per scene and the finished film with cross-fades. Prints the scenes
# found, the saved project and the path of the film.
set -euo pipefail

here=$(cd "$(dirname "$0")/.." && pwd)
bash "$here/scripts/setup.sh" "$here/build"
cli="$here/build/bin/tarnwickmp4-cli"

sample_dir="$here/out/sample"
mkdir -p "$sample_dir"
sample="$sample_dir/sample.mp4"
# 30 seconds at 25 fps; a grey box crosses a dark background from 3 to 6 s, 12 to 15 s and
# 22 to 25 s, and stands outside the picture otherwise.
move="if(between(t,3,6),(t-3)*180,if(between(t,12,15),(t-12)*180,if(between(t,22,25),(t-22)*180,-200)))"
ffmpeg -y -loglevel error \
    -f lavfi -i "color=c=0x404040:s=640x360:r=25:d=30" \
    -f lavfi -i "color=c=0xA0A0A0:s=80x80:r=25:d=30" \
    -f lavfi -i "sine=frequency=440:sample_rate=44100:duration=30" \
    -filter_complex "[0][1]overlay=x='$move':y=140:shortest=1,format=yuv420p[v]" \
    -map "[v]" -map 2:a -c:v libx264 -c:a aac -shortest "$sample"

"$cli" --version
echo "Sample: $sample (motion from 3 to 6 s, 12 to 15 s and 22 to 25 s)"
"$cli" run "$sample" --transition --title "TarnwickMP4 sample"
