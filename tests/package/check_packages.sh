#!/usr/bin/env bash
# Checks the Debian packages in a folder, and the flags that their programs were compiled with:
#   check_packages.sh FOLDER FLAGS
# A failing check ends the script with an error.
set -euo pipefail

folder=$1
flags=$2
here=$(cd "$(dirname "$0")" && pwd)
sandbox=$(mktemp -d)
trap 'rm -rf "$sandbox"' EXIT

fail() {
    echo "check_packages: $*" >&2
    exit 1
}

for tool in lintian desktop-file-validate appstreamcli convert; do
    command -v "$tool" >/dev/null ||
        fail "$tool is missing: apt-get install lintian desktop-file-utils appstream imagemagick"
done

# What lintian can't see in the programs; its overrides tell why.
[[ $flags == *-D_FORTIFY_SOURCE=* ]] || fail "built without _FORTIFY_SOURCE: use the preset package"

shopt -s nullglob
packages=("$folder"/*.deb)
[[ ${#packages[@]} -eq 2 ]] || fail "there are ${#packages[@]} packages, not 2"
for file in "${packages[@]}"; do
    package=$(dpkg-deb --field "$file" Package)
    dpkg-deb --extract "$file" "$sandbox/$package"
    "$here/check_tree.sh" "$sandbox/$package" /usr "$package"
    dpkg-deb --contents "$file" | awk '$2 != "root/root"' | grep . && fail "files that aren't root's"

    # Whatever lintian says is a failure, down to its remarks of the lowest rank.
    lintian --display-info --pedantic --display-experimental --info --allow-root \
        --fail-on error,warning,info,pedantic,experimental "$file" || fail "lintian"
    # Overrides come with their reason.
    overrides=$sandbox/$package/usr/share/lintian/overrides/$package
    if [[ -e $overrides ]]; then
        head -n 1 "$overrides" | grep -q '^#' ||
            fail "an override without a reason"
    fi
    echo "check_packages: $(basename "$file") is as it should be"
done
