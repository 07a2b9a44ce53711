#include "ServiceOptions.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>

namespace {

const char kUsage[] =
    "usage: melo-service [options]\n"
    "  --https-port N        HTTPS port on 127.0.0.1 (default 18443, 0 = any free port)\n"
    "  --http-port N         HTTP port on 127.0.0.1 (default 18080, 0 = any free port)\n"
    "  --host ADDR           address to listen on (default 127.0.0.1)\n"
    "  --samples DIR         folder of the sample photographs\n"
    "  --pages DIR           folder of the HTML pages\n"
    "  --newversion V        release named by /api/client/init\n"
    "  --init-code N         envelope code of /api/client/init (not 200 refuses)\n"
    "  --init-body-raw TEXT  answer /api/client/init with this text instead\n"
    "  --init-no-data        answer {\"code\":200} without \"data\"\n"
    "  --init-delay-ms N     wait N ms before answering /api/client/init\n"
    "  --exit-on-stdin-eof   quit when standard input closes (for test harnesses)\n"
    "Prints \"melo-service ready https=<port> http=<port>\" once both ports listen.\n";

bool toInt(const char* text, int* value)
{
    char* end = nullptr;
    const long parsed = std::strtol(text, &end, 10);
    if (!*text || *end || parsed < 0 || parsed > 1000000000L)
        return false;
    *value = static_cast<int>(parsed);
    return true;
}

bool fail(int* exitCode, const std::string& message)
{
    std::fprintf(stderr, "melo-service: %s\n%s", message.c_str(), kUsage);
    *exitCode = 2;
    return false;
}

} // namespace

bool parseServiceOptions(int argc, char** argv, ServiceOptions* options, int* exitCode)
{
    InitAnswer& init = options->init;
    auto text = [](std::string* target) {
        return [target](const char* value) { *target = value; return true; };
    };
    auto number = [](int* target) { return [target](const char* value) { return toInt(value, target); }; };
    const std::map<std::string, std::function<bool(const char*)>> valued = {
        {"--https-port", number(&options->httpsPort)},
        {"--http-port", number(&options->httpPort)},
        {"--host", text(&options->host)},
        {"--samples", text(&options->samplesDir)},
        {"--pages", text(&options->pagesDir)},
        {"--newversion", text(&init.newversion)},
        {"--init-code", number(&init.code)},
        {"--init-body-raw", [&init](const char* value) { init.bodyRaw = std::string(value); return true; }},
        {"--init-delay-ms", number(&init.delayMs)},
    };
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            std::fputs(kUsage, stdout);
            *exitCode = 0;
            return false;
        }
        if (arg == "--init-no-data") {
            init.noData = true;
            continue;
        }
        if (arg == "--exit-on-stdin-eof") {
            options->exitOnStdinEof = true;
            continue;
        }
        const auto option = valued.find(arg);
        if (option == valued.end())
            return fail(exitCode, "unknown option " + arg);
        if (i + 1 >= argc)
            return fail(exitCode, arg + " needs a value");
        if (!option->second(argv[++i]))
            return fail(exitCode, arg + ": bad value " + argv[i]);
    }
    if (options->httpsPort > 65535 || options->httpPort > 65535)
        return fail(exitCode, "port out of range");
    return true;
}
