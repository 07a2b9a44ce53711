// Command line of the stand-in service.
#pragma once

#include <optional>
#include <string>

// What /api/client/init answers. Changeable at run time through /test/config.
struct InitAnswer {
    std::string newversion;                  // release named in the answer
    int code = 200;                          // envelope code; not 200 refuses
    std::optional<std::string> bodyRaw;      // sent verbatim instead of JSON
    bool noData = false;                     // {"code":200} without "data"
    int delayMs = 0;                         // wait before answering
    int padBytes = 0;                        // blanks after the answer
};

struct ServiceOptions {
    std::string host = "127.0.0.1";
    int httpsPort = 18443;                   // 0 picks a free port
    int httpPort = 18080;
    std::string samplesDir;
    std::string pagesDir;
    bool exitOnStdinEof = false;
    InitAnswer init;
};

// Parses argv; on a bad or --help argument prints usage and sets *exitCode.
bool parseServiceOptions(int argc, char** argv, ServiceOptions* options, int* exitCode);
