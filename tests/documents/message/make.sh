#!/bin/bash
# Writes letter.msg: the streams of a message as a compound file made by libgsf (Debian package libgsf-bin). The tests
# don't run it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
target=$PWD/letter.msg
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT
cd "$folder"

# text FOLDER TAG TEXT: a text property, in UTF-16 if its type is 001F.
text() {
    mkdir -p "$1"
    if [[ $2 == *F ]]; then
        printf '%s' "$3" | iconv -t UTF-16LE
    else
        printf '%s' "$3"
    fi > "$1/__substg1.0_$2"
}

text . 0037001F 'Räder & Achsen'
text . 0042001F 'Ann Smith'
text . 0065001F ann@example.com
text . 1000001F 'The body, which nobody reads.'
text __recip_version1.0_#00000000 3001001F 'Bob Brown'
text __recip_version1.0_#00000001 3003001E carl@example.com
{
    head -c 32 /dev/zero
    printf '\x40\x00\x39\x00\x06\x00\x00\x00\x00\x05\xB5\x7D\x96\x8D\xC0\x01%8s' ''
    printf '\x40\x00\x06\x0E\x06\x00\x00\x00\x80\x9B\x4D\x7E\x96\x8D\xC0\x01%8s' ''
} > __properties_version1.0
rm -f "$target"
gsf createole "$target" ./*
