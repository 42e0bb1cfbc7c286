#!/bin/bash
# Packages are cut by the components of the install rules: each installed file has to be in exactly one that
# packaging/components names, and what a package is for in its own.
# usage: check-components.sh CMAKE SOURCE-FOLDER BUILD-FOLDER WORK-FOLDER NM

set -euo pipefail
readonly cmake=$1 source=$2 build=$3 work=$4 nm=$5
# shellcheck source=tests/package/expect-same.sh
. "$source/tests/package/expect-same.sh"
export LC_ALL=C

# install_to FOLDER [OPTION...]
install_to() {
    local folder=$1
    shift
    DESTDIR=$work/$folder "$cmake" --install "$build" --prefix /usr "$@" >>"$work/install.log"
    mkdir -p "$work/$folder"
}
files() {
    (cd "$work/$1" && find . ! -type d -printf '%P\n' | sort)
}

rm -rf "$work"
mkdir -p "$work"
install_to all
mapfile -t components < <(awk '!/^#/ { print $1 }' "$source/packaging/components")
for component in "${components[@]}"; do
    install_to "parts/$component" --component "$component"
done
listed=$(for component in "${components[@]}"; do files "parts/$component"; done | sort)
expect_same "no file is in two packages" "" "$(uniq -d <<<"$listed")"
expect_same "each installed file is in a package" "$(files all)" "$listed"

# expect_in COMPONENT PATTERN...: names that only its files have.
expect_in() {
    local component=$1 pattern path owners
    shift
    for pattern in "$@"; do
        owners=$(for path in "${components[@]}"; do
            if files "parts/$path" | grep -E "(^|/)$pattern\$" >/dev/null; then echo "$path"; fi
        done)
        expect_same "$pattern is in $component" "$component" "$owners"
    done
}
expect_in runtime 'libbsp\.so\.[0-9.]+' 'lib/tmpfiles\.d/bsp\.conf' 'examples/S01bsp'
expect_in development 'include/bsp\.h' 'libbsp\.(so|a)' 'cmake/bsp/.*' 'bsp\.pc' 'man3/bsp\.h\.3'
expect_in tools 'bin/iodbg' 'libbsp-trace\.so\..*' 'man1/iodbg\.1' 'completions/iodbg'
expect_in vboard 'bin/vboard' 'libvboard-control\.so.*' 'libvboard\.so' 'include/vboard\.h' 'cmake/vboard/.*' 'vboard\.pc' \
    'vboard-tools/nandwrite' 'man1/vboard\.1' 'man3/vboard\.h\.3'
expect_in python-vboard 'vboard/pytest_plugin\.py' 'vboard-[0-9.]+\.dist-info/entry_points\.txt'
expect_in doc 'front-panel\.png' 'virtual-board\.md' 'CHANGELOG\.md'

# What makes the folder at the start is the same in all places that tell it.
made_at_start=$(sed -n '/^    set -C/,/^}/p' "$source/packaging/init/S01bsp" | grep -oE '/tmp/[A-Za-z/]+' | sort)
expect_same "the page on security shows what the example for init systems does" \
    "$made_at_start" \
    "$(sed -n '/^    set -C/,/^$/p' "$source/docs/security.md" | grep -oE '/tmp/[A-Za-z/]+' | sort)"
expect_same "and what systemd-tmpfiles does" \
    "$made_at_start" \
    "$(awk '/^[df] / { print $2 }' "$source/packaging/tmpfiles/bsp.conf" | sort)"

# The symbols that packages promise are those of the list of exports.
promised() {
    "$source/packaging/symbols" "$source/cmake/libbsp.map" libbsp.so.1 libbsp1 "$1" | sed '1d; s/^ //' | sort
}
expect_same "the packages' symbols are the exported ones" \
    "$("$nm" -D --defined-only "$build/libbsp.so" | awk '{ print $2 == "A" ? $3 "@" $3 : $3 }' | sed 's/@@/@/' | sort -u)" \
    "$(promised 99 | cut -d ' ' -f 1)"
expect_same "each with the version that brought it" $'bspCpldGet@BSP_1 1\nbspLibraryVersion@BSP_1.1 1.1' \
    "$(promised 99 | grep -E '^(bspCpldGet|bspLibraryVersion)@')"
expect_same "which is not later than the package" $'bspCpldGet@BSP_1 1\nbspLibraryVersion@BSP_1.1 1.0.0' \
    "$(promised 1.0.0 | grep -E '^(bspCpldGet|bspLibraryVersion)@')"
exit "$((failures > 0))"
