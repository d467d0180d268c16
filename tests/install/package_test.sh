#!/usr/bin/env bash
# Checks of the installation and the Debian package, one CTest test per mode:
#   build BUILD_DIR OUT_DIR          install the build tree into OUT_DIR/stage and make the .deb
#                                    in OUT_DIR from it (the same CPack settings as "cpack -G DEB")
#   contents OUT_DIR                 the package holds the programs, tables, manuals, desktop
#                                    entry, icon and metainfo, and its tables are those of res/
#   depends OUT_DIR                  Depends names Debian packages only, ffmpeg and a Japanese font
#   desktop OUT_DIR                  the installed desktop entry passes desktop-file-validate
#   metainfo OUT_DIR                 the installed AppStream metadata passes appstreamcli
#   data OUT_DIR PROBE               a program in the installed bin/ finds the tables and manuals
set -euo pipefail

src_dir=${TW_SOURCE_DIR:-$(cd "$(dirname "$0")/../.." && pwd)}

mode=$1
out=$2
id=io.github.brindlemoor.TarnwickMP4
stage=$out/stage

fail() {
    echo "FAIL: $*" >&2
    exit 1
}

the_deb() {
    local debs=("$out"/tarnwickmp4_*_amd64.deb)
    [ -f "${debs[0]}" ] || fail "no package in $out"
    echo "${debs[0]}"
}

case $mode in
build)
    build=$2
    out=$3
    stage=$out/stage
    rm -rf "$out"
    mkdir -p "$out"
    DESTDIR=$stage cmake --install "$build" --prefix /usr --strip >/dev/null
    # From the staged tree, so that the check builds nothing: "cpack" in the build tree would
    # first bring every target of the build up to date.
    cpack --config "$build/CPackConfig.cmake" -G DEB -B "$out" \
        -D CPACK_INSTALL_CMAKE_PROJECTS= -D "CPACK_INSTALLED_DIRECTORIES=$stage;." >/dev/null
    echo "made $(the_deb)"
    ;;
contents)
    listing=$(dpkg-deb -c "$(the_deb)" | awk '{print $6}')
    expected=(
        ./usr/bin/tarnwickmp4-cli
        ./usr/bin/tarnwickmp4-cli-main
        ./usr/share/tarnwickmp4/res/TarnwickMP4Res_ENG.json
        ./usr/share/tarnwickmp4/res/TarnwickMP4Res_JPN.json
        ./usr/share/tarnwickmp4/doc/manual_en.txt
        ./usr/share/tarnwickmp4/doc/manual_ja.txt
        ./usr/share/tarnwickmp4/doc/manual2_en.txt
        ./usr/share/tarnwickmp4/doc/manual2_ja.txt
        ./usr/share/applications/$id.desktop
        ./usr/share/icons/hicolor/scalable/apps/$id.svg
        ./usr/share/metainfo/$id.metainfo.xml
    )
    # The window's program is in the package whenever the build made it.
    if [ "${TW_EXPECT_WINDOW:-0}" = 1 ]; then
        expected+=(./usr/bin/tarnwickmp4)
    fi
    for path in "${expected[@]}"; do
        grep -qxF "$path" <<<"$listing" || fail "the package lacks $path"
        echo "holds $path"
    done
    grep -v -e '/$' -e '^./usr/bin/' -e '^./usr/share/' <<<"$listing" &&
        fail "the package holds files outside /usr/bin and /usr/share"
    for table in "$stage"/usr/share/tarnwickmp4/res/*.json; do
        cmp -s "$table" "$src_dir/res/$(basename "$table")" || fail "$table differs from res/"
    done
    ;;
depends)
    deb=$(the_deb)
    depends=$(dpkg-deb -f "$deb" Depends)
    echo "Depends: $depends"
    echo "Recommends: $(dpkg-deb -f "$deb" Recommends)"
    mapfile -t names < <(tr ',|' '\n\n' <<<"$depends" | sed -e 's/(.*)//' -e 's/[[:space:]]//g' | grep -v '^$')
    printf '%s\n' "${names[@]}" | grep -qx ffmpeg || fail "ffmpeg is not a dependency"
    printf '%s\n' "${names[@]}" | grep -qx fonts-ipafont-gothic || fail "no Japanese font dependency"
    # Each must be a package of a Debian archive this machine installs from (one apt-cache call:
    # it is slow to start).
    policies=$(apt-cache policy "${names[@]}" 2>/dev/null)
    for name in "${names[@]}"; do
        policy=$(awk -v head="$name:" '/^[^ ]/ { inside = ($0 == head) } inside' <<<"$policies")
        grep -q 'Candidate: [^(]' <<<"$policy" || fail "$name is not a package apt can install"
        grep -qE '^ +[0-9]+ [a-z+]+:/?/?[^ ]*debian[^ ]* ' <<<"$policy" ||
            fail "$name does not come from a Debian archive"
        echo "$name: $(grep -m1 'Candidate:' <<<"$policy" | xargs)"
    done
    ;;
desktop)
    command -v desktop-file-validate >/dev/null || fail "desktop-file-validate is missing (scripts/setup.sh installs desktop-file-utils)"
    desktop-file-validate "$stage/usr/share/applications/$id.desktop"
    grep -qx "Exec=tarnwickmp4 %f" "$stage/usr/share/applications/$id.desktop" || fail "Exec line"
    grep -qx "Icon=$id" "$stage/usr/share/applications/$id.desktop" || fail "Icon line"
    echo "valid"
    ;;
metainfo)
    command -v appstreamcli >/dev/null || fail "appstreamcli is missing (scripts/setup.sh installs appstream)"
    appstreamcli validate --no-net "$stage/usr/share/metainfo/$id.metainfo.xml"
    ;;
data)
    probe=$3
    cp "$probe" "$stage/usr/bin/"
    trap 'rm -f "$stage/usr/bin/$(basename "$probe")"' EXIT
    "$stage/usr/bin/$(basename "$probe")"
    ;;
*)
    fail "unknown mode $mode"
    ;;
esac
