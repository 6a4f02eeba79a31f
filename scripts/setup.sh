#!/usr/bin/env bash
# Installs the Debian packages Montala builds with, and nothing from elsewhere.
# Quick when everything is there: it only asks dpkg.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config
  libgtest-dev libgmock-dev libbenchmark-dev
  libcli11-dev nlohmann-json3-dev
  clang libclang-rt-14-dev ccache
  juce-modules-source xvfb xauth
  # The simulated host's plug windows are X11 windows of its own.
  libx11-dev
  # Drives the studio's window with real clicks and keys in its end-to-end test.
  xdotool
  # The window's stand-in for Segoe UI (Latin, Cyrillic), and a CJK font that
  # JUCE can load (it reads .ttf and .otf files, not .ttc collections).
  fonts-dejavu-core fonts-droid-fallback
  # A real browser for the test that opens the HTML change report headless.
  chromium
  # The simulated host decodes video frames with FFmpeg's libraries; the
  # program makes the sample videos.
  libavformat-dev libavcodec-dev libswscale-dev libavutil-dev ffmpeg
)

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$package")
  fi
done

if [ "${#missing[@]}" -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  sudo_cmd=()
  if [ "$(id -u)" -ne 0 ]; then
    sudo_cmd=(sudo)
  fi
  export DEBIAN_FRONTEND=noninteractive
  "${sudo_cmd[@]}" apt-get update -qq
  "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
