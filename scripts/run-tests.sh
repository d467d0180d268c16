#!/usr/bin/env bash
# Installs what is missing, builds, checks the formatting and runs every test (CTest), then
# the engine, render and workspace tests again under AddressSanitizer+UndefinedBehaviorSanitizer
# and under ThreadSanitizer.
set -euo pipefail

here=$(cd "$(dirname "$0")/.." && pwd)
bash "$here/scripts/setup.sh" "$here/build"

status=0

# Formatting: every C++ file as clang-format 14 lays it out (.clang-format).
if command -v clang-format >/dev/null 2>&1; then
    unformatted=()
    while IFS= read -r -d '' f; do
        clang-format --dry-run --Werror "$f" >/dev/null 2>&1 || unformatted+=("${f#$here/}")
    done < <(find "$here/src" "$here/tests" "$here/bench" -name '*.cpp' -print0 -o -name '*.h' -print0)
    if [ ${#unformatted[@]} -gt 0 ]; then
        echo "Not formatted with clang-format: ${unformatted[*]}"
        status=1
    fi
fi

ctest --test-dir "$here/build" --output-on-failure -j"$(nproc)" || status=1

if [ "${TW_SKIP_SANITIZERS:-0}" != "1" ] && [ -d "$here/src/engine" ] && ls "$here"/tests/engine/*_test.cpp >/dev/null 2>&1; then
    # The engine, render and workspace tests run under the sanitizers (the threads live there),
    # so only they are built there, optimised lightly and without debug information to keep the
    # builds short.
    targets=()
    for f in "$here"/tests/engine/*_test.cpp "$here"/tests/render/*_test.cpp \
        "$here"/tests/workspace/*_test.cpp; do
        layer=$(basename "$(dirname "$f")")
        targets+=("${layer}_$(basename "$f" .cpp)")
    done
    for san in ADDRESS THREAD; do
        dir="$here/build-${san,,}"
        cmake -S "$here" -B "$dir" -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-O1 -DNDEBUG" \
            -DTW_SANITIZE_$san=ON >/dev/null
        cmake --build "$dir" -j"$(nproc)" --target "${targets[@]}"
        echo "Engine, render and workspace tests under the ${san,,} sanitizer:"
        ctest --test-dir "$dir" --output-on-failure -j"$(nproc)" -L "engine|render|workspace" ||
            status=1
    done
fi

exit $status
