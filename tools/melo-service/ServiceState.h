// The service's switchable behaviour, shared by the request threads.
#pragma once

#include "ServiceOptions.h"

#include <map>
#include <mutex>
#include <string>

class ServiceState
{
public:
    explicit ServiceState(InitAnswer defaults);

    InitAnswer init() const;
    // Applies the parameters of /test/config (names as the command-line
    // options without "--"; "reset" first returns to the start-up values).
    // False with a message when a value is bad; nothing is changed then.
    bool configure(const std::multimap<std::string, std::string>& params, std::string* error);
    // The current behaviour as "name=value" lines.
    std::string describe() const;

private:
    mutable std::mutex m_mutex;
    const InitAnswer m_defaults;
    InitAnswer m_current;
};

// The body /api/client/init sends for this behaviour.
std::string initAnswerBody(const InitAnswer& init);
