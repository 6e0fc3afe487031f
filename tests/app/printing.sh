#!/usr/bin/env bash
# A stylesheet of 2000 lines as a PDF file, without a display: its pages, its text, and what the page set-up adds.
# Usage: printing.sh PROGRAM SAMPLE.xsl
set -euo pipefail

program=$1
sample=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM
export HOME=$work XDG_CONFIG_HOME=$work/config LC_ALL=C.UTF-8
cd "$work"

fail() {
    echo "FAILED: $*" >&2
    exit 1
}
for tool in pdfinfo pdftotext pdffonts; do
    command -v "$tool" >/dev/null || fail "$tool is not installed; ./test installs what the tests need"
done
pages() { pdfinfo "$1" | sed -n 's/^Pages: *//p'; }
squeezed() { tr -d '[:space:]\f'; }
# The text of one page without white space.
page() { pdftotext -layout -f "$2" -l "$2" "$1" - | squeezed; }
print() { "$program" --print "$@" 2>said || fail "--print $* said: $(cat said)"; }
refuses() {
    local pattern=$1
    shift
    if "$program" --print "$@" 2>said; then fail "--print $* went well"; fi
    grep -qE -- "$pattern" said || fail "--print $* said: $(cat said)"
}

# The sample's templates over and over, each time under other names.
{
    sed -n '1,12p' "$sample"
    for ((i = 1; i <= 60; i++)); do sed -n '13,50p' "$sample" | sed "s/match=\"/mode=\"m$i\" match=\"/"; done
} | sed -n '1,1999p' >sheet.xsl
echo '</xsl:stylesheet>' >>sheet.xsl
[ "$(wc -l <sheet.xsl)" = 2000 ] || fail "the stylesheet has $(wc -l <sheet.xsl) lines"

# Paper of 297 mm less three margins of 10 mm at 1200 dots an inch, in lines of 172 dots (9 points):
# The line break at the end begins no line.
lines=73
print sheet.pdf sheet.xsl
[ "$(pages sheet.pdf)" = $(((2000 + lines - 1) / lines)) ] || fail "$(pages sheet.pdf) pages"
for p in 1 2 14 28; do
    wanted=$(sed -n "$(((p - 1) * lines + 1)),$((p * lines))p" sheet.xsl | squeezed)
    [ "$(page sheet.pdf "$p")" = "$wanted" ] || fail "page $p: $(page sheet.pdf "$p")"
done
[ "$(pdffonts sheet.pdf | tail -n +3 | wc -l)" = 1 ] || fail "more than one font"

# What the user's settings add; the font of the editor changes nothing.
settings() {
    mkdir -p config/tavrin-xml-editor
    printf '%s\n' "$@" >config/tavrin-xml-editor/settings.ini
}
settings '[Xml%20Editor]' 'Font%20Size=40' 'Font%20Family=DejaVu Sans'
print again.pdf sheet.xsl
[ "$(pages again.pdf)" = "$(pages sheet.pdf)" ] || fail "the editor's font counts on paper"
settings '[Xml%20Editor]' 'Print%20Header=true' 'Print%20Line%20Numbers=true' 'Print%20Wrapped%20Lines=true'
printf '<a>%0200d</a>\n' 7 >long.xml
print long.pdf long.xml
[ "$(pdftotext -layout long.pdf - | squeezed)" = "long.xml1/11<a>$(printf "%092d" 0)»$(printf "%095d" 0)»$(printf "%013d" 7)</a>" ] ||
    fail "wrapped: $(pdftotext -layout long.pdf -)"
print sheet2.pdf sheet.xsl
[ "$(pages sheet2.pdf)" = $(((2000 + lines - 2 - 1) / (lines - 2))) ] || fail "$(pages sheet2.pdf) pages with a header"
settings '[Page%20Setup]' 'Paper=A5' 'Landscape=true'
print a5.pdf sheet.xsl
pdfinfo a5.pdf | grep -q 'Page size: *595 x 420 pts' || fail "$(pdfinfo a5.pdf)"
rm -r config

# Errors in words; what was there stays.
: >empty.xml
print empty.pdf empty.xml
[ "$(pages empty.pdf)" = 1 ] || fail "an empty file is one blank page"
echo kept >kept.pdf
refuses 'none.xml.*No such file' kept.pdf none.xml
refuses '“no/folder.pdf” could not be written' no/folder.pdf sheet.xsl
refuses 'could not be written: it is a folder' "$work" sheet.xsl
(
    ulimit -f 8 # blocks of 1024 bytes
    trap '' XFSZ
    refuses 'could not be written' kept.pdf sheet.xsl
)
[ "$(cat kept.pdf)" = kept ] || fail "a failed print left $(head -c 20 kept.pdf)"
[ "$(find . -name 'kept.pdf*' | wc -l)" = 1 ] || fail "left behind: $(ls)"
printf '\xef\xbb\xbf<a>\xff</a>' >broken.xml
print broken.pdf broken.xml
grep -q 'not valid UTF-8' said || fail "bytes that are not valid go unmentioned"
[ ! -e "$XDG_CONFIG_HOME" ] || fail "printing wrote settings"
echo passed
