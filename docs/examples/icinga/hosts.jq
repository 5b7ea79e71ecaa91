# Makes Icinga 2 hosts of the printers of a report: jq -r -f hosts.jq report.json >conf.d/printers.conf
#
# Texts become string literals of Icinga's language, in which nothing of an agent can end the string or
# start a macro.
def text: explode
    | map(if . < 32 or . == 127 then 32 elif . == 36 then [36, 36] else . end) | flatten | implode
    | gsub("\\\\"; "\\\\") | gsub("\""; "\\\"") | "\"\(.)\"";

.[] | select(.printer)
| "object Host \"printer-\(.hostname)\" {",
  "  import \"snmp-printer\"",
  "  address = \"\(.hostname)\"",
  "  display_name = \(.name // .hostname | text)",
  "  vars.model = \(.model // "" | text)",
  "  vars.location = \(.location // "" | text)",
  "}"
