#!/usr/bin/env bash
# Makes the spreadsheets of this folder anew, by four programs of Debian:
# libspreadsheet-writeexcel-perl, libexcel-writer-xlsx-perl, gnumeric (ssconvert),
# libreoffice-calc-nogui (soffice) with python3-uno.
# They are kept, so that the tests need none of these.
set -euo pipefail
cd "$(dirname "$0")"

perl recipients.pl perl.xls
perl charts.pl charts.xls
perl charts.pl charts.xlsx
for kind in xls xlsx; do
    perl times.pl "times.$kind"
    perl times.pl "times-1904.$kind" 1904
done

ssconvert -T Gnumeric_Excel:excel_biff7 perl.xls gnumeric-biff5.xls
ssconvert -T Gnumeric_Excel:excel_biff8 perl.xls gnumeric.xls
ssconvert -T Gnumeric_Excel:xlsx2 perl.xls gnumeric.xlsx
ssconvert -T Gnumeric_OpenCalc:odf perl.xls gnumeric.ods

ssconvert -T Gnumeric_OpenCalc:odf times.xls times-gnumeric.ods
ssconvert -T Gnumeric_OpenCalc:odf times-1904.xls times-1904-gnumeric.ods

# Booleans, errors and the results of formulas.
ssconvert -T Gnumeric_Excel:excel_biff7 kinds.csv kinds-gnumeric-biff5.xls
ssconvert -T Gnumeric_Excel:excel_biff8 kinds.csv kinds-gnumeric.xls
ssconvert -T Gnumeric_Excel:xlsx2 kinds.csv kinds-gnumeric.xlsx
ssconvert -T Gnumeric_OpenCalc:odf kinds.csv kinds-gnumeric.ods

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for kind in xls xlsx ods; do
    soffice -env:UserInstallation="file://$work/profile" --headless --convert-to "$kind" \
        --outdir "$work" perl.xls
    mv "$work/perl.$kind" "libreoffice.$kind"
done
for book in times times-1904; do
    soffice -env:UserInstallation="file://$work/profile" --headless --convert-to ods \
        --outdir "$work" "$book.xls"
    mv "$work/$book.ods" "$book-libreoffice.ods"
done
for kind in xls ods; do
    soffice -env:UserInstallation="file://$work/profile" --headless --convert-to "$kind" \
        --outdir "$work" kinds-gnumeric.ods
    mv "$work/kinds-gnumeric.$kind" "kinds-libreoffice.$kind"
done

soffice -env:UserInstallation="file://$work/profile" --headless --norestore \
    "--accept=pipe,name=${work##*/};urp" &
python3 encrypted.py "$PWD" "${work##*/}"
wait
