# What the scripts share. Sourced from the project's folder, by bash.

# stage NAME COMMAND...: runs the command and says what it is, what it is at and how long it took.
# Its output is printed only when it fails, but for the lines that count its results, which are added
# to $results.
results=
stage() {
    local began=$SECONDS log status=0 watcher counted
    log=$(mktemp)
    printf '== %s\n' "$1"
    follow "$log" &
    watcher=$!
    "${@:2}" >"$log" 2>&1 || status=$?
    kill "$watcher" 2>/dev/null || true
    wait "$watcher" 2>/dev/null || true
    [ ! -t 1 ] || printf '\r\e[K'
    if [ "$status" -ne 0 ]; then
        cat "$log"
    else
        counted=$(grep -hE '^(tidy|docs|viewer|soak|coverage|(fuzz|mutate) [a-z]+): |^(lines|branches): |^[0-9]+% tests passed' "$log" || true)
        if [ -n "$counted" ]; then
            sed 's/^/   /' <<<"$counted"
            results+=$counted$'\n'
        fi
    fi
    printf '   %d s\n' $((SECONDS - began))
    rm -f "$log"
    return "$status"
}

# follow LOG: shows the last line of a log as it grows, for as long as the script runs: on a terminal
# in one place, elsewhere every quarter of a minute.
follow() {
    local pause=15 form='   %.90s\n' line shown=
    if [ -t 1 ]; then
        pause=1 form='\r\e[K   %.90s'
    fi
    while sleep "$pause" >/dev/null 2>&1 && kill -0 $$ 2>/dev/null; do
        line=$(tail -n 1 "$1" 2>/dev/null)
        if [ -n "$line" ] && [ "$line" != "$shown" ]; then
            # shellcheck disable=SC2059
            printf "$form" "$line"
            shown=$line
        fi
    done
}

# build PRESET TARGET...
build() {
    local preset=$1
    shift
    if command -v ccache >/dev/null; then
        # The precompiled headers are ours alone: their dates and defines do not change underneath.
        export CCACHE_SLOPPINESS=pch_defines,time_macros
        # Another checkout of the same sources finds what this one compiled.
        export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
        export CMAKE_CXX_COMPILER_LAUNCHER=ccache CMAKE_OBJCXX_COMPILER_LAUNCHER=ccache
    fi
    cmake --preset "$preset" "${configure_options[@]}" && cmake --build --preset "$preset" --target "$@"
}
configure_options=()
