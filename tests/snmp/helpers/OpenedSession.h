#pragma once

#include "tests/snmp/helpers/FakeNetSNMP.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

/// Security parameters as text.
using Texts = std::map<std::string, std::string>;

inline UVARNETSNMP::ByteString Octets(const std::string& text)
{
    return UVARNETSNMP::ByteString(text.begin(), text.end());
}

/// A library that counts as set up, and what Net-SNMP is given for sessions.
class OpenedSession : public ::testing::Test
{
protected:
    ~OpenedSession() override { m_fake.ForgetCalls(); }

    /// What snmp_sess_open is given for a session with these parameters.
    FakeNetSNMP::Template Opened(const UVARNETSNMP::SNMPSecurity& security, bool broadcast = false)
    {
        const OpenBook session(SNMP_VERSION_3, security, "192.0.2.7", broadcast);
        m_fake.ForgetCalls();
        return m_fake.opened.at(m_fake.opened.size() - 1);
    }
    FakeNetSNMP::Template Opened(const Texts& parameters)
    {
        return Opened(UVARNETSNMP::SNMPSecurity(parameters));
    }

    NameGuard m_name{"Test"};
    FakeNetSNMP m_fake;
};
