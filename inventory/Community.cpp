#include "inventory/Community.h"

#include "inventory/Document.h"
#include "inventory/Failure.h"

#include <Poco/String.h>

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <sstream>
#include <vector>

namespace inventory {

namespace {

UVARNETSNMP::ByteString bytes(const std::string& text)
{
    return {text.begin(), text.end()};
}

bool isOneOf(const std::string& text, std::initializer_list<const char*> known)
{
    return std::find(known.begin(), known.end(), text) != known.end();
}

bool isKey(const std::string& key)
{
    return isOneOf(key, {"community", "securityname", "contextname", "securitylevel",
                         "authprotocol", "privprotocol", "authpassphrase", "privpassphrase",
                         "securityengid", "contextengid"});
}

/// Whether a session understands `value`, which it would otherwise leave out: the agent would then
/// be asked with less security than was wanted.
bool isUnderstood(const std::string& key, const std::string& value)
{
    if (key == "authpassphrase" || key == "privpassphrase") {
        // Net-SNMP derives no key from a shorter one, and the session then uses a key of zeros.
        return value.size() >= 8;
    }
    if (key == "securitylevel") {
        return isOneOf(value, {"NoAuthNoPriv", "AuthNoPriv", "AuthPriv"});
    }
    if (key == "authprotocol") {
        return isOneOf(value, {"MD5", "SHA"});
    }
    if (key == "privprotocol") {
        return isOneOf(value, {"DES", "AES"});
    }
    if (key == "securityengid" || key == "contextengid") {
        unsigned char* engine = nullptr;
        std::size_t length = 0;
        const bool understood = UVARNETSNMP::SNMPSession::MakeEngineID(value, &engine, &length);
        std::free(engine); // NOLINT(cppcoreguidelines-no-malloc): the library's contract
        return understood;
    }
    return true;
}

std::optional<long> versionOf(const std::string& text)
{
    if (text == "1") {
        return SNMP_VERSION_1;
    }
    if (text == "2c") {
        return SNMP_VERSION_2c;
    }
    if (text == "3") {
        return SNMP_VERSION_3;
    }
    return {};
}

/// Throws Failure unless `parameters` have all that their security level needs: a session would
/// otherwise ask with less security, or with a user and protocol of its own.
void checkVersion3(const std::map<std::string, UVARNETSNMP::ByteString>& parameters,
                   const std::string& file)
{
    const auto has = [&parameters](const char* key) {
        const auto found = parameters.find(key);
        return found != parameters.end() && !found->second.empty();
    };
    std::vector<const char*> needed = {"securityname"};
    if (has("securitylevel")) {
        const auto& level = parameters.at("securitylevel");
        const bool privacy = level == bytes("AuthPriv");
        if (privacy || level == bytes("AuthNoPriv")) {
            needed.insert(needed.end(), {"authprotocol", "authpassphrase"});
        }
        if (privacy) {
            needed.insert(needed.end(), {"privprotocol", "privpassphrase"});
        }
    } else if (has("authpassphrase") || has("privpassphrase")) {
        needed.push_back("securitylevel");
    }
    for (const char* const key : needed) {
        if (!has(key)) {
            throw Failure(file + ": no " + key);
        }
    }
}

} // namespace

std::string readCommunity(const std::optional<std::string>& file)
{
    std::string community = "public";
    std::string origin = "SNMP_COMMUNITY";
    if (file) {
        origin = *file;
        const std::string content = readFile(*file);
        community = content.substr(0, content.find('\n'));
        if (!community.empty() && community.back() == '\r') {
            community.pop_back();
        }
        if (community.empty()) {
            throw Failure(origin + ": the first line is empty");
        }
        // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread changes the environment
    } else if (const char* const variable = std::getenv("SNMP_COMMUNITY")) {
        community = *variable == '\0' ? community : variable;
    }
    if (community.find('\0') != std::string::npos || Poco::trim(community) != community) {
        throw Failure(origin + ": the community has a blank at an end, or a NUL");
    }
    return community;
}

std::string communityProperties(const std::string& community)
{
    // POCO's configuration replaces "${NAME}" by the value of another key; "${dollar}" is a way to
    // spell "$" that it does not look at again.
    std::string value;
    for (std::size_t at = 0; at < community.size(); ++at) {
        const char c = community[at];
        if (c == '\\') {
            value += "\\\\";
        } else if (c == '\r') {
            value += "\\r";
        } else if (c == '\n') {
            value += "\\n";
        } else if (c == '$' && at + 1 < community.size() && community[at + 1] == '{') {
            value += "${dollar}";
        } else {
            value += c;
        }
    }
    return "dollar = $\nCommunity = " + value + "\n";
}

Credentials readCredentials(const std::string& file, const std::string& community)
{
    Credentials credentials = {SNMP_VERSION_1, {}};
    bool hasVersion = false;
    std::istringstream lines(readFile(file));
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        std::string where = file + ": line " + std::to_string(number);
        line = Poco::trim(line);
        if (line.empty() || line.front() == '#') {
            continue;
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos) {
            throw Failure(where + ": no \"key = value\"");
        }
        const std::string key = Poco::trim(line.substr(0, equals));
        const std::string value = Poco::trim(line.substr(equals + 1));
        if (key == "version") {
            const std::optional<long> version = versionOf(value);
            if (!version || hasVersion) {
                throw Failure(where + ": version is 1, 2c or 3, once");
            }
            credentials.version = *version;
            hasVersion = true;
        } else if (!isKey(key)) {
            throw Failure(where + ": unknown key");
        } else if (!isUnderstood(key, value)) {
            throw Failure(where.append(": a value that ").append(key).append(" does not have"));
        } else if (!credentials.parameters.emplace(key, bytes(value)).second) {
            throw Failure(where.append(": ").append(key).append(" again"));
        }
    }
    if (!hasVersion) {
        throw Failure(file + ": no version");
    }
    if (credentials.version != SNMP_VERSION_3) {
        credentials.parameters.emplace("community", bytes(community));
    } else {
        checkVersion3(credentials.parameters, file);
    }
    return credentials;
}

Credentials credentialsFor(const std::string& community)
{
    return {SNMP_VERSION_1, {{"community", bytes(community)}}};
}

} // namespace inventory
