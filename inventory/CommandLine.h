#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <variant>

namespace inventory {

enum class Format
{
    table,
    json,
    csv,
    html,
    prometheus,
    zabbix,
    addresses
};

/// What the command line says.
struct Settings
{
    std::optional<std::string> tool;
    std::optional<std::string> from; ///< "-" is standard input
    bool noAsk = false;
    bool printers = false;
    std::optional<Format> format;
    std::optional<std::string> output;
    std::optional<std::string> compare;
    std::optional<std::string> communityFile;
    std::optional<std::string> credentials;
    std::size_t parallel = 64;
    unsigned seconds = 10;
    std::optional<std::string> mibs;
    bool quiet = false;
};

/// What to do in place of a run: end with `code` after `text` was written, to standard output if
/// the code is 0, else to standard error.
struct EndAtOnce
{
    int code;
    std::string text;
};

/// Reads the command line. Code 2 is a wrong one, 0 help or version.
std::variant<Settings, EndAtOnce> readCommandLine(int argc, const char* const* argv);

/// The format that counts: the one that was chosen; else the table where the report goes to a
/// terminal, else JSON.
Format formatOf(const Settings& settings, bool terminal);

} // namespace inventory
