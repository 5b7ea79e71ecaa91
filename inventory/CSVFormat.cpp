#include "inventory/CSVFormat.h"

#include "inventory/Utf8.h"

#include <string_view>

namespace inventory {

namespace {

constexpr std::string_view heading = "address,answers,name,description,location,contact,objectID,"
                                     "uptime,printer,model,serial,status,pages,supplies\r\n";
constexpr std::string_view formulaStarts = "=+-@\t\r";

/// Whether `code` must not reach a terminal. Tabulators and line ends may.
bool isControl(char32_t code)
{
    return (code < 0x20 && code != '\t' && code != '\r' && code != '\n') ||
           (code >= 0x7f && code <= 0x9f) || isBidirectionalControl(code);
}

std::string withoutControls(std::string_view text)
{
    std::string shown;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        shown += isControl(character.code) ? replacement : character.bytes;
        text.remove_prefix(character.bytes.size());
    }
    return shown;
}

std::string cell(const std::optional<std::string>& text)
{
    if (!text || text->empty()) {
        return {};
    }
    std::string safe = withoutControls(*text);
    if (formulaStarts.find(safe.front()) != std::string_view::npos) {
        safe.insert(0, 1, '\'');
    }
    if (safe.find_first_of(",\"\r\n") == std::string::npos) {
        return safe;
    }
    std::string quoted = "\"";
    for (const char c : safe) {
        quoted += c;
        if (c == '"') {
            quoted += c;
        }
    }
    return quoted + "\"";
}

std::string cell(const std::optional<bool>& flag)
{
    if (!flag) {
        return {};
    }
    return *flag ? "true" : "false";
}

template <typename Number>
std::string numberCell(const std::optional<Number>& number)
{
    return number ? std::to_string(*number) : std::string();
}

} // namespace

std::string toCSV(const std::vector<Agent>& agents)
{
    std::string lines(heading);
    for (const Agent& agent : agents) {
        lines += agent.address.text();
        for (const std::string& each :
             {cell(agent.answers), cell(agent.name), cell(agent.description), cell(agent.location),
              cell(agent.contact), cell(agent.objectID), numberCell(agent.uptime),
              cell(agent.printer), cell(agent.model), cell(agent.serial), cell(agent.status),
              numberCell(agent.pages), numberCell(agent.lowestSupply())}) {
            lines += ',';
            lines += each;
        }
        lines += "\r\n";
    }
    return lines;
}

} // namespace inventory
