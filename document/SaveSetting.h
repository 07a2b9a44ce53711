// The save record the save dialog hands to the main window: where, under which
// name and in which format to write. Texts are narrow strings in the local
// 8-bit encoding, as the dialog produced them.
#pragma once

#include <QMetaType>

#include <cstdint>
#include <string>

struct setting {
    std::string savePath;       // target folder
    std::string saveName;       // file name without extension
    std::string saveFormat;     // "JPG", "PNG" or "TIFF" (searched as a substring)
    std::string reserveText1;   // unused, left empty
    int32_t reserveValue1 = 0;  // unused
    int32_t reserveValue2 = 0;  // unused
    std::string reserveText2;   // unused, left empty
    int32_t quality = 0;        // the encoder parameter; filled in by the writer
    int32_t interactive = 0;    // non-zero: the user's save; zero: a silent save
};

Q_DECLARE_METATYPE(setting)
