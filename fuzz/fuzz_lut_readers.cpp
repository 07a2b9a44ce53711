// libFuzzer target for the four LUT readers (see FuzzReaderInput.h).
#include "FuzzReaderInput.h"

#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const std::string scratch = "/dev/shm/melo-fuzz-" + std::to_string(getpid());
    // Keep the readers' diagnostics out of the fuzzer's report.
    static FILE* quiet = freopen("/dev/null", "w", stdout);
    (void)quiet;
    if (runFuzzInput(data, size, scratch) == FuzzVerdict::Disagreed)
        __builtin_trap();
    return 0;
}
