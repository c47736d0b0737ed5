#!/usr/bin/env bash
# Installs what Wendrel needs to build, run and test, from Debian 12's packages only.
# Installs only what is missing, so a second run costs a few dpkg queries and no network.
# Works as root and, for other users, through sudo.
set -euo pipefail

packages=(
    # toolchain
    build-essential cmake ninja-build pkg-config git
    # application: Qt 6 (Core, Gui, Widgets, DBus, Svg), its X11 platform plugin, MIME data
    qt6-base-dev qt6-base-dev-tools qt6-svg-dev qt6-qpa-plugins shared-mime-info
    # images, PDFs, vision
    libvips-dev libvips-tools libwebp-dev libqpdf-dev qpdf libpoppler-cpp-dev poppler-utils
    # outline fonts that PDF page numbers and watermarks embed for Chinese, Japanese and Korean
    # text and for emoji (DejaVu Sans, below, covers Latin, Greek and Cyrillic); both small
    fonts-wqy-microhei fonts-symbola
    # PDF pages drawn as pictures: poppler through cairo, the faster of Debian's renderers
    libpoppler-glib-dev libcairo2-dev
    libzxing-dev libtesseract-dev libleptonica-dev tesseract-ocr-eng
    libopencv-core-dev libopencv-imgproc-dev libopencv-objdetect-dev libopencv-dnn-dev opencv-data
    # audio and video
    libavformat-dev libavcodec-dev libavfilter-dev libavutil-dev libswresample-dev libswscale-dev ffmpeg
    # archives: DEFLATE, and 7z, one of the tools the tests check archives with
    zlib1g-dev libdeflate-dev p7zip-full
    # X11 triggers, sounds, a display for tests
    libx11-dev libxfixes-dev libxtst-dev libxi-dev libcanberra-dev sound-theme-freedesktop
    xvfb xauth dbus dbus-x11 openbox trayer xdotool x11-utils fonts-dejavu-core desktop-file-utils
    # tests and benchmarks
    libgtest-dev libgmock-dev libbenchmark-dev unzip zip time python3 lcov hyperfine
    # independent readers the tests check outputs with (gio: GLib's desktop-entry Exec reader)
    libimage-exiftool-perl imagemagick libglib2.0-bin
    # documents: books are checked by the EPUB validator, DOCX and RTF read back by pandoc, and
    # DOCX and ODT opened by a real word processor, headless; large, but the only independent
    # judges of these formats
    epubcheck pandoc libreoffice-writer-nogui
)

missing=()
for package in "${packages[@]}"; do
    status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
    [[ "$status" == "install ok installed" ]] || missing+=("$package")
done

if ((${#missing[@]} == 0)); then
    exit 0
fi

if [[ $(id -u) -eq 0 ]]; then
    as_root=()
elif command -v sudo >/dev/null; then
    as_root=(sudo)
else
    echo "bootstrap: these packages are missing and neither root nor sudo is available:" >&2
    printf '  %s\n' "${missing[@]}" >&2
    exit 1
fi

echo "bootstrap: installing ${#missing[@]} package(s): ${missing[*]}"
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -q --no-install-recommends "${missing[@]}"
