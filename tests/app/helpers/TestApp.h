#pragma once

#include "app/SNMPDiscoveryApp.h"

#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

/// The application with its protected members made public.
class TestApp : public SNMPDiscoveryApp
{
public:
    using SNMPDiscoveryApp::initialize;
    using SNMPDiscoveryApp::m_community;
    using SNMPDiscoveryApp::m_helpRequested;
    using SNMPDiscoveryApp::m_mutex;
    using SNMPDiscoveryApp::m_responders;
    using SNMPDiscoveryApp::main;
    using SNMPDiscoveryApp::reinitialize;
    using SNMPDiscoveryApp::uninitialize;

    /// Calls `init` with a command line made of `executable` and `arguments`.
    void initWith(std::vector<std::string> arguments,
                  std::string executable = "/opt/tool/SNMPDiscovery")
    {
        arguments.insert(arguments.begin(), std::move(executable));
        std::vector<char*> argv;
        argv.reserve(arguments.size() + 1);
        for (std::string& argument : arguments) {
            argv.push_back(argument.data());
        }
        argv.push_back(nullptr);
        init(static_cast<int>(arguments.size()), argv.data());
    }
};

/// Catches what is written to std::cout while it lives.
class CapturedOutput
{
public:
    CapturedOutput() : m_previous(std::cout.rdbuf(&m_text)) {}
    ~CapturedOutput() { std::cout.rdbuf(m_previous); }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    std::string text() const { return m_text.str(); }
    /// How often the stream was flushed.
    int flushes() const { return m_text.flushes; }

private:
    class Buffer : public std::stringbuf
    {
    public:
        int flushes = 0;

    protected:
        int sync() override
        {
            ++flushes;
            return 0;
        }
    };

    Buffer m_text;
    std::streambuf* m_previous;
};
