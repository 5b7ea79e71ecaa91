#pragma once

#include "tests/support/Guards.h"

#include <gtest/gtest.h>

#include <optional>

/// A test suite with Printer-MIB of the project's own folder, and all that it imports, loaded.
class WithMIBs : public testing::Test
{
protected:
    static void SetUpTestSuite() { s_library.emplace(SNMPDISCOVERY_MIBS_DIR, "Printer-MIB"); }
    static void TearDownTestSuite() { s_library.reset(); }

private:
    static inline std::optional<TestSupport::NetSNMPLibrary> s_library;
};
