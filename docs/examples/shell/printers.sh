#!/bin/sh
# Prints the address and the page count of every printer. Needs jq.
#
# usage: printers.sh [OPTION OF snmp-inventory]...
set -eu

# Ends here with the program's exit code when there is no report; it has said why.
report=$("${SNMP_INVENTORY:-snmp-inventory}" --printers --format json "$@")
printf '%s' "$report" | jq -r '.[] | "\(.hostname)\t\(.pages // "unknown")"'
