#!/usr/bin/env bash
# The main job on the bundled sample data.
set -euo pipefail
build="${1:-build}"
cd "$(dirname "$0")/.."
samples=samples/edl/short-film-25
if [ ! -f "$samples/old.edl" ]; then
  samples=../shared/edl-corpus/otio-cmx3600-adapter
  exec "$build/app/montala" inspect "$samples/25fps.edl" --rate 25
fi
exec "$build/app/montala" inspect "$samples/old.edl" --rate 25
