#include "inventory/HTMLFormat.h"

#include "inventory/Utf8.h"

#include <algorithm>
#include <string_view>

namespace inventory {

namespace {

// The styles stand in the page, so the policy lets in styles of the page, and nothing else.
constexpr std::string_view head = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'; base-uri 'none'; form-action 'none'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>SNMP agents</title>
<style>
:root { color-scheme: light dark; --line: #c8ccd0; --dim: #59636e; --bad: #b42318; }
body { font: 1rem/1.45 system-ui, sans-serif; margin: 1.5rem auto; max-width: 80rem; padding: 0 1rem; }
h1 { font-size: 1.4rem; margin: 0; }
.dim { color: var(--dim); }
main { display: grid; gap: 1rem; align-items: start; grid-template-columns: repeat(auto-fill, minmax(min(100%, 20rem), 1fr)); margin-top: 1rem; }
article { border: 1px solid var(--line); border-radius: .5rem; padding: .75rem 1rem; overflow-wrap: anywhere; }
h2 { font-size: 1.05rem; margin: 0; }
p { margin: .15rem 0; white-space: pre-line; }
.silent { color: var(--bad); }
dl { display: grid; grid-template-columns: auto 1fr; gap: .1rem .75rem; margin: .5rem 0 0; }
dt { color: var(--dim); }
dd { margin: 0; white-space: pre-line; }
meter { width: 100%; height: 1rem; }
.supply { display: grid; grid-template-columns: 1fr auto; gap: 0 .75rem; margin-top: .4rem; }
.supply meter { grid-column: 1 / -1; }
@media (prefers-color-scheme: dark) { :root { --line: #3d444d; --dim: #9198a1; --bad: #ff9a8d; } }
@media print { body { margin: 0; max-width: none; } article { break-inside: avoid; } main { grid-template-columns: 1fr 1fr; } meter { -webkit-print-color-adjust: exact; print-color-adjust: exact; } }
</style>
</head>
<body>
)";

/// `text` as the content of an element. Control characters but the line end, which HTML does not
/// allow, and bidirectional controls become U+FFFD.
std::string escaped(std::string_view text)
{
    std::string escaped;
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        const char32_t code = character.code;
        if (code == '&') {
            escaped += "&amp;";
        } else if (code == '<') {
            escaped += "&lt;";
        } else if (code == '>') {
            escaped += "&gt;";
        } else if (code == '"') {
            escaped += "&quot;";
        } else if (code == '\'') {
            escaped += "&#39;";
        } else if ((code < 0x20 && code != '\n' && code != '\t') || (code >= 0x7f && code < 0xa0) ||
                   isBidirectionalControl(code) || code == 0xfffd) {
            escaped += replacement;
        } else {
            escaped += character.bytes;
        }
        text.remove_prefix(character.bytes.size());
    }
    return escaped;
}

std::string term(std::string_view name, const std::optional<std::string>& text)
{
    if (!text) {
        return {};
    }
    return "<dt>" + std::string(name) + "</dt><dd>" + escaped(*text) + "</dd>\n";
}

std::string uptime(long long hundredths)
{
    const long long minutes = hundredths / 6000;
    return std::to_string(minutes / 1440) + " d " + std::to_string(minutes / 60 % 24) + " h " +
           std::to_string(minutes % 60) + " min";
}

template <typename T, typename Function>
std::optional<std::string> mapped(const std::optional<T>& value, Function function)
{
    return value ? std::optional<std::string>(function(*value)) : std::nullopt;
}

/// What is known of the level: RFC 3805, prtMarkerSuppliesLevel.
std::string levelOf(const Supply& supply)
{
    if (const std::optional<int> percent = supply.percent()) {
        return std::to_string(*percent) + " %";
    }
    if (!supply.level || *supply.level == -2) {
        return "unknown";
    }
    if (*supply.level == -3) {
        return "some left";
    }
    if (*supply.level < 0) {
        return "no limit";
    }
    return std::to_string(*supply.level) + (supply.unit ? " " + escaped(*supply.unit) : "");
}

std::string supplyOf(const Supply& supply)
{
    std::string html = "<div class=\"supply\"><span>" +
                       escaped(supply.name.value_or(supply.type.value_or("supply"))) +
                       "</span><span class=\"dim\">" + levelOf(supply) + "</span>";
    const std::optional<int> percent = supply.percent();
    // A bar for each, an empty one where nothing is known. That of waste is good when it is empty.
    html += "<meter min=\"0\" max=\"100\"";
    if (percent) {
        html += supply.isReceptacle() ? " low=\"80\" high=\"95\" optimum=\"0\""
                                      : " low=\"10\" high=\"25\" optimum=\"100\"";
    }
    html += " value=\"" + std::to_string(percent.value_or(0)) + "\">" + levelOf(supply) +
            "</meter></div>\n";
    return html;
}

std::string articleOf(const Agent& agent)
{
    const std::string address = agent.address.text();
    std::string html = "<article>\n<h2>" + escaped(agent.name.value_or(address)) + "</h2>\n";
    if (agent.name) {
        html += "<p class=\"dim\">" + address + "</p>\n";
    }
    if (agent.answers == false) {
        html += "<p class=\"silent\">does not answer</p>\n";
    }
    std::string terms =
        term("Model", agent.model) + term("Status", agent.status) + term("Serial", agent.serial) +
        term("Pages", mapped(agent.pages, [](long long n) { return std::to_string(n); })) +
        term("Location", agent.location) + term("Contact", agent.contact) +
        term("Up", mapped(agent.uptime, &uptime)) + term("Description", agent.description);
    if (!terms.empty()) {
        html += "<dl>\n" + terms + "</dl>\n";
    }
    for (const Supply& supply : agent.supplies) {
        html += supplyOf(supply);
    }
    return html + "</article>\n";
}

} // namespace

std::string toHTML(const std::vector<Agent>& agents)
{
    const auto printers = std::count_if(agents.begin(), agents.end(),
                                        [](const Agent& agent) { return agent.isPrinter(); });
    std::string html(head);
    html += "<h1>SNMP agents</h1>\n<p class=\"dim\">" + std::to_string(agents.size()) +
            " agents, of which " + std::to_string(printers) + " printers</p>\n<main>\n";
    for (const Agent& agent : agents) {
        html += articleOf(agent);
    }
    return html + "</main>\n</body>\n</html>\n";
}

} // namespace inventory
