// melo-grade: the grading engine from the command line, for batch work and
// for checking the engine from outside.
#include "GradeTool.h"

#include <opencv2/core/utils/logger.hpp>

#include <QCoreApplication>

#include <clocale>
#include <cstdio>
#include <cstring>

namespace {

const char kUsage[] =
    "usage:\n"
    "  melo-grade lut FILE\n"
    "      print the table the engine reads from FILE: \"size N\", then N^3 lines \"R G B\", red fastest\n"
    "  melo-grade apply [--lut FILE [--strength N]]... INPUT OUTPUT\n"
    "      apply each LUT in turn; with --strength lay it over the result so far like an editor layer\n"
    "  melo-grade preset --scene S [--top I] [--mid I] [--down I] [--strength N]\n"
    "                    [--presets DIR|ARCHIVE] [--jobs N] --out-dir DIR INPUT...\n"
    "      grade every INPUT with the scene's presets into DIR/<name>.jpg, N at a time\n"
    "      on N cores (default: all); a bar on a terminal, else one line per photo\n"
    "exit codes: 0 done, 1 a LUT or preset could not be read, 2 bad arguments,\n"
    "            3 an image could not be read or written (the others were processed)\n";

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    // Numbers are printed and read with a decimal point whatever the locale.
    setlocale(LC_NUMERIC, "C");
    // The tool reports unreadable images itself, once.
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_ERROR);

    if (argc < 2 || std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
        fputs(kUsage, argc < 2 ? stderr : stdout);
        return argc < 2 ? kExitUsage : kExitOk;
    }
    const std::string command = argv[1];
    const Arguments args(argv + 2, argv + argc);
    if (command == "lut")
        return runLutCommand(args);
    if (command == "apply")
        return runApplyCommand(args);
    if (command == "preset")
        return runPresetCommand(args);
    return usageError("unknown command " + command);
}
