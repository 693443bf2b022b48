#!/usr/bin/env bash
# Mutation check of the Linux suite: for each line of tests/mutations.txt it patches one
# fault into a copy of the tree, builds, runs everything ctest lists but the kit's tests (the
# install, the demo's golden picture and the tools, which add a minute a mutation and whose
# programs the driver's faults reach only through the driver) and the Linux side of the
# scenario program, and reports whether the suite noticed (killed) or not (survived).
# Ends with "K killed, S survived" and the survivors. Not part of the test command: it takes
# about a minute a mutation on two cores.
#   scripts/mutate.sh                  every mutation, on a copy of this checkout
#   scripts/mutate.sh --tree DIR       on a copy of another checkout (an older commit's
#                                      worktree, say), with this checkout's list
#   scripts/mutate.sh --only WORD      only the mutations whose line contains WORD (repeat
#                                      --only for several)
# Results are also written to build-mutate/results.txt (NORVGL_MUTATE_DIR to move it).
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
list=$root/tests/mutations.txt
source_tree=$root
only=()
while [ $# -gt 0 ]; do
    case $1 in
    --tree) source_tree=$(cd "$2" && pwd); shift 2 ;;
    --only) only+=("$2"); shift 2 ;;
    *) echo "mutate: unknown argument $1"; exit 2 ;;
    esac
done
work=${NORVGL_MUTATE_DIR:-$root/build-mutate}
tree=$work/tree
build=$tree/build
results=$work/results.txt
jobs=$(nproc)

scripts/deps.sh
# A display of its own: another program's window over the test windows spoils captures.
unset DISPLAY
source scripts/xvfb.sh

# The copy: tracked and untracked files that git does not ignore, so uncommitted work counts.
# Each file gets the time of the copy, so the build never keeps an object of an older text.
mkdir -p "$tree"
(cd "$source_tree" && git ls-files -z --cached --others --exclude-standard |
    tar --null -T - -cf -) | tar -xf - --touch -C "$tree"
cmake -S "$tree" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DNORVGL_WERROR=OFF >/dev/null
targets=(norvgl norvgl_tests norvgl_alloc_test norvgl_picture_file_tests norvgl_scenario
    norvgl_texconv)

build_suite() {
    cmake --build "$build" -j "$jobs" --target "${targets[@]}" >"$work/build.log" 2>&1
}
run_suite() {
    ctest --test-dir "$build" --label-exclude kit --timeout 120 --stop-on-failure >"$work/ctest.log" 2>&1 ||
        return 1
    local scratch
    scratch=$(mktemp -d)
    (cd "$scratch" && timeout 300 "$build/tests/scenario/norvgl_scenario" --gtest_brief=1 \
        >"$work/scenario.log" 2>&1)
    local status=$?
    rm -rf "$scratch"
    return $status
}

echo "mutate: building and running the unchanged suite"
build_suite || { tail -30 "$work/build.log"; echo "mutate: the unchanged tree does not build"; exit 1; }
run_suite || { echo "mutate: the unchanged suite fails: see $work"; exit 1; }

# One mutation a line: FILE @@ FRAGMENT @@ REPLACEMENT @@ WHAT IT BREAKS. The fragment must
# occur exactly once in the file.
patch_file() { # file fragment replacement -> 0 patched, 3 fragment not found once
    python3 - "$@" <<'EOF'
import sys
path, fragment, replacement = sys.argv[1:4]
text = open(path, encoding="utf-8").read()
if text.count(fragment) != 1:
    sys.exit(3)
open(path, "w", encoding="utf-8").write(text.replace(fragment, replacement))
EOF
}

: >"$results"
killed=0
survived=0
invalid=0
survivors=()
while IFS= read -r line; do
    case $line in '' | '#'*) continue ;; esac
    if [ ${#only[@]} -gt 0 ]; then
        wanted=false
        for word in "${only[@]}"; do [[ $line == *"$word"* ]] && wanted=true; done
        $wanted || continue
    fi
    mapfile -t fields < <(python3 -c 'import sys; [print(f.strip()) for f in sys.argv[1].split(" @@ ")]' "$line")
    if [ ${#fields[@]} -ne 4 ]; then
        echo "mutate: not four fields: $line"
        invalid=$((invalid + 1))
        continue
    fi
    file=${fields[0]} fragment=${fields[1]} replacement=${fields[2]} what=${fields[3]}
    target=$tree/$file
    if [ ! -f "$target" ]; then
        verdict=invalid
    else
        cp -p "$target" "$work/original"
        status=0
        patch_file "$target" "$fragment" "$replacement" || status=$?
        if [ $status -ne 0 ]; then
            verdict=invalid
        elif ! build_suite; then
            verdict=invalid
        elif run_suite; then
            verdict=survived
        else
            verdict=killed
        fi
        # Back to the original text with a new time, so the next build compiles it again.
        cat "$work/original" >"$target"
    fi
    case $verdict in
    killed) killed=$((killed + 1)) ;;
    survived) survived=$((survived + 1)); survivors+=("$file: $what") ;;
    invalid) invalid=$((invalid + 1)) ;;
    esac
    printf '%-9s %s: %s\n' "$verdict" "$file" "$what"
    printf '%s\t%s\t%s\n' "$verdict" "$file" "$what" >>"$results"
done <"$list"
build_suite >/dev/null 2>&1 || true

echo "$killed killed, $survived survived"
for s in "${survivors[@]}"; do echo "  survived: $s"; done
if [ "$invalid" -gt 0 ]; then
    echo "mutate: $invalid mutations could not be applied or built (see $results)"
    exit 1
fi
