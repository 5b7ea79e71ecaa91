#include "fuzz/Fuzzing.h"
#include "fuzz/SNMPSetUp.h"
#include "snmp/OID.h"

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <algorithm>
#include <limits>

// Object identifiers from text, with the modules that the tool loads. Net-SNMP takes a name that it
// does not know for a regular expression and compiles it without bounds, so texts with signs that
// names and indexes do not have are left out. So are those with a quotation mark that is not
// closed, behind which Net-SNMP 5.9.3 reads on.

namespace {

using fuzzing::check;
using UVARNETSNMP::OID;

void setUpOnce()
{
    static const bool done = [] {
        fuzzing::setUpSNMP(SNMPDISCOVERY_MIBS_DIR, "Printer-MIB");
        check(OID("sysUpTime.0").toDottedNotation() == "1.3.6.1.2.1.1.3.0", "modules are loaded");
        return true;
    }();
    static_cast<void>(done);
}

/// Whether a quotation mark of either kind is not closed.
bool hasOpenQuote(const char* text)
{
    char quote = '\0';
    for (; *text != '\0'; ++text) {
        if (quote == '\0' && (*text == '"' || *text == '\'')) {
            quote = *text;
        } else if (*text == quote) {
            quote = '\0';
        }
    }
    return quote != '\0';
}

bool isSmall(oid number)
{
    return number <= static_cast<oid>(std::numeric_limits<int>::max());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    setUpOnce();
    const std::string text(fuzzing::text(data, size));
    if (text.find_first_of("\\*+?{}[]()|^$") != std::string::npos || hasOpenQuote(text.c_str())) {
        return 0;
    }
    const OID parsed(text.c_str());
    const OID last(text.c_str(), true);

    check(parsed.valid() == last.valid(), "both forms take the same names", text);
    if (!parsed.valid()) {
        check(parsed.oidptr() == nullptr && parsed.oidsize() == 0, "nothing is left", text);
        return 0;
    }
    check(parsed.oidsize() <= MAX_OID_LEN, "at most 128 sub-identifiers", text);
    check(last.oidsize() == 1 && last[0] == parsed[parsed.oidsize() - 1], "the last one", text);
    check(OID(parsed) == parsed, "a copy is equal", text);
    for (int format = NETSNMP_OID_OUTPUT_SUFFIX; format <= NETSNMP_OID_OUTPUT_NONE; ++format) {
        parsed.toString(format);
    }
    const oid* const end = parsed.oidptr() + parsed.oidsize();
    if (std::all_of(parsed.oidptr(), end, isSmall)) {
        const std::string dotted = "." + parsed.toDottedNotation();
        check(OID(dotted.c_str()) == parsed || parsed.oidsize() == 1,
              "the numbers read back as the same", text + " " + dotted);
    }
    return 0;
}
