# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Shared by setup, demo and test: sourced, never run. It moves to the root of the repository.

cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1

# say WORDS: a line for people. Results of a script go to stdout, everything else comes here.
say() { printf '%s\n' "$*" >&2; }

# fail WORDS: one sentence that names who, what and what to do; then exit status 1.
fail() {
    say "${0##*/}: $*"
    exit 1
}

# Bytes of memory this process may use: the machine's, or less in a container with a limit.
memoryBytes() {
    local machine limit=max
    machine=$(awk '/^MemTotal:/ { printf "%.0f", $2 * 1024 }' /proc/meminfo)
    [ -r /sys/fs/cgroup/memory.max ] && limit=$(cat /sys/fs/cgroup/memory.max)
    if [ "$limit" != max ] && [ "$limit" -lt "$machine" ]; then echo "$limit"; else echo "$machine"; fi
}

# Compilers side by side: one per processor, each with 2 GiB to itself. A larger number swaps and is slower.
buildJobs() {
    local jobs byMemory
    jobs=$(nproc)
    byMemory=$(($(memoryBytes) / (2 << 30)))
    [ "$byMemory" -lt "$jobs" ] && jobs=$byMemory
    [ "$jobs" -ge 1 ] || jobs=1
    echo "$jobs"
}

# configure PRESET [CMAKE-ARGUMENT…]: into build/PRESET, through ccache where that is installed.
configure() {
    local preset=$1 launcher=()
    shift
    command -v ccache > /dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    cmake --preset "$preset" --log-level=NOTICE "${launcher[@]}" "$@"
}

# build PRESET [CMAKE-BUILD-ARGUMENT…]
build() {
    local preset=$1
    shift
    cmake --build "build/$preset" --parallel "$(buildJobs)" "$@"
}
