#!/usr/bin/env bash
# The main job on the bundled sample data, the whole road: the Change EDL
# between the Old and New cut of the 25 fps sample reel, the sample session
# conformed to it, and the result checked frame by frame against both cuts.
set -euo pipefail
build="${1:-build}"
cd "$(dirname "$0")/.."
montala="$build/app/montala"
samples=samples/edl/short-film-25
session=samples/sessions/short-film-25.json
mkdir -p out
echo "== The Change EDL"
"$montala" generate --old "$samples/old.edl" --new "$samples/new.edl" --rate 25 -o out/short-film-25-change.edl
echo
echo "== The sample session conformed to it"
"$montala" conform "$session" --change out/short-film-25-change.edl -o out/short-film-25-conformed.json
echo
echo "== Sync audit of the conformed session against both cuts"
"$montala" verify "$session" out/short-film-25-conformed.json --old "$samples/old.edl" --new "$samples/new.edl"
echo
echo "== Written:"
echo "   $(pwd)/out/short-film-25-change.edl      the Change EDL"
echo "   $(pwd)/out/short-film-25-conformed.json  the conformed session"
