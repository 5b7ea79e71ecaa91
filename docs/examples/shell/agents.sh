#!/bin/sh
# Prints a numbered table of the agents that SNMPDiscovery finds. Needs jq.
#
# usage: agents.sh [OPTION OF SNMPDiscovery]...
set -u

# The exit status says nothing (64 after every good run); the document does. A run takes seven
# seconds, so one that takes thirty hangs.
document=$(timeout 30 "${SNMPDISCOVERY:-SNMPDiscovery}" "$@")

# jq takes an empty text for no input and no error.
if [ -z "$document" ] || ! printf '%s' "$document" | jq -r '
    if type == "array" then . else error("not an array") end
    | sort_by(.hostname | split(".") | map(tonumber))
    | "No.\tAddress", (to_entries[] | "\(.key + 1)\t\(.value.hostname)")
'; then
    echo "agents.sh: SNMPDiscovery gave no document" >&2
    exit 1
fi
