#include "fuzz/Fuzzing.h"
#include "fuzz/SNMPSetUp.h"
#include "inventory/CSVFormat.h"
#include "inventory/Document.h"
#include "inventory/HTMLFormat.h"
#include "inventory/JSONFormat.h"
#include "inventory/SNMPPeer.h"
#include "inventory/TableFormat.h"
#include "inventory/Utf8.h"
#include "value/Value.h"

#include <algorithm>
#include <clocale>
#include <memory>
#include <sstream>

// What an agent says to snmp-inventory. The input is the agent: its choices make the answers, from
// silence over bindings that fit the request to the octets of a PDU. Then every format writes what
// was made of it.

namespace {

using fuzzing::check;
using fuzzing::Choices;
using inventory::Agent;
using inventory::Answer;
using inventory::Binding;
using inventory::Name;
using inventory::toCSV;
using inventory::toHTML;
using inventory::toJSON;
using inventory::toPrometheus;
using inventory::toTable;
using inventory::toZabbix;

constexpr std::size_t longestText = 3072; ///< 1,024 invalid bytes, each replaced by three
/// What the slowest walk takes: 200 rows, each asked for together and then one cell at a time.
constexpr int mostRequests = 2000;

class FuzzedPeer : public inventory::Peer
{
public:
    explicit FuzzedPeer(Choices& choices) : m_choices(choices) {}

    std::optional<Answer> next(const std::vector<Name>& names) override
    {
        check(++m_requests <= mostRequests, "the asking ends");
        check(!names.empty() && names.size() <= 16, "a request has names, and not many");
        switch (m_choices.atEnd() ? 0 : m_choices.byte() % 8) {
        case 0:
            return {};
        case 1:
            m_heard = true;
            return pdu();
        case 2:
            m_heard = true;
            return Answer{m_choices.byte(), static_cast<signed char>(m_choices.byte()), {}};
        default:
            m_heard = true;
            return fitting(names);
        }
    }
    bool heard() const override { return m_heard; }

private:
    Name following(Name name)
    {
        const int count = m_choices.byte() % 4;
        for (int i = 0; i < count; ++i) {
            name.push_back(m_choices.byte());
        }
        const int change = m_choices.byte() % 8;
        if (change == 0 && !name.empty()) {
            name.pop_back();
        } else if (change > 1 && !name.empty()) {
            name.back() += static_cast<unsigned long>(change) - 1;
        }
        return name;
    }

    Answer fitting(const std::vector<Name>& names)
    {
        Answer answer = {0, 0, {}};
        for (const Name& name : names) {
            Binding binding = {following(name), {}};
            switch (m_choices.byte() % 6) {
            case 0:
                break;
            case 1:
                binding.value = inventory::Number{m_choices.byte(), "label"};
                break;
            case 2:
                binding.value = inventory::Number{static_cast<long long>(m_choices.number()), {}};
                break;
            case 3:
                binding.value = following({});
                break;
            default:
                binding.value = m_choices.string();
            }
            answer.bindings.push_back(std::move(binding));
        }
        return answer;
    }

    Answer pdu()
    {
        std::string octets = m_choices.string();
        const std::unique_ptr<snmp_pdu, decltype(&snmp_free_pdu)> parsed(
            snmp_pdu_create(SNMP_MSG_RESPONSE), &snmp_free_pdu);
        std::size_t length = octets.size();
        if (snmp_pdu_parse(parsed.get(), reinterpret_cast<unsigned char*>(octets.data()),
                           &length) != 0) {
            return {0, 0, {}};
        }
        Answer answer = inventory::SNMPPeer::read(*parsed);
        check(answer.bindings.size() <= 16, "an answer has not many bindings");
        return answer;
    }

    Choices& m_choices;
    int m_requests = 0;
    bool m_heard = false;
};

/// Calls `action` with each text of the agent.
template <typename Action>
void eachText(Agent& agent, Action action)
{
    for (auto* const text : {&agent.name, &agent.description, &agent.location, &agent.contact,
                             &agent.model, &agent.serial}) {
        action(*text);
    }
    for (inventory::Supply& supply : agent.supplies) {
        action(supply.name);
    }
}

void checkAgent(Agent agent)
{
    eachText(agent, [](const std::optional<std::string>& text) {
        if (text) {
            check(!text->empty() && text->size() <= longestText, "a text has a length", *text);
            check(inventory::textFromAgent(text->substr(0, 1024)).has_value(), "and is one", *text);
        }
    });
    check(agent.supplies.size() <= 200, "a table ends");
    for (const inventory::Supply& supply : agent.supplies) {
        const int percent = supply.percent().value_or(0);
        check(percent >= 0 && percent <= 100, "a percentage is one");
    }
    const bool silent = agent.answers != true;
    check(!silent || toJSON({agent}) == "[{\"answers\":false,\"hostname\":\"192.0.2.9\"}]\n",
          "a silent agent has nothing", toJSON({agent}));
    check(agent.isPrinter() || (!agent.model && !agent.serial && !agent.status && !agent.pages &&
                                agent.supplies.empty()),
          "only printers have what printers tell", toJSON({agent}));
}

void checkJSON(const std::string& json)
{
    std::istringstream in(json);
    const Value value = Value::parse_json(in);
    check(value.kind() == Value::Kind::Array && value.to_json() + "\n" == json,
          "JSON reads back as it is written", json);
    check(std::none_of(json.begin(), json.end() - 1,
                       [](char c) { return static_cast<unsigned char>(c) < 0x20; }),
          "JSON is one line without control characters", json);
}

/// Reads as RFC 4180 says, and looks for what a spreadsheet would run.
void checkCSV(const std::string& csv)
{
    std::size_t at = 0;
    std::size_t cells = 0;
    for (; at < csv.size(); ++cells) {
        const bool quoted = csv[at] == '"';
        at += quoted ? 1U : 0U;
        check(std::string("=+-@\t\r").find(csv[at]) == std::string::npos || csv[at] == '\r',
              "no cell is a formula", csv);
        if (quoted) {
            check(csv[at] != '\r', "no quoted cell begins with a carriage return", csv);
            for (; csv.at(at) != '"' || csv.at(at + 1) == '"'; ++at) {
                at += csv[at] == '"' ? 1U : 0U;
            }
            ++at;
        } else {
            at = csv.find_first_of(",\r\n\"", at);
        }
        const bool end = csv.compare(at, 2, "\r\n") == 0;
        check(end || csv.at(at) == ',', "a cell ends", csv);
        check(!end || (cells + 1) % 14 == 0, "a line has 14 cells", csv);
        at += end ? 2U : 1U;
    }
    check(cells == 28, "a heading and a line", csv);
}

void checkTable(const Agent& agent, const inventory::Screen& screen)
{
    const std::string table = toTable({agent}, screen);
    std::size_t lines = 0;
    for (std::string_view left = table; !left.empty();) {
        const inventory::Character character = inventory::firstCharacter(left);
        const char32_t code = character.code;
        lines += code == '\n' ? 1U : 0U;
        check(code == '\n' || (code >= 0x20 && (code < 0x7f || code >= 0xa0)),
              "no control character reaches a terminal", table);
        check(!inventory::isBidirectionalControl(code), "nor one of the direction", table);
        left.remove_prefix(character.bytes.size());
    }
    check(lines == 2, "a line for the agent", table);
}

/// How much markup there is.
std::size_t marks(const std::string& html)
{
    return static_cast<std::size_t>(
        std::count_if(html.begin(), html.end(), [](char c) { return c == '<' || c == '>'; }));
}

void checkHTML(const Agent& agent)
{
    Agent harmless = agent;
    eachText(harmless, [](std::optional<std::string>& text) {
        if (text) {
            text = "x";
        }
    });
    check(marks(toHTML({agent})) == marks(toHTML({harmless})), "no text is markup",
          toHTML({agent}));
}

bool setUp()
{
    fuzzing::setUpSNMP(SNMPDISCOVERY_MIBS_DIR, "Printer-MIB");
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there is no other thread
    return std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool ready = setUp();
    static_cast<void>(ready);
    Choices choices(data, size);
    FuzzedPeer peer(choices);
    Agent agent(*inventory::Address::parse("192.0.2.9"));
    ask(peer, agent);
    checkAgent(agent);
    for (const std::string& json : {toJSON({agent}), toPrometheus({agent}), toZabbix({agent})}) {
        checkJSON(json);
    }
    const std::vector<Agent> again = inventory::readReport(toJSON({agent}), "own");
    check(again.size() == 1 && again[0].name == agent.name && again[0].serial == agent.serial &&
              again[0].printer == agent.printer,
          "a report reads back");
    checkCSV(toCSV({agent}));
    for (const inventory::Screen& screen :
         {inventory::Screen{}, inventory::Screen{40, false}, inventory::Screen{10, true}}) {
        checkTable(agent, screen);
    }
    checkHTML(agent);
    return 0;
}
