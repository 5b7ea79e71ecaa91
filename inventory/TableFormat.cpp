#include "inventory/TableFormat.h"

#include "inventory/Utf8.h"

#include <sys/ioctl.h>

#include <langinfo.h>
#include <unistd.h>
#include <wchar.h> // wcwidth is POSIX: <cwchar> does not promise it

#include <algorithm>
#include <clocale>
#include <cstring>
#include <numeric>

namespace inventory {

namespace {

constexpr std::size_t narrowest = 4; // columns that a shortened column keeps
constexpr std::string_view gap = "  ";
constexpr std::string_view ellipsis = "\xe2\x80\xa6";

/// A piece of text as it is shown.
struct Piece
{
    std::string bytes;
    std::size_t width;
};

Piece shown(const Character& character, bool ascii)
{
    const char32_t code = character.code;
    // wcwidth finds no fault with a NUL.
    const bool harmless = code != 0 && code != 0xfffd && !isBidirectionalControl(code);
    const int width = harmless ? wcwidth(static_cast<wchar_t>(code)) : -1;
    if (ascii && (width < 0 || code > 0x7e)) {
        return {"?", 1};
    }
    if (width < 0) {
        return {std::string(replacement), 1};
    }
    return {std::string(character.bytes), static_cast<std::size_t>(width)};
}

std::vector<Piece> pieces(std::string_view text, bool ascii)
{
    std::vector<Piece> all;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        all.push_back(shown(character, ascii));
        text.remove_prefix(character.bytes.size());
    }
    return all;
}

std::size_t widthOf(const std::vector<Piece>& text)
{
    return std::accumulate(text.begin(), text.end(), std::size_t{0},
                           [](std::size_t sum, const Piece& piece) { return sum + piece.width; });
}

/// `text` in exactly `width` columns, with blanks behind it, or without its end.
std::string fitted(const std::vector<Piece>& text, std::size_t width, bool ascii)
{
    std::string bytes;
    std::size_t used = 0;
    const bool cut = widthOf(text) > width;
    for (const Piece& piece : text) {
        if (used + piece.width > width - (cut ? 1 : 0)) {
            break;
        }
        bytes += piece.bytes;
        used += piece.width;
    }
    if (cut) {
        bytes += ascii ? "~" : ellipsis;
        ++used;
    }
    return bytes.append(width - used, ' ');
}

/// Takes from the widest column until all fit, or none is wider than the narrowest; then leaves out
/// columns at the end. The first, the address, keeps its width.
void narrow(std::vector<std::size_t>& widths, std::size_t columns)
{
    const auto all = [&widths] {
        return std::accumulate(widths.begin(), widths.end(), (widths.size() - 1) * gap.size());
    };
    while (widths.size() > 1 && all() > columns) {
        const auto widest = std::max_element(widths.begin() + 1, widths.end());
        if (*widest <= narrowest) {
            widths.pop_back();
        } else {
            --*widest;
        }
    }
}

bool speaksUTF8()
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): before there is another thread
    return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
}

std::string answerOf(const Agent& agent)
{
    if (!agent.answers) {
        return "not asked";
    }
    if (!*agent.answers) {
        return "silent";
    }
    return agent.isPrinter() ? agent.status.value_or("printer") : "no printer";
}

template <typename Number>
std::string digits(const std::optional<Number>& number, const char* after = "")
{
    return number ? std::to_string(*number) + after : std::string();
}

} // namespace

Screen screenOfStandardOutput()
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): before there is another thread
    static_cast<void>(std::setlocale(LC_CTYPE, ""));
    Screen screen;
    const bool terminal = isatty(STDOUT_FILENO) == 1;
    if (!speaksUTF8()) {
        screen.ascii = terminal;
        for (const char* const locale : {"C.UTF-8", "en_US.UTF-8", "UTF-8"}) {
            // NOLINTNEXTLINE(concurrency-mt-unsafe): as above
            if (std::setlocale(LC_CTYPE, locale) != nullptr) {
                break;
            }
        }
    }
    if (terminal) {
        winsize size = {};
        const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
        screen.columns = known ? size.ws_col : 80;
    }
    return screen;
}

std::string toColumns(const std::vector<std::vector<std::string>>& rows, const Screen& screen)
{
    std::vector<std::vector<std::vector<Piece>>> cells;
    std::vector<std::size_t> widths;
    for (const std::vector<std::string>& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        cells.emplace_back();
        for (std::size_t column = 0; column < row.size(); ++column) {
            cells.back().push_back(pieces(row[column], screen.ascii));
            widths[column] = std::max(widths[column], widthOf(cells.back().back()));
        }
    }
    if (screen.columns && !widths.empty()) {
        narrow(widths, *screen.columns);
    }
    std::string text;
    for (const auto& row : cells) {
        std::string line;
        for (std::size_t column = 0; column < std::min(row.size(), widths.size()); ++column) {
            line += column == 0 ? "" : gap;
            line += fitted(row[column], widths[column], screen.ascii);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

std::string toTable(const std::vector<Agent>& agents, const Screen& screen)
{
    std::vector<std::vector<std::string>> rows = {
        {"ADDRESS", "NAME", "MODEL", "SERIAL", "STATUS", "PAGES", "SUPPLIES", "LOCATION"}};
    for (const Agent& agent : agents) {
        rows.push_back({agent.address.text(), agent.name.value_or(""), agent.model.value_or(""),
                        agent.serial.value_or(""), answerOf(agent), digits(agent.pages),
                        digits(agent.lowestSupply(), " %"), agent.location.value_or("")});
    }
    return toColumns(rows, screen);
}

} // namespace inventory
