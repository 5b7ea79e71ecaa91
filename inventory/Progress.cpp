#include "inventory/Progress.h"

#include "inventory/Ending.h"

#include <unistd.h>

#include <iostream>

namespace inventory {

namespace {

constexpr const char* clearLine = "\r\x1b[K"; // ECMA-48, EL

} // namespace

Progress::Progress(bool wanted) : m_shown(wanted && isatty(STDERR_FILENO) == 1) {}

void Progress::show(const std::string& text)
{
    if (!m_shown || text == m_text) {
        return;
    }
    m_text = text;
    Ending::change([&text](Ending::Record& record) {
        record.progress = true;
        std::cerr << clearLine << text << std::flush;
    });
}

void Progress::clear()
{
    if (m_text.empty()) {
        return;
    }
    m_text.clear();
    Ending::change([](Ending::Record& record) {
        std::cerr << clearLine << std::flush;
        record.progress = false;
    });
}

} // namespace inventory
