#!/bin/sh
# Installs the Debian packages Fizzle builds with, only those missing.
set -e
# g++ brings gcc's sanitizer runtimes (libasan, libubsan, liblsan, libtsan)
# as hard dependencies, so `make sanitize` needs no package of its own.
# libopencolorio-dev: the colour spaces OpenImageIO converts through;
# openimageio-tools and opencolorio-tools: oiiotool and ocioconvert, the
# references the float-plate tests compare with. universal-ctags: the test
# that keeps functions short finds them with it.
PACKAGES="cmake make g++ pkg-config libopenimageio-dev libimath-dev libcli11-dev nlohmann-json3-dev \
libgtest-dev libgmock-dev libbenchmark-dev \
libopencolorio-dev openimageio-tools opencolorio-tools \
slurm-wlm munge libcpp-httplib-dev chromium universal-ctags"
# The frei0r filter builds on Debian's frei0r header and is tested in the
# hosts that load it: ffmpeg, melt (MLT) and GStreamer (its frei0r element is
# in -plugins-bad; PNG decoding and the file source in -good).
PACKAGES="$PACKAGES frei0r-plugins-dev ffmpeg melt gstreamer1.0-tools gstreamer1.0-plugins-base \
gstreamer1.0-plugins-good gstreamer1.0-plugins-bad"
# fizzle-studio's browser tests run Playwright (from npm) under node; a node
# installed some other way, with its own npm, is kept.
command -v node >/dev/null 2>&1 || PACKAGES="$PACKAGES nodejs"
command -v npm >/dev/null 2>&1 || PACKAGES="$PACKAGES npm"
[ -n "$FIZZLE_EXTRA_PACKAGES" ] && PACKAGES="$PACKAGES $FIZZLE_EXTRA_PACKAGES"
missing=""
for p in $PACKAGES; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing="$missing $p"
done
[ -z "$missing" ] && exit 0
echo "Installing:$missing"
SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO="sudo"
$SUDO apt-get update -qq
DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends $missing
