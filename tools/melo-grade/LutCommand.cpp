// melo-grade lut FILE: the table as the engine reads it.
#include "GradeTool.h"

#include "LutApply.h"

#include <cstdio>
#include <cstdlib>

int runLutCommand(const Arguments& args)
{
    if (args.size() != 1)
        return usageError("lut takes one LUT file");
    // The reader's own diagnostics go to standard output, before the table.
    Lut3D* lut = readLutFile(args[0].c_str());
    fflush(stdout);
    if (!lut) {
        complain(args[0] + ": cannot read the LUT");
        return kExitLutFailed;
    }
    const int size = lut->lutSize;
    printf("size %d\n", size);
    for (int b = 0; b < size; ++b)
        for (int g = 0; g < size; ++g)
            for (int r = 0; r < size; ++r) {
                const float* entry = lut->lut[r][g][b];
                printf("%.9g %.9g %.9g\n", double(entry[0]), double(entry[1]), double(entry[2]));
            }
    free(lut);
    return fflush(stdout) == 0 ? kExitOk : kExitImageFailed;
}
