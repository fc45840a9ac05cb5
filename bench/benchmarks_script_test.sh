#!/usr/bin/env bash
# benchmarks_script_test.sh SCRIPT: benchmarks that can't be built end the script that runs them,
# with the compiler's own words.
set -euo pipefail

script=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# A build that fails as a compiler does, with its words on standard output as ninja has them.
cat >"$folder/cmake" <<'END'
#!/usr/bin/env bash
[[ $1 == --build ]] || exit 0
echo "Bench.cpp:7: error: no such thing"
exit 2
END
chmod +x "$folder/cmake"

if PATH="$folder:$PATH" "$script" >"$folder/out" 2>"$folder/err"; then
    echo "a failed build went by as a success" >&2
    exit 1
fi
for words in "Bench.cpp:7: error: no such thing" "the benchmarks can't be built"; do
    grep -qF "$words" "$folder/err" || { echo "not on standard error: $words" >&2; exit 1; }
done
