#!/bin/sh
# Adds a print queue to CUPS for every printer of a report, or changes the one that is there.
#
# usage: add-printers.sh REPORT [MODEL]
#   REPORT   JSON, of snmp-inventory
#   MODEL    the driver, of `lpinfo -m`; default: generic PCL
#
# A queue is named after the address, since what a printer says of itself may be anything; that becomes
# the queue's description and location.
set -eu
report=$1 model=${2:-drv:///sample.drv/generpcl.ppd}

jq -r '.[] | select(.printer) | [.hostname, .model // .hostname, .location // ""] | @tsv' "$report" |
    while IFS="$(printf '\t')" read -r address description location; do
        lpadmin -p "printer-$address" -E -v "socket://$address" -m "$model" \
            -D "$description" -L "$location"
    done
