#pragma once

#include <string>

namespace inventory {

/// One line on standard error, shown again and again in place, and gone at the end. Nothing is
/// written unless standard error is a terminal and progress is wanted, nor while the terminal takes
/// nothing (Ctrl-S), when waiting for it would keep a signal from ending the process. One thread.
class Progress
{
public:
    explicit Progress(bool wanted);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Shows `text`, unless it is what is shown. Of this program's words only.
    void show(const std::string& text);
    void clear();

private:
    bool m_shown;
    std::string m_text;
};

} // namespace inventory
