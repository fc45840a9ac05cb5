#!/usr/bin/env bash
# Checks what was installed for one package:
#   check_tree.sh ROOT PREFIX PACKAGE
# ROOT is the folder that stands for "/", PREFIX as in /usr. A failing check ends the script with an error.
set -euo pipefail

root=$1
tree=$1$2
package=$3
here=$(cd "$(dirname "$0")" && pwd)

fail() {
    echo "check_tree $package: $*" >&2
    exit 1
}
# value FILE KEY: of a line KEY=value, without quotes and what stands behind them.
value() { sed -n "s/^$2=\"\([^\"]*\)\".*\$/\1/p;s/^$2=\([^\"]*\)\$/\1/p" "$1"; }

# Exactly the files that are listed, and no others; the guides are those of docs/.
guides=share/doc/norvane-sms/docs
listing() {
    cd "$tree" && find . -path "./$guides" -prune -o \( -type f -printf '%P\n' \) \
        -o \( -type l -printf '%P -> %l\n' \) | LC_ALL=C sort
}
(listing) | diff "$here/$package.contents" - || fail "the files differ from those that are listed"

# Everybody may read them; nobody but their owner may write, and programs alone are run.
while read -r mode path; do
    case $path in
    bin/* | lib/norvane-sms/*[!L]) [[ $mode == 755 ]] ;;
    *) [[ $mode == 644 ]] ;;
    esac || fail "$path has the rights $mode"
done < <(cd "$tree" && find . -type f -printf '%m %P\n')

for manual in "$tree"/share/man/man1/*.gz; do
    [[ $(zcat "$manual" | grep -c '@[a-zA-Z_]*@') == 0 ]] || fail "$manual has a place that was not filled"
    zcat "$manual" | head -n 1 | grep -Eq '"[0-9]+ [A-Z][a-z]+ [0-9]{4}" "Norvane SMS [0-9.]+"' ||
        fail "$manual bears no day or version"
done
[[ $package == norvane-sms ]] || exit 0
diff -r "$here/../../docs" "$tree/$guides" || fail "the guides differ"

# It is the queue folder of a console that was never configured, which would read and delete these.
[[ -z $(find "$tree/lib/norvane-sms" -iname 'sms.*') ]] || fail "the programs' folder holds a drop file"

# What names a program by its full path names one that is there.
activation=$tree/share/dbus-1/services/com.tovek.SMService.service
units=$tree/lib/systemd/user
for program in "$(value "$activation" Exec)" "$(value "$units/tovek-sms.service" ExecStart)" \
    "$(value "$units/tovek-sms@.service" ExecStart)"; do
    [[ -x $root$program && $program == */norvane-sms/TovekSMService ]] || fail "no program $program"
done
[[ -f $units/$(value "$activation" SystemdService) ]] || fail "the bus names no unit of ours"

# The desktop: each entry of the menu, and each action of one, starts a program that is there and tells
# by which windows it is known. They share an icon, which exists in each size.
metainfo=$tree/share/metainfo/com.tovek.norvanesms.metainfo.xml
for entry in "$tree"/share/applications/*.desktop; do
    desktop-file-validate "$entry" || fail "desktop-file-validate"
    for program in $(value "$entry" Exec); do
        [[ -x $tree/bin/$program ]] || fail "the menu starts no program of ours: $program"
        grep -q "<binary>$program</binary>" "$metainfo" || fail "the metainfo does not name $program"
    done
    [[ -x $tree/lib/norvane-sms/$(value "$entry" StartupWMClass) ]] || fail "windows of no program of ours"
    [[ $(value "$entry" Icon | sort -u) == norvane-sms ]] || fail "another icon in $entry"
    grep -q "<launchable type=\"desktop-id\">$(basename "$entry")</launchable>" "$metainfo" ||
        fail "the metainfo does not name $entry"
done
[[ $(value "$tree/share/applications/com.tovek.norvanesms.desktop" Exec | tail -n 1) == norvane-sms-history ]] ||
    fail "the console's entry does not lead to the history"
icon=norvane-sms
for size in 16 22 24 32 48 64 128 256 512; do
    picture=$tree/share/icons/hicolor/${size}x$size/apps/$icon.png
    # Width, height and whether corner and middle are transparent: a picture, and not an empty sheet.
    seen=$(convert "$picture" -format '%w %h %[fx:u.p{0,0}.a<0.5] %[fx:u.p{w/2,h/2}.a<0.5]' info:)
    [[ $seen == "$size $size 1 0" ]] || fail "$picture is no icon of that size ($seen)"
done

appstreamcli validate --no-net --pedantic "$metainfo" || fail "appstreamcli validate"
version=$(zcat "$tree/share/doc/norvane-sms/changelog.gz" | sed -n '1s/.*(\(.*\)).*/\1/p')
grep -m 1 '<release ' "$metainfo" | grep -q "version=\"$version\"" ||
    fail "the newest release of the metainfo is not $version"
