# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Shared by the scripts: sourced, never run. It moves to the root of the repository.

cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1

# say WORDS: a line for people. Results of a script go to stdout, everything else comes here.
say() { printf '%s\n' "$*" >&2; }

# fail WORDS: one sentence that names who, what and what to do; then exit status 1.
fail() {
    say "${0##*/}: $*"
    exit 1
}

# One word of /etc/os-release, empty where it is not told.
osRelease() { (. /etc/os-release 2> /dev/null && echo "${!1:-}") || true; }

# The mirror of this very Debian release as apt is configured to use it: from apt's lists or else its sources.
debianMirror() {
    local release mirrors
    release=$(osRelease VERSION_CODENAME)
    # shellcheck disable=SC2016  # $(REPO_URI) is for apt
    mirrors=$(apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Origin: Debian' "Codename: $release")
    [ -n "$mirrors" ] ||
        mirrors=$(apt-get update --print-uris 2> /dev/null | sed -n "s|^'\(.*\)dists/$release/InRelease'.*|\1|p")
    sed -n 1p <<< "$mirrors"
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
