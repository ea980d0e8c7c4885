#!/usr/bin/env bash
# Makes the Debian packages, looks at what is in them, and runs the programs out of an unpacked one.
#   package_test.sh BUILD SOURCE WORK MOSAICER
# With MOSAICER_INSTALL_PACKAGE=1, which only a machine that may be thrown away should set, also installs it.
set -euo pipefail
build=$1 source=$2 work=$3 mosaicer=$4

fail() {
    echo "package_test: $*" >&2
    exit 1
}

rm -rf "$work"
mkdir -p "$work"
cpack --config "$build/CPackConfig.cmake" -G DEB -B "$work/made" >"$work/cpack.log" 2>&1 || {
    cat "$work/cpack.log"
    fail "cpack failed"
}
programs=$(echo "$work"/made/mosaicer_*.deb)
development=$(echo "$work"/made/mosaicer-dev_*.deb)

# Every file of a short list is in its package, and no file of the source tree's own paths.
expect_files() {
    local package=$1 listing name
    shift
    listing=$(dpkg-deb -c "$package")
    for name in "$@"; do
        grep -q "[ ]\./usr/$name\$" <<<"$listing" || fail "no $name in $package"
    done
    ! grep -v "root/root" <<<"$listing" || fail "files of $package belong to somebody"
    ! grep -v " \./\(usr/.*\)\?$" <<<"$listing" || fail "files of $package outside of /usr"
}
expect_files "$programs" bin/mosaicer bin/kst share/man/man1/mosaicer.1.gz share/man/man1/kst.1.gz \
    share/bash-completion/completions/kst share/bash-completion/completions/mosaicer \
    share/zsh/vendor-completions/_kst share/zsh/vendor-completions/_mosaicer \
    share/mosaicer/mosaicer.rng share/doc/mosaicer/docs/schema/mosaicer-definition.rng \
    share/doc/mosaicer/docs/integration.md share/doc/mosaicer/copyright share/doc/mosaicer/examples/atlas_set.xml
expect_files "$development" include/mosaicer/packing/AtlasSurface.h lib/cmake/mosaicer/mosaicerConfig.cmake \
    lib/cmake/mosaicer/MosaicerAtlases.cmake lib/libmosaicer_packing.a share/doc/mosaicer-dev/copyright
for library in libfreeimage3 libc6 libstdc++6; do
    dpkg-deb -f "$programs" Depends | grep "$library" >/dev/null || fail "$library is not among the dependencies"
done
if command -v lintian >/dev/null; then
    lintian --fail-on error "$programs" "$development" >"$work/lintian.log" 2>&1 || {
        cat "$work/lintian.log"
        fail "lintian found errors"
    }
fi

# The programs run from where they were unpacked, find each other, and make the bytes of the build tree.
dpkg-deb -x "$programs" "$work/root"
cd "$work"
"$mosaicer" -draft "$source/examples/textures" "$source/examples/atlas_set.xml" expected >/dev/null
root/usr/bin/mosaicer -draft root/usr/share/doc/mosaicer/examples/textures \
    root/usr/share/doc/mosaicer/examples/atlas_set.xml plain >/dev/null
diff -r expected plain || fail "the packaged program makes other bytes"
root/usr/bin/kst atlas plan "$source/examples/textures" "$source/examples/atlas_set.xml" planned -o build.ninja -- -draft
grep -q "^tool = $work/root/usr/bin/mosaicer$" build.ninja || fail "kst does not find mosaicer beside itself"
ninja >/dev/null
diff -r expected planned || fail "the plan makes other bytes"

if [ "${MOSAICER_INSTALL_PACKAGE:-}" = 1 ] && [ "$(id -u)" = 0 ]; then
    apt-get install -y "$programs" "$development"
    mosaicer -draft /usr/share/doc/mosaicer/examples/textures /usr/share/doc/mosaicer/examples/atlas_set.xml installed
    apt-get remove -y mosaicer mosaicer-dev
    diff -r expected installed
fi
echo "package_test: good"
