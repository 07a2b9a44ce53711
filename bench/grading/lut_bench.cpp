// lut_bench: speed of the grading engine, one "<name> <value> <unit>" line
// per figure, each the median of repeated runs.
//
//   lut_bench [--quick]
//
// The picture is a real sample photograph upscaled to 6000x4000 with film-like
// grain added, so neighbouring pixels differ as they do in a camera image. Its
// 16-bit version is every level times 257 with fine grain in the low bits.
// The fast results are checked against the plain arithmetic; the bench says
// how many values differ (0 is the only acceptable figure).
#include "LayerGrading.h"
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

// A sample photograph upscaled to the given size with grain added.
cv::Mat photographLike(const char* name, cv::Size size)
{
    const cv::Mat photo = cv::imread(std::string(MELO_SAMPLES_DIR "/") + name, cv::IMREAD_COLOR);
    if (photo.empty()) {
        fprintf(stderr, "lut_bench: cannot read the sample photograph %s\n", name);
        exit(1);
    }
    cv::Mat big;
    cv::resize(photo, big, size, 0, 0, cv::INTER_CUBIC);
    cv::Mat grain(big.size(), CV_16SC3);
    cv::theRNG().state = 20240601;
    cv::randn(grain, 0, 6);
    cv::Mat grainy;
    cv::add(big, grain, grainy, cv::noArray(), CV_8UC3);
    return grainy;
}

// The 8-bit picture at 16 bits, with grain below one 8-bit level.
cv::Mat sixteenBits(const cv::Mat& image)
{
    cv::Mat wide, fine(image.size(), CV_16UC3);
    image.convertTo(wide, CV_16U, 257.0);
    cv::randu(fine, 0, 257);
    return wide + fine;
}

// How many values of the fast result differ from the plain arithmetic's.
double mismatches(const cv::Mat& image, const LutKernel& kernel, Lut3D& lut)
{
    cv::Mat difference;
    cv::absdiff(applyLut(image, kernel), applyLutReference(image, lut), difference);
    return cv::countNonZero(difference.reshape(1));
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
    const cv::Mat image = photographLike("coffee.png", cv::Size(6000, 4000));

    clearLutCache();
    const auto kernel = loadLutCached(cube);
    if (!kernel) {
        fprintf(stderr, "lut_bench: cannot read %s\n", cube.c_str());
        return 1;
    }
    const cv::Mat image16 = sixteenBits(image);
    cv::Mat out, out16;
    applyLutInto(image, *kernel, out);  // warm up threads and pages
    applyLutInto(image16, *kernel, out16);
    const double apply8 = medianMs(quick ? 5 : 21, [&] { out = applyLut(image, *kernel); });
    report("apply_33_24mp_ms", apply8, "ms");
    report("apply_33_24mp_reused_output_ms", medianMs(quick ? 5 : 21, [&] { applyLutInto(image, *kernel, out); }),
           "ms");
    const double apply16 = medianMs(quick ? 5 : 21, [&] { out16 = applyLut(image16, *kernel); });
    report("apply_33_24mp_16bit_ms", apply16, "ms");
    report("apply_16bit_to_8bit_ratio", apply16 / apply8, "times");
    // The other implementations, for comparison.
    const LutPath chosen = lutPath();
    const struct {
        LutPath path;
        const char* name;
        const char* name16;
    } others[] = {{LutPath::Avx2, "apply_33_24mp_avx2_ms", "apply_33_24mp_16bit_avx2_ms"},
                  {LutPath::Portable, "apply_33_24mp_portable_ms", "apply_33_24mp_16bit_portable_ms"}};
    for (const auto& other : others) {
        if (other.path != chosen && setLutPath(other.path)) {
            report(other.name, medianMs(quick ? 3 : 5, [&] { applyLutInto(image, *kernel, out); }), "ms");
            report(other.name16, medianMs(quick ? 3 : 5, [&] { applyLutInto(image16, *kernel, out16); }), "ms");
        }
    }
    setLutPath(chosen);
    if (Lut3D* lut = readLutFile(cube.c_str())) {
        report("apply_33_24mp_reference_mismatches", mismatches(image, *kernel, *lut), "values");
        report("apply_33_24mp_16bit_reference_mismatches", mismatches(image16, *kernel, *lut), "values");
        free(lut);
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

    // Three layers, each a LUT application and a blend (tables cached): a
    // full-size save's grading of the 24-megapixel picture at 8 and at 16
    // bits, then one preview regrade as the editor does it, on 1200 x 900.
    LayerSelection selection;
    selection.ids[0] = 0;
    selection.ids[1] = 1;
    selection.ids[2] = 5;
    selection.strengths[1] = 60;
    const QString library = QStringLiteral(MELO_PRESET_DIR "/MELO");
    report("grade_24mp_3layers_ms", medianMs(quick ? 3 : 7, [&] { gradeLayers(image, 1, selection, library); }),
           "ms");
    report("grade_24mp_3layers_16bit_ms",
           medianMs(quick ? 3 : 7, [&] { gradeLayers(image16, 1, selection, library); }), "ms");
    const cv::Mat preview = photographLike("chelsea.png", cv::Size(1200, 900));
    gradeLayers(preview, 1, selection, library);
    report("grade_preview_3layers_ms", medianMs(quick ? 5 : 41, [&] { gradeLayers(preview, 1, selection, library); }),
           "ms");
    // The same with the editor's memo while a slider of the last layer moves:
    // only its blend is redone.
    LayerGradeMemo memo;
    int strength = 0;
    report("regrade_preview_down_strength_ms", medianMs(quick ? 5 : 41, [&] {
               selection.strengths[2] = strength++ % 101;
               gradeLayers(preview, 1, selection, library, &memo);
           }),
           "ms");

    report("parse_cube33_ms", medianMs(quick ? 5 : 31, [&] {
               clearLutCache();
               loadLutCached(cube);
           }),
           "ms");
    loadLutCached(cube);
    report("cached_cube33_ms", medianMs(101, [&] { loadLutCached(cube); }), "ms");

    // The conditions of the run.
    const char* paths[] = {"portable", "avx2", "avx512"};
    printf("lut_path %s name\n", paths[int(lutPath())]);
    printf("threads %d count\n", cv::getNumThreads());
    double load[1] = {0};
    if (getloadavg(load, 1) == 1)
        printf("load_average_1min %.2f load\n", load[0]);
    return 0;
}
