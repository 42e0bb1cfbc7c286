#!/bin/bash
# Judges whether each released version has what later ones are compared with.
# usage: check-releases.sh SOURCE-FOLDER

set -euo pipefail
cd "$1"
missing=0

while read -r version; do
    libraries=(libbsp libvboard-control)
    [ "$version" != 1.0.0 ] || libraries=(libbsp) # was all that there was
    for library in "${libraries[@]}"; do
        for processor in x86_64 mips; do
            description=tests/package/abi/$library/$version-$processor.abi
            [ ! -e "$description" ] || continue
            echo "WRONG $description is missing: 'scripts/describe-abi $version' makes it"
            missing=1
        done
    done
done < <(sed -nE 's/^## ([0-9]+\.[0-9]+\.[0-9]+)$/\1/p' CHANGELOG.md)
[ "$missing" -eq 0 ]
