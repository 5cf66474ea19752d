#!/usr/bin/env bash
# The main job of "make serve": mdbd in the foreground, sharing the given folders (by default the
# sample media library, made on first use) with a catalogue of its own in BUILD_DIR/serve. Ctrl-C
# stops it. It announces itself on the network it runs on: TVs and phones there will see it.
#
# usage: server/serve.sh BUILD_DIR [FOLDER...]
#   MDBD_ARGS  more options for mdbd, such as --name NAME, --interface IF or --address ADDR
set -euo pipefail

build=${1:?usage: server/serve.sh BUILD_DIR [FOLDER...]}
shift
# New catalogues are made with the build tree's schema script, not the installed one.
export MDB_SCHEMA_SCRIPT=$build/share/mdb/create_db.sql
work=$build/serve
mkdir -p "$work"
if [ $# -eq 0 ]; then
  if [ ! -d "$work/media" ]; then
    echo "Making the sample media library in $work/media"
    tools/samplegen/make-sample-library.sh "$work/media" "$build/tools/mdb-exif-stamp"
  fi
  set -- "$work/media"
fi
echo "mdbd shares $* (catalogue $work/catalogue.db); Ctrl-C stops it"
# shellcheck disable=SC2086 # MDBD_ARGS is a list of options
exec "$build/server/mdbd" --db "$work/catalogue.db" -v ${MDBD_ARGS:-} "$@"
