#!/usr/bin/env bash
# Makes the media tree that the scanner and tool tests copy: a few short tagged files of every
# kind from ffmpeg's test sources (tones, test patterns), a few corrupt ones and a few that are
# not media. Run once per build; nothing is downloaded.
# usage: make-sample-tree.sh OUTDIR FFMPEG EXIF_STAMP
set -euo pipefail
out=$1 ffmpeg=$2 stamp=$3
rm -rf "$out"
mkdir -p "$out"/{Music/Alpha,Music/Beta,Video,Pictures/Trip}

# media FILE FFMPEG-OPTIONS... [-- TAG=VALUE...]
media() {
  local file=$1 args=()
  shift
  while [ $# -gt 0 ] && [ "$1" != -- ]; do args+=("$1"); shift; done
  [ $# -gt 0 ] && shift
  for tag in "$@"; do args+=(-metadata "$tag"); done
  "$ffmpeg" -nostdin -hide_banner -loglevel error -y "${args[@]}" "$out/$file"
}
tone() { echo "-f lavfi -i sine=frequency=440:sample_rate=44100:duration=$1 -ac 2"; }
clip() { echo "-f lavfi -i testsrc=size=$1:rate=25:duration=$2 -f lavfi -i sine=sample_rate=48000:duration=$2 -shortest -ac 2"; }

media Music/Alpha/One.mp3 $(tone 2) -c:a libmp3lame -b:a 128k -id3v2_version 3 -- "title=First Song" \
  "artist=Alpha Band" "album=Alpha Album" genre=Pop track=1 date=2019
media Music/Alpha/Two.flac $(tone 2) -c:a flac -- "title=Second Song" "artist=Alpha Band" "album=Alpha Album" \
  genre=Pop track=2 date=2019
media Music/Beta/Three.m4a $(tone 3) -c:a aac -b:a 96k -- "title=Third Song" artist=Beta "album=Beta Sessions" \
  genre=Jazz track=3
media Music/Beta/memo.wav $(tone 1) -c:a pcm_s16le
media Video/clip.mp4 $(clip 320x240 2) -c:v libx264 -preset ultrafast -pix_fmt yuv420p -c:a aac -- \
  "title=Small Clip" "artist=Home Movies" creation_time=2020-05-06T07:08:09Z
media Video/news.ts $(clip 1280x720 1) -c:v mpeg2video -b:v 1M -c:a mp2
media Pictures/Trip/photo.jpg -f lavfi -i testsrc=size=800x600 -frames:v 1
"$stamp" "$out/Pictures/Trip/photo.jpg" "2019:07:14 09:12:00" "Harbour at dawn"
media Pictures/icon.png -f lavfi -i testsrc=size=100x100 -frames:v 1

# Corrupt: text in an MP3, the head of a JPEG, an empty MP4, compressed video data in a FLAC.
head -c 2000 /dev/zero | tr '\0' x >"$out/Music/broken.mp3"
head -c 100 "$out/Pictures/Trip/photo.jpg" >"$out/Pictures/Trip/half.jpg"
: >"$out/Video/empty.mp4"
tail -c 4096 "$out/Video/clip.mp4" >"$out/Music/Alpha/noise.flac"
# Not media.
echo "liner notes" >"$out/Music/notes.txt"
echo "hidden files are left out" >"$out/Pictures/Trip/.hidden.jpg"
echo "unknown format" >"$out/cover.xyz"
