// Windows GUI entry: splits the wide command line, converts each argument to
// the ANSI code page, runs the start-up routine and frees the copies.
#include "Startup.h"

#include <windows.h>
#include <shellapi.h>

#include <vector>

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int)
{
    int argc = 0;
    LPWSTR* wide = CommandLineToArgvW(GetCommandLineW(), &argc);
    std::vector<char*> argv(argc + 1, nullptr);
    for (int i = 0; i < argc; ++i) {
        const int size = WideCharToMultiByte(CP_ACP, 0, wide[i], -1, nullptr, 0, nullptr, nullptr);
        argv[i] = new char[size > 0 ? size : 1]();
        if (size > 0)
            WideCharToMultiByte(CP_ACP, 0, wide[i], -1, argv[i], size, nullptr, nullptr);
    }
    LocalFree(wide);

    const int result = meloMain(argc, argv.data());

    for (int i = 0; i < argc; ++i)
        delete[] argv[i];
    return result;
}
