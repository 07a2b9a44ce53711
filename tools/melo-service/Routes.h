// The service's endpoints, the same on the HTTPS and the HTTP port.
#pragma once

#include "Gallery.h"
#include "ServiceState.h"

#include <atomic>
#include <string>

namespace httplib {
class Server;
}

struct ServiceContext {
    ServiceState& state;
    const Gallery& gallery;
    std::string pagesDir;
    std::string webChannelScript;        // served as /qwebchannel.js
    const std::atomic<bool>& stopping;   // set on shutdown; ends long waits
};

void addRoutes(httplib::Server& server, ServiceContext& context);

// Byte i of the generated bodies of /test/large, /test/slow and /test/chunked.
inline char testBodyByte(size_t i)
{
    return static_cast<char>((i * 31 + 7) % 251);
}
