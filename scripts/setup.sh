#!/usr/bin/env bash
# Installs every Debian 12 package the project needs to build, test and run.
# Idempotent: packages already present are skipped, and the package lists are
# refreshed at most once per run. Run as root (or with sudo available).
set -euo pipefail

packages=(
  # toolchain
  build-essential cmake ninja-build ccache pkg-config git clang libclang-rt-14-dev
  # Qt 6
  qt6-base-dev qt6-base-dev-tools qt6-svg-dev qt6-qpa-plugins libgl-dev
  # X11 / XCB
  libx11-dev libx11-xcb-dev libxcb1-dev libxcb-shm0-dev libxcb-randr0-dev libxcb-xfixes0-dev
  libxcb-composite0-dev libxcb-damage0-dev libxcb-xinput-dev libxcb-xtest0-dev
  libxcb-keysyms1-dev libxcb-xkb-dev libxcb-image0-dev libxkbcommon-dev libxkbcommon-x11-dev
  # codecs, data
  libpng-dev libdeflate-dev zlib1g-dev nlohmann-json3-dev
  # reading text and QR codes
  libtesseract-dev tesseract-ocr-eng tesseract-ocr-deu tesseract-ocr-fra tesseract-ocr-spa tesseract-ocr-chi-sim
  tesseract-ocr-chi-tra tesseract-ocr-jpn tesseract-ocr-kor libzxing-dev
  # movies and sound: FFmpeg (H.264 by libx264, AAC), PulseAudio
  libavformat-dev libavcodec-dev libavutil-dev libswscale-dev libswresample-dev libpulse-dev
  # tests and benchmarks
  googletest libgtest-dev libgmock-dev libbenchmark-dev ffmpeg
  # running and driving the application headless
  pulseaudio pulseaudio-utils
  xvfb xauth trayer xdotool xclip x11-utils x11-xserver-utils dbus dbus-x11 fonts-dejavu-core
  # a small window manager, for the tests of windows as a desktop arranges them
  openbox
  # the accessibility bus, for element detection
  at-spi2-core
  # the face annotation text is measured and drawn in
  fonts-liberation2
  # Chinese, Japanese and Korean glyphs, for the text-capture tests
  fonts-droid-fallback
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if ((${#missing[@]} == 0)); then
  echo "setup: all ${#packages[@]} packages present"
  exit 0
fi

sudo_cmd=()
if [[ $(id -u) -ne 0 ]]; then sudo_cmd=(sudo); fi
echo "setup: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -q
"${sudo_cmd[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
