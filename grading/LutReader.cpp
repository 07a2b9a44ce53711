#include "LutReader.h"

#include "LutScan.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#ifdef _WIN32
#include <sys/stat.h>
#include <sys/types.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

// Lines are read in pieces of this size; a longer line is read in several.
constexpr int kLineSize = 512;
// Largest ".m3d" "in"/"out" count: a full 64-point table.
constexpr int kMaxM3dCount = kMaxLutLevel * kMaxLutLevel * kMaxLutLevel;
constexpr int k3dlSize = 17;
constexpr int kDatDefaultSize = 33;

bool isBlankByte(char c) { return c == ' ' || (c >= 9 && c <= 13); }

// A line that holds nothing but blanks, or whose first non-blank is "#".
bool isBlankOrComment(const char* p)
{
    while (isBlankByte(*p))
        ++p;
    return *p == '\0' || *p == '#';
}

bool startsWith(const char* line, const char* prefix)
{
    return strncmp(line, prefix, strlen(prefix)) == 0;
}

// Opens a LUT file for reading, or returns null. Only a regular file of at
// most kMaxLutFileBytes is opened: a FIFO would block the open or the first
// read for good, a device such as /dev/zero never ends, a directory holds no
// table. The check is made on the opened file itself, so the path cannot be
// swapped between the check and the reading.
FILE* openLutFile(const char* path)
{
#ifdef _WIN32
    struct _stat64 info;
    if (_stat64(path, &info) != 0)
        return nullptr;
    if ((info.st_mode & _S_IFMT) != _S_IFREG) {
        printf("Not a regular file\n");
        return nullptr;
    }
    if (info.st_size > kMaxLutFileBytes) {
        printf("LUT file too large\n");
        return nullptr;
    }
    return fopen(path, "r");
#else
    // Without O_NONBLOCK, opening a FIFO waits for a writer.
    const int fd = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return nullptr;
    struct stat info;
    const char* refusal = nullptr;
    if (fstat(fd, &info) != 0 || !S_ISREG(info.st_mode))
        refusal = "Not a regular file\n";
    else if (info.st_size > kMaxLutFileBytes)
        refusal = "LUT file too large\n";
    FILE* file = refusal ? nullptr : fdopen(fd, "r");
    if (!file) {
        if (refusal)
            printf("%s", refusal);
        close(fd);
    }
    return file;
#endif
}

// An open file and the table being filled; both released on every way out
// unless the table is handed over.
class Reading {
public:
    explicit Reading(const char* path) : m_file(openLutFile(path)) {}
    ~Reading()
    {
        if (m_file)
            fclose(m_file);
        free(m_lut);
    }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    bool isOpen() const { return m_file != nullptr; }
    Lut3D* lut() const { return m_lut; }

    bool allocate(int size)
    {
        m_lut = static_cast<Lut3D*>(calloc(1, sizeof(Lut3D)));
        if (m_lut)
            m_lut->lutSize = size;
        return m_lut != nullptr;
    }
    Lut3D* release()
    {
        Lut3D* lut = m_lut;
        m_lut = nullptr;
        return lut;
    }

    // The next piece of a line, or false at the end of the file.
    // A file that grows while it is read ends at the size limit all the same.
    bool readLine()
    {
        if (m_consumed > kMaxLutFileBytes || !fgets(m_line, kLineSize, m_file))
            return false;
        m_consumed += static_cast<long long>(strlen(m_line));
        return true;
    }
    // The next line that is neither blank nor a comment; at the end of the
    // file it reports the truncation and returns false.
    bool nextMeaningfulLine()
    {
        do {
            if (!readLine()) {
                printf("Unexpected EOF\n");
                return false;
            }
        } while (isBlankOrComment(m_line));
        return true;
    }
    // Exactly one more line, blank or not.
    bool nextLineOrEof()
    {
        if (readLine())
            return true;
        printf("Unexpected EOF\n");
        return false;
    }
    const char* line() const { return m_line; }

    // Fills the table blue fastest, then green, red slowest; readEntry(entry)
    // fills one entry and returns false to end the reading.
    template <typename ReadEntry>
    bool fillBlueFastest(ReadEntry readEntry)
    {
        const int size = m_lut->lutSize;
        for (int r = 0; r < size; ++r)
            for (int g = 0; g < size; ++g)
                for (int b = 0; b < size; ++b)
                    if (!readEntry(m_lut->lut[r][g][b]))
                        return false;
        return true;
    }

private:
    FILE* m_file;
    long long m_consumed = 0;
    Lut3D* m_lut = nullptr;
    char m_line[kLineSize] = {};
};

bool sizeIsValid(int size)
{
    if (size >= 2 && size <= kMaxLutLevel)
        return true;
    printf("Too large or invalid 3D LUT size\n");
    return false;
}

// Reads one ".cube" entry, taking domain lines on the way; the domain in
// force when the entry is read scales it (the minimum only sets the range).
bool readCubeEntry(Reading& in, float minValue[3], float maxValue[3], float entry[3])
{
    for (;;) {
        if (!in.nextLineOrEof())
            return false;
        const char* line = in.line();
        if (startsWith(line, "DOMAIN_")) {
            float* target = startsWith(line + 7, "MIN ") ? minValue
                            : startsWith(line + 7, "MAX ") ? maxValue
                                                           : nullptr;
            if (!target)
                return false;
            scanThreeFloats(line + 11, target);
            continue;
        }
        if (isBlankOrComment(line))
            continue;
        if (scanThreeFloats(line, entry) < 3)
            return false;
        for (int c = 0; c < 3; ++c)
            entry[c] *= maxValue[c] - minValue[c];
        return true;
    }
}

}  // namespace

Lut3D* parseCube(const char* path)
{
    Reading in(path);
    if (!in.isOpen())
        return nullptr;
    do {
        if (!in.readLine())
            return nullptr;
    } while (!startsWith(in.line(), "LUT_3D_SIZE "));
    const int size = parseIntBase0(in.line() + 12);
    if (!sizeIsValid(size) || !in.allocate(size))
        return nullptr;

    float minValue[3] = {0.0f, 0.0f, 0.0f};
    float maxValue[3] = {1.0f, 1.0f, 1.0f};
    for (int b = 0; b < size; ++b)
        for (int g = 0; g < size; ++g)
            for (int r = 0; r < size; ++r)
                if (!readCubeEntry(in, minValue, maxValue, in.lut()->lut[r][g][b]))
                    return nullptr;
    return in.release();
}

Lut3D* parse3dl(const char* path)
{
    Reading in(path);
    if (!in.isOpen() || !in.allocate(k3dlSize))
        return nullptr;
    // The first meaningful line lists the input levels; it is not needed.
    if (!in.nextMeaningfulLine())
        return nullptr;
    const float scale = 1.0f / 4096.0f;
    const bool read = in.fillBlueFastest([&](float* entry) {
        int values[3];
        if (!in.nextMeaningfulLine() || scanThreeInts(in.line(), values) < 3)
            return false;
        for (int c = 0; c < 3; ++c)
            entry[c] = float(values[c]) * scale;
        return true;
    });
    return read ? in.release() : nullptr;
}

Lut3D* parseDat(const char* path)
{
    Reading in(path);
    if (!in.isOpen())
        return nullptr;
    int size = kDatDefaultSize;
    if (!in.nextMeaningfulLine())
        return nullptr;
    if (startsWith(in.line(), "3DLUTSIZE ")) {
        size = parseIntBase0(in.line() + 10);
        if (!sizeIsValid(size) || !in.nextMeaningfulLine())
            return nullptr;
    }
    if (!in.allocate(size))
        return nullptr;
    // The line already read holds the first entry.
    bool haveLine = true;
    const bool read = in.fillBlueFastest([&](float* entry) {
        if (!haveLine && !in.nextMeaningfulLine())
            return false;
        haveLine = false;
        return scanThreeFloats(in.line(), entry) == 3;
    });
    return read ? in.release() : nullptr;
}

namespace {

// "values" followed by three channel letters: which value of a data line goes
// to red, green and blue. Unknown letters leave a slot as it was.
void readChannelOrder(const char* p, int map[3])
{
    for (int slot = 0; slot < 3; ++slot) {
        while (isBlankByte(*p))
            ++p;
        switch (*p) {
        case 'r': map[slot] = 0; break;
        case 'g': map[slot] = 1; break;
        case 'b': map[slot] = 2; break;
        default: break;
        }
        while (*p != '\0' && !isBlankByte(*p))
            ++p;
    }
}

}  // namespace

Lut3D* parseM3d(const char* path)
{
    Reading in(path);
    if (!in.isOpen())
        return nullptr;
    int inCount = -1;
    int outCount = -1;
    int map[3] = {0, 1, 2};
    bool haveLine = in.readLine();
    for (; haveLine; haveLine = in.readLine()) {
        const char* line = in.line();
        if (startsWith(line, "in")) {
            inCount = parseIntBase0(line + 2);
        } else if (startsWith(line, "out")) {
            outCount = parseIntBase0(line + 3);
        } else if (startsWith(line, "values")) {
            readChannelOrder(line + 6, map);
            break;
        }
    }
    if (inCount == -1 || outCount == -1) {
        printf("in and out must be defined\n");
        return nullptr;
    }
    if (inCount < 2 || outCount < 2 || inCount > kMaxM3dCount || outCount > kMaxM3dCount) {
        printf("invalid in (%d) or out (%d)\n", inCount, outCount);
        return nullptr;
    }
    int size = 2;
    while (size < kMaxLutLevel && size * size * size < inCount)
        ++size;
    const float scale = 1.0f / float(outCount - 1);
    if (!in.allocate(size))
        return nullptr;
    const bool read = in.fillBlueFastest([&](float* entry) {
        float values[3];
        if (!in.nextLineOrEof() || scanThreeFloats(in.line(), values) < 3)
            return false;
        for (int c = 0; c < 3; ++c)
            entry[c] = scale * values[map[c]];
        return true;
    });
    return read ? in.release() : nullptr;
}
