#!/usr/bin/env bash
# The main job on the bundled sample data: the Change EDL between the Old and
# New cut of the 25 fps sample reel, written to out/, then read back.
set -euo pipefail
build="${1:-build}"
cd "$(dirname "$0")/.."
montala="$build/app/montala"
samples=samples/edl/short-film-25
mkdir -p out
"$montala" generate --old "$samples/old.edl" --new "$samples/new.edl" --rate 25 -o out/short-film-25-change.edl
echo
echo "== The written Change EDL, read back:"
"$montala" inspect out/short-film-25-change.edl --rate 25
