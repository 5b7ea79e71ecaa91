#include "inventory/Progress.h"

#include "inventory/Ending.h"
#include "inventory/Terminal.h"

#include <unistd.h>

namespace inventory {

Progress::Progress(bool wanted) : m_shown(wanted && isatty(STDERR_FILENO) == 1) {}

void Progress::show(const std::string& text)
{
    if (!m_shown || text == m_text) {
        return;
    }
    Ending::change([this, &text](Ending::Record& record) {
        if (writeIfReady(clearLine + text)) {
            record.progress = true;
            m_text = text;
        }
    });
}

void Progress::clear()
{
    if (m_text.empty()) {
        return;
    }
    m_text.clear();
    Ending::change([](Ending::Record& record) {
        writeIfReady(clearLine);
        record.progress = false;
    });
}

} // namespace inventory
