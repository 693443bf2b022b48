#!/usr/bin/env bash
# Keeps the source folders layered one way: a folder under src/ includes only itself and the
# folders below it, in this order from the bottom:
#   formats platform core manager3d pictures models particles session api
# Every quoted include of a file under src/ is checked; the host's header is open to all.
# Prints each include that goes up or sideways as FILE:LINE and fails when there is one.
set -euo pipefail
cd "$(dirname "$0")/.."

layers=(formats platform core manager3d pictures models particles session api)

rank() {
    local i
    for i in "${!layers[@]}"; do
        [ "${layers[$i]}" = "$1" ] && { echo "$i"; return; }
    done
    echo -1
}

status=0
while IFS= read -r file; do
    folder=${file#src/}
    folder=${folder%%/*}
    own=$(rank "$folder")
    if [ "$own" -lt 0 ]; then
        echo "$file: folder src/$folder is not in the layer order"
        status=1
        continue
    fi
    while IFS=: read -r line target; do
        [ "$target" = "norvgl.h" ] && continue
        other=${target%%/*}
        if [ "$other" = "$target" ]; then
            echo "$file:$line: include \"$target\" names no folder"
            status=1
            continue
        fi
        theirs=$(rank "$other")
        if [ "$theirs" -lt 0 ]; then
            echo "$file:$line: include \"$target\" is outside the layers"
            status=1
        elif [ "$theirs" -gt "$own" ]; then
            echo "$file:$line: src/$folder includes \"$target\", a layer above it"
            status=1
        fi
    done < <(grep -nE '^[[:space:]]*#[[:space:]]*include[[:space:]]*"' "$file" |
        sed -E 's/^([0-9]+):[[:space:]]*#[[:space:]]*include[[:space:]]*"([^"]+)".*/\1:\2/')
done < <(git ls-files -- 'src/*.h' 'src/*.cpp' 'src/*.inl' 'src/*.c'; \
    git ls-files --others --exclude-standard -- 'src/*.h' 'src/*.cpp' 'src/*.inl' 'src/*.c')

if [ "$status" -ne 0 ]; then
    echo "layers: includes against the order ${layers[*]}"
    exit 1
fi
echo "layers: every include goes down (${layers[*]})"
