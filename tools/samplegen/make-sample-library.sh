#!/usr/bin/env bash
# Makes the small sample media library of the demo: a few dozen short audio, video and picture
# files with tags, generated here with ffmpeg's test sources (tones, test patterns), plus one
# corrupt file of each kind and a file that is not media. Nothing is downloaded.
#
# usage: make-sample-library.sh OUTDIR [EXIF_STAMP]
#   OUTDIR      made anew (an existing OUTDIR is removed first)
#   EXIF_STAMP  the mdb-exif-stamp program, which gives the JPEG pictures EXIF data (optional)
set -euo pipefail

out=${1:?usage: make-sample-library.sh OUTDIR [EXIF_STAMP]}
stamp=${2:-}
command -v ffmpeg >/dev/null || { echo "ffmpeg is missing: run 'make deps' as root to install it" >&2; exit 1; }

rm -rf "$out"
mkdir -p "$out"
ff() { ffmpeg -nostdin -hide_banner -loglevel error -y "$@"; }

# tone FILE SECONDS FREQUENCY CODEC-OPTIONS... -- TAG=VALUE...
tone() {
  local file=$1 seconds=$2 freq=$3; shift 3
  local codec=() tags=()
  while [ $# -gt 0 ] && [ "$1" != -- ]; do codec+=("$1"); shift; done
  [ $# -gt 0 ] && shift
  for t in "$@"; do tags+=(-metadata "$t"); done
  mkdir -p "$(dirname "$out/$file")"
  ff -f lavfi -i "sine=frequency=$freq:sample_rate=44100:duration=$seconds" -ac 2 "${codec[@]}" "${tags[@]}" "$out/$file"
}

# album DIR ARTIST ALBUM GENRE YEAR EXTENSION CODEC-OPTIONS... -- TITLE...
album() {
  local dir=$1 artist=$2 albumName=$3 genre=$4 year=$5 ext=$6; shift 6
  local codec=()
  while [ "$1" != -- ]; do codec+=("$1"); shift; done
  shift
  local track=1
  for title in "$@"; do
    tone "$dir/$(printf %02d "$track") $title.$ext" 3 $((220 + 55 * track)) "${codec[@]}" -- \
      "title=$title" "artist=$artist" "album=$albumName" "genre=$genre" "date=$year" "track=$track"
    track=$((track + 1))
  done
}

echo "making the sample library in $out"
mp3=(-c:a libmp3lame -b:a 128k -id3v2_version 3)
album "Music/The Examples/Morning Light" "The Examples" "Morning Light" Pop 2019 mp3 "${mp3[@]}" -- \
  "Morning Light" "Rain on Glass" "Slow River" "Paper Boats"
album "Music/Rock Steady/Electric Avenue" "Rock Steady" "Electric Avenue" Rock 2015 mp3 "${mp3[@]}" -- \
  "Electric Avenue" "Night Drive" "Neon Lights" "Last Train"
album "Music/Lena Park/Northern Lines" "Lena Park" "Northern Lines" Folk 2021 flac -c:a flac -- \
  "Northern Lines" "Snowfall" "Light Years"
album "Music/Quartet Nova/Strings at Night" "Quartet Nova" "Strings at Night" Classical 2017 m4a \
  -c:a aac -b:a 128k -- "Nocturne" "Allegro" "Light in the Hall"
tone "Music/Field Recordings/Birdsong.ogg" 3 880 -c:a libvorbis -- "title=Birdsong" "genre=Ambient" \
  "artist=Field Recorder" "album=Field Recordings"
tone "Music/Field Recordings/Harbour.ogg" 3 330 -c:a libvorbis -- "title=Harbour" "genre=Ambient" \
  "artist=Field Recorder" "album=Field Recordings"
tone "Music/Voice Memos/memo-01.wav" 2 440 -c:a pcm_s16le -- "title=Shopping list" "artist=Me"
tone "Music/Voice Memos/memo-02.wav" 2 550 -c:a pcm_s16le -- "title=Song idea" "artist=Me"
mkdir -p "$out/Music/Broken"
printf 'ID3 this is not an MP3 file at all, only text pretending to be one.\n%.0s' {1..40} \
  >"$out/Music/Broken/not-really-music.mp3"
printf 'Sample media made by make-sample-library.sh.\n' >"$out/Music/readme.txt"

# clip FILE SIZE SECONDS VIDEO-OPTIONS... -- TAG=VALUE...
clip() {
  local file=$1 size=$2 seconds=$3; shift 3
  local codec=() tags=()
  while [ "$1" != -- ]; do codec+=("$1"); shift; done
  shift
  for t in "$@"; do tags+=(-metadata "$t"); done
  mkdir -p "$(dirname "$out/$file")"
  ff -f lavfi -i "testsrc=size=$size:rate=25:duration=$seconds" \
     -f lavfi -i "sine=frequency=440:sample_rate=48000:duration=$seconds" \
     -shortest "${codec[@]}" "${tags[@]}" "$out/$file"
}
h264=(-c:v libx264 -preset ultrafast -pix_fmt yuv420p)
clip "Videos/Holidays/Beach Day.mp4" 640x360 2 "${h264[@]}" -c:a aac -b:a 96k -- \
  "title=Beach Day" "artist=Home Movies" "genre=Holiday" "creation_time=2019-07-14T10:30:00Z"
clip "Videos/Holidays/Mountain Walk.mkv" 640x360 2 "${h264[@]}" -c:a libvorbis -- \
  "title=Mountain Walk" "artist=Home Movies" "genre=Holiday"
clip "Videos/Recordings/Evening News.ts" 1280x720 2 -c:v mpeg2video -b:v 2M -c:a mp2 -- \
  "title=Evening News"
clip "Videos/Recordings/Old Tape.mpg" 720x576 2 -c:v mpeg2video -b:v 2M -c:a mp2 -f vob -- \
  "title=Old Tape"
clip "Videos/Clips/Light Show.avi" 320x240 2 -c:v mpeg4 -c:a libmp3lame -- "title=Light Show"
clip "Videos/Clips/Countdown.mov" 320x240 2 "${h264[@]}" -c:a aac -- "title=Countdown"
printf 'not a video\n' >"$out/Videos/Clips/empty-recording.mp4"

# picture FILE SIZE SOURCE [FFMPEG-OPTIONS...]
picture() {
  local file=$1 size=$2 source=$3; shift 3
  mkdir -p "$(dirname "$out/$file")"
  ff -f lavfi -i "$source=size=$size" -frames:v 1 "$@" "$out/$file"
}
holiday="Pictures/Holiday 2019"
picture "$holiday/IMG_0001.jpg" 1024x768 testsrc -q:v 4
picture "$holiday/IMG_0002.jpg" 1600x1200 testsrc2 -q:v 4
picture "$holiday/IMG_0003.jpg" 640x480 testsrc -q:v 4
picture "$holiday/IMG_0004.jpg" 480x640 testsrc2 -q:v 4
if [ -n "$stamp" ]; then
  "$stamp" "$out/$holiday/IMG_0001.jpg" "2019:07:14 09:12:00" "Harbour at dawn" "A. Photographer"
  "$stamp" "$out/$holiday/IMG_0002.jpg" "2019:07:14 13:40:05" "Light on the water" "A. Photographer"
  "$stamp" "$out/$holiday/IMG_0003.jpg" "2019:07:15 18:02:30" "Market street"
  "$stamp" "$out/$holiday/IMG_0004.jpg" "2019:07:16 08:45:10"
fi
head -c 100 "$out/$holiday/IMG_0001.jpg" >"$out/$holiday/IMG_0005-truncated.jpg"
picture "Pictures/Icons/logo.png" 128x128 testsrc2
picture "Pictures/Icons/banner.png" 800x200 testsrc
picture "Pictures/Icons/spinner.gif" 64x64 testsrc
picture "Pictures/Scans/page.bmp" 320x240 testsrc2

find "$out" -type f | wc -l | xargs printf '%s files made\n'
