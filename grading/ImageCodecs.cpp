#include "ImageCodecs.h"

// Only the declarations: with MELO_IMGCODECS_LIBRARY nothing here links to
// the library, every call goes through the functions loaded below.
#include <opencv2/imgcodecs.hpp>

#ifdef MELO_IMGCODECS_LIBRARY
#include <cstdio>
#include <dlfcn.h>
#endif

namespace {

using DecodeFunction = cv::Mat (*)(cv::InputArray, int);
using EncodeFunction = bool (*)(const cv::String&, cv::InputArray, std::vector<uchar>&, const std::vector<int>&);
using ReadFunction = cv::Mat (*)(const cv::String&, int);

#ifdef MELO_IMGCODECS_LIBRARY

// The types above must be those of OpenCV's declarations: these casts pick
// the overload and fail to compile when it is not there. They are not
// evaluated, so they do not link to the library either.
static_assert(sizeof(static_cast<DecodeFunction>(&cv::imdecode)) > 0, "cv::imdecode");
static_assert(sizeof(static_cast<EncodeFunction>(&cv::imencode)) > 0, "cv::imencode");
static_assert(sizeof(static_cast<ReadFunction>(&cv::imread)) > 0, "cv::imread");

struct Codecs {
    DecodeFunction decode = nullptr;
    EncodeFunction encode = nullptr;
    ReadFunction read = nullptr;
};

template <class Function>
Function lookUp(void* library, const char* symbol)
{
    return library ? reinterpret_cast<Function>(dlsym(library, symbol)) : nullptr;
}

// Loaded once, by whichever thread needs a codec first; never unloaded.
const Codecs& codecs()
{
    static const Codecs loaded = [] {
        Codecs c;
        // Loaded by a test program already, the library is found, not loaded twice.
        void* library = dlopen(MELO_IMGCODECS_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        // The symbols of the three declarations above (Itanium C++ names).
        c.decode = lookUp<DecodeFunction>(library, "_ZN2cv8imdecodeERKNS_11_InputArrayEi");
        c.encode = lookUp<EncodeFunction>(
            library, "_ZN2cv8imencodeERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEERKNS_11_InputArrayERSt"
                     "6vectorIhSaIhEERKSB_IiSaIiEE");
        c.read = lookUp<ReadFunction>(library, "_ZN2cv6imreadERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEEi");
        if (!c.decode || !c.encode || !c.read) {
            const char* why = dlerror();
            fprintf(stderr, "cannot load OpenCV's image codecs (%s): %s\n", MELO_IMGCODECS_LIBRARY,
                    why ? why : "a function is missing");
            c = Codecs();
        }
        return c;
    }();
    return loaded;
}

#else

struct Codecs {
    DecodeFunction decode = &cv::imdecode;
    EncodeFunction encode = &cv::imencode;
    ReadFunction read = &cv::imread;
};

const Codecs& codecs()
{
    static const Codecs linked;
    return linked;
}

#endif

}  // namespace

namespace ImageCodecs {

cv::Mat decode(cv::InputArray bytes, int flags)
{
    const DecodeFunction f = codecs().decode;
    return f ? f(bytes, flags) : cv::Mat();
}

bool encode(const std::string& extension, cv::InputArray pixels, std::vector<uchar>& encoded,
            const std::vector<int>& params)
{
    const EncodeFunction f = codecs().encode;
    return f && f(extension, pixels, encoded, params);
}

cv::Mat read(const std::string& path, int flags)
{
    const ReadFunction f = codecs().read;
    return f ? f(path, flags) : cv::Mat();
}

}  // namespace ImageCodecs
