#!/usr/bin/env bash
# The effect loads this library against headers it was built with: every declared export must be
# there under exactly its declared name and parameter types (exports.txt), and the host-only
# stand-ins (property service, engine replacement) must stay outside it.
set -u
lib=$1
list=${2:-$(dirname "$0")/exports.txt}
raw=$(nm -DC --defined-only "$lib") || { echo "nm failed on $lib"; exit 1; }
# The names alone, with the standard library's spelled-out types in their short forms.
symbols=$(sed -E -e 's/^[0-9a-f]+ [A-Za-z] //' -e 's/\[abi:cxx11\]//g' \
    -e 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g' \
    -e 's/std::vector<([^<>]*), std::allocator<[^<>]*> >/std::vector<\1>/g' \
    -e 's/std::set<([^<>]*), std::less<[^<>]*>, std::allocator<[^<>]*> >/std::set<\1>/g' <<<"$raw")
fail=0

while IFS= read -r name; do
    case "$name" in "" | "#"*) continue ;; esac
    if ! grep -qxF -- "$name" <<<"$symbols"; then
        echo "missing export: $name"
        fail=1
    fi
done <"$list"

for name in property_get VexParamStore:: EffectParamParser::; do
    if grep -qF -- "$name" <<<"$symbols"; then
        echo "unexpected export: $name"
        fail=1
    fi
done

if [ "$fail" = 0 ]; then
    echo "exports ok"
fi
exit "$fail"
