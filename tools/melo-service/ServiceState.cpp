#include "ServiceState.h"

#include <cstdlib>

namespace {

bool parseCount(const std::string& text, int* value)
{
    char* end = nullptr;
    const long parsed = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end || parsed < -1000000000L || parsed > 1000000000L)
        return false;
    *value = static_cast<int>(parsed);
    return true;
}

std::string jsonString(const std::string& text)
{
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            static const char hex[] = "0123456789abcdef";
            out += "\\u00";
            out += hex[(c >> 4) & 0xF];
            out += hex[c & 0xF];
        } else {
            out += c;
        }
    }
    return out + "\"";
}

} // namespace

ServiceState::ServiceState(InitAnswer defaults) : m_defaults(defaults), m_current(std::move(defaults)) {}

InitAnswer ServiceState::init() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_current;
}

bool ServiceState::configure(const std::multimap<std::string, std::string>& params, std::string* error)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    InitAnswer next = params.count("reset") ? m_defaults : m_current;
    for (const auto& [name, value] : params) {
        bool ok = true;
        if (name == "reset")
            continue;
        if (name == "newversion")
            next.newversion = value;
        else if (name == "init-code")
            ok = parseCount(value, &next.code);
        else if (name == "init-body-raw")
            next.bodyRaw = value;
        else if (name == "init-no-data")
            next.noData = value != "0";
        else if (name == "init-delay-ms")
            ok = parseCount(value, &next.delayMs) && next.delayMs >= 0;
        else if (name == "init-pad-bytes")
            ok = parseCount(value, &next.padBytes) && next.padBytes >= 0;
        else
            ok = false;
        if (!ok) {
            *error = "bad parameter " + name + "=" + value;
            return false;
        }
    }
    m_current = next;
    return true;
}

std::string ServiceState::describe() const
{
    const InitAnswer now = init();
    return "newversion=" + now.newversion + "\ninit-code=" + std::to_string(now.code)
        + "\ninit-body-raw=" + (now.bodyRaw ? *now.bodyRaw : std::string("(none)"))
        + "\ninit-no-data=" + (now.noData ? "1" : "0") + "\ninit-delay-ms=" + std::to_string(now.delayMs)
        + "\ninit-pad-bytes=" + std::to_string(now.padBytes) + "\n";
}

static std::string unpaddedAnswerBody(const InitAnswer& init)
{
    if (init.bodyRaw)
        return *init.bodyRaw;
    const std::string code = "{\"code\":" + std::to_string(init.code);
    if (init.code != 200 || init.noData)
        return code + "}";
    return code + ",\"data\":{\"version\":{\"newversion\":" + jsonString(init.newversion) + "}}}";
}

std::string initAnswerBody(const InitAnswer& init)
{
    // Blanks after a JSON text leave it valid: only its size changes.
    return unpaddedAnswerBody(init) + std::string(static_cast<size_t>(init.padBytes), ' ');
}
