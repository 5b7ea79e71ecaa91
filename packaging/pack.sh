# What scripts/bundle, scripts/cross and scripts/package share; sourced by them in the folder of the sources.
# shellcheck shell=bash

# Lists are sorted by their bytes, whoever makes them.
export LC_ALL=C

# A work tree of git, and not merely a folder below one.
is_repository() { [[ $(git rev-parse --show-toplevel 2>/dev/null) == "$(pwd -P)" ]]; }

# Seconds since 1970 that stand for the time of everything made: those of the last commit, also in the
# source archive, where packaging/source-date holds them.
source_date() {
    local date=${SOURCE_DATE_EPOCH-}
    if [[ -z $date ]] && is_repository; then date=$(git log -1 --format=%ct); fi
    if [[ -z $date ]]; then date=$(<packaging/source-date); fi
    if [[ ! $date =~ ^[0-9]+$ ]]; then date=$(date -r CHANGELOG.md +%s); fi
    printf '%s' "$date"
}

# The system that this one is, for file names: deb12, ubuntu24.04, fedora41; a moving one by its name.
system_tag() {
    # shellcheck disable=SC1091
    (. /etc/os-release && printf '%s%s' "${ID/debian/deb}" "${VERSION_ID:-${VERSION_CODENAME-}}")
}

# pack FOLDER ARCHIVE: the folder as .tar.gz, without who made it and when, so that the same input gives
# the same octets. Needs GNU tar.
pack() {
    tar -C "$(dirname "$1")" --sort=name --owner=0 --group=0 --numeric-owner --mode=u=rwX,go=rX \
        --format=gnu --mtime="@$(source_date)" -cf - "$(basename "$1")" | gzip -9n >"$2"
}
