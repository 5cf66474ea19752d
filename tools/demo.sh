#!/usr/bin/env bash
# The demo of "make demo": makes the sample media library, scans it into a new catalogue with the
# mdb tool, and shows what a media server's clients would get: a walk down the folder tree, a
# category browse and two searches.
#
# usage: tools/demo.sh BUILD_DIR
set -euo pipefail

build=${1:?usage: tools/demo.sh BUILD_DIR}
mdb=$build/tools/mdb
# New catalogues are made with the build tree's schema script, not the installed one.
export MDB_SCHEMA_SCRIPT=$build/share/mdb/create_db.sql
work=$build/demo
db=$work/catalogue.db
media=$work/media

step() { printf '\n\033[1m== %s\033[0m\n$' "$1"; printf ' %q' "${@:2}"; printf '\n'; "${@:2}"; }
# The id in the first data line of a table answer whose title is $2 (or the first one).
id_of() { awk -v title="$2" 'NR > 1 && NF > 1 && (title == "" || index($0, "  " title) > 0) { print $1; exit }' <<<"$1"; }

mkdir -p "$work"
tools/samplegen/make-sample-library.sh "$media" "$build/tools/mdb-exif-stamp"
rm -f "$db"
step "A new catalogue" "$mdb" init "$db"
step "Scan the sample library (corrupt files are reported and skipped)" "$mdb" scan "$db" "$media"

step "The top of the container tree" "$mdb" browse "$db" 0 --format table
step "Music by folder: the shared root folders" "$mdb" browse "$db" 0.1.264 --format table
root=$(id_of "$("$mdb" browse "$db" 0.1.264 --format table)" "")
step "The root folder's children that hold music" "$mdb" browse "$db" "$root" --format table
music=$(id_of "$("$mdb" browse "$db" "$root" --format table)" "Music")
step "Inside Music" "$mdb" browse "$db" "$music" --format table --sort +dc:title
examples=$(id_of "$("$mdb" browse "$db" "$music" --format table)" "The Examples")
album=$(id_of "$("$mdb" browse "$db" "$examples" --format table)" "")
step "An album folder as the DIDL-Lite a client receives" \
  "$mdb" browse "$db" "$album" --sort +upnp:originalTrackNumber --count 2 --address 192.168.1.20 --port 8200

step "Category browse: music artists" "$mdb" browse "$db" 0.1.258 --format table
artist=$(id_of "$("$mdb" browse "$db" 0.1.258 --format table)" "Lena Park")
step "The songs of one artist" "$mdb" browse "$db" "$artist" --format table --sort +dc:title

step "Search everything for titles containing \"light\"" \
  "$mdb" search "$db" 0 'dc:title contains "light"' --format table --sort +dc:title
step "Search music for rock songs, as DIDL-Lite" \
  "$mdb" search "$db" 0 'upnp:class derivedfrom "object.item.audioItem" and upnp:genre = "Rock"' \
  --filter dc:title,upnp:artist,upnp:album,res@duration,res@protocolInfo --count 2
item=$(id_of "$("$mdb" search "$db" 0 'upnp:class derivedfrom "object.item.audioItem" and dc:title = "Morning Light"' --format table)" "")
step "What the file server learns about one item" "$mdb" info "$db" "$item"
printf '\nThe catalogue is %s; try "%s --help".\n' "$db" "$mdb"
