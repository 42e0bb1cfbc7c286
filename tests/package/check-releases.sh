#!/bin/bash
# Judges whether each released version has what later ones are compared with.
# usage: check-releases.sh SOURCE-FOLDER

set -euo pipefail
cd "$1"
missing=0

while read -r version; do
    # Of 1.0.0 there is libbsp's description, by a shorter name; 1.1.0 was released without any.
    case $version in 1.0.0 | 1.1.0) continue ;; esac
    for library in libbsp libvboard-control; do
        for processor in x86_64 mips; do
            description=tests/package/abi/$library/$version-$processor.abi
            [ ! -e "$description" ] || continue
            echo "WRONG $description is missing: 'scripts/describe-abi $version' makes it"
            missing=1
        done
    done
done < <(sed -nE 's/^## ([0-9]+\.[0-9]+\.[0-9]+)$/\1/p' CHANGELOG.md)
[ "$missing" -eq 0 ]
