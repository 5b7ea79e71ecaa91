#pragma once

#include "tests/support/Guards.h"

#include <gtest/gtest.h>

/// A test suite with Printer-MIB of the project's own folder, and all that it imports, loaded: by
/// the first such suite, until the process exits. (Net-SNMP 5.9 loses memory when it is set up
/// again, which LeakSanitizer would report.)
class WithMIBs : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        static const TestSupport::NetSNMPLibrary library(SNMPDISCOVERY_MIBS_DIR, "Printer-MIB");
    }
};
