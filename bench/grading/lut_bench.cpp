// lut_bench: speed of the grading engine, one "<name> <value> <unit>" line
// per figure, each the median of repeated runs.
//
//   lut_bench [--quick]
//
// The picture is a real sample photograph upscaled to 6000x4000 with film-like
// grain added, so neighbouring pixels differ as they do in a camera image.
#include "LutApply.h"
#include "LutCache.h"
#include "LutKernel.h"

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double timeMs(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

double medianMs(int runs, const std::function<void()>& work)
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i)
        times.push_back(timeMs(work));
    return median(times);
}

cv::Mat photographLike()
{
    const cv::Mat photo = cv::imread(MELO_SAMPLES_DIR "/coffee.png", cv::IMREAD_COLOR);
    if (photo.empty()) {
        fprintf(stderr, "lut_bench: cannot read the sample photograph\n");
        exit(1);
    }
    cv::Mat big;
    cv::resize(photo, big, cv::Size(6000, 4000), 0, 0, cv::INTER_CUBIC);
    cv::Mat grain(big.size(), CV_16SC3);
    cv::theRNG().state = 20240601;
    cv::randn(grain, 0, 6);
    cv::Mat grainy;
    cv::add(big, grain, grainy, cv::noArray(), CV_8UC3);
    return grainy;
}

// Wall time of one ffmpeg run over the picture with the given video filter.
double ffmpegMs(const std::string& input, const std::string& filter)
{
    const std::string command = "ffmpeg -nostdin -v error -threads 0 -i " + input + " -vf " + filter +
                                " -f null - 2>/dev/null";
    return timeMs([&] {
        if (std::system(command.c_str()) != 0)
            fprintf(stderr, "lut_bench: ffmpeg failed\n");
    });
}

void report(const char* name, double value, const char* unit) { printf("%s %.3f %s\n", name, value, unit); }

}  // namespace

int main(int argc, char** argv)
{
    const bool quick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
    const std::string cube = MELO_PRESET_DIR "/MELO/1/10.CUBE";
    const cv::Mat image = photographLike();

    clearLutCache();
    const auto kernel = loadLutCached(cube);
    if (!kernel) {
        fprintf(stderr, "lut_bench: cannot read %s\n", cube.c_str());
        return 1;
    }
    cv::Mat out;
    applyLutInto(image, *kernel, out);  // warm up threads and pages
    report("apply_33_24mp_ms", medianMs(quick ? 5 : 21, [&] { out = applyLut(image, *kernel); }), "ms");
    report("apply_33_24mp_reused_output_ms", medianMs(quick ? 5 : 21, [&] { applyLutInto(image, *kernel, out); }),
           "ms");
    if (setLutPath(LutPath::Portable)) {
        report("apply_33_24mp_portable_ms", medianMs(3, [&] { applyLutInto(image, *kernel, out); }), "ms");
        setLutPath(LutPath::Avx2);
    }
    report("scalar_ref_24mp_ms",
           medianMs(quick ? 1 : 3, [&] { out = applyLutFileReference(image, cube.c_str()); }), "ms");

    if (!quick) {
        char folder[] = "/tmp/lut_bench.XXXXXX";
        if (mkdtemp(folder)) {
            const std::string ppm = std::string(folder) + "/picture.ppm";
            const std::string table = std::string(folder) + "/table.cube";
            cv::imwrite(ppm, image);
            std::system(("cp '" + cube + "' " + table).c_str());
            std::vector<double> differences;
            for (int i = 0; i < 5; ++i) {
                const double withLut = ffmpegMs(ppm, "lut3d=file=" + table + ":interp=tetrahedral");
                const double passThrough = ffmpegMs(ppm, "null");
                differences.push_back(withLut - passThrough);
            }
            report("ffmpeg_lut3d_24mp_ms", median(differences), "ms");
            std::remove(ppm.c_str());
            std::remove(table.c_str());
            rmdir(folder);
        }
    }

    report("parse_cube33_ms", medianMs(quick ? 5 : 31, [&] {
               clearLutCache();
               loadLutCached(cube);
           }),
           "ms");
    loadLutCached(cube);
    report("cached_cube33_ms", medianMs(101, [&] { loadLutCached(cube); }), "ms");
    return 0;
}
