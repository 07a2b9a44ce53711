// batch_bench: grading a folder of photographs from the command line, one
// "<name> <value> <unit>" line per figure.
//
//   batch_bench [--quick]
//
// Twelve 12-megapixel JPEGs are made from the Debian sample photographs
// (upscaled with film-like grain, so neighbouring pixels differ as in a camera
// image) and graded with the same 33-point table, JPEG in and JPEG out, by:
// melo-grade preset with its default --jobs and with --jobs 1 (each the
// median of three runs taken in turns), ffmpeg's lut3d filter (tetrahedral)
// and G'MIC's map_clut, each of the last two run once per photo, as a shell
// loop would. The figures are whole-run wall times turned
// into photos per minute; the processor time the tools used per photo (all
// their threads) is printed too, as it hardly depends on what else the
// machine runs. batch_melo_start_ms is what a start of melo-grade costs
// before any photo (reading one table), which every run pays once.
// --quick makes three photos and skips ffmpeg and G'MIC.
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

const char* const kSamples[] = {"astronaut.png", "chelsea.png",           "coffee.png",  "rocket.jpg",
                                "motorcycle_left.png", "motorcycle_right.png", "hubble_deep_field.jpg",
                                "retina.jpg", "ihc.png", "color.png", "camera.png", "moon.png"};
const cv::Size kPhotoSize(4000, 3000);
// The table: file 10 of scene 1 is the down layer's preset 2.
const char kTable[] = MELO_PRESET_DIR "/MELO/1/10.CUBE";

void loadAverage()
{
    double load[1] = {0};
    if (getloadavg(load, 1) == 1)
        printf("load_average_1min %.2f load\n", load[0]);
}

// A sample photograph at the batch's size with grain added, as a JPEG.
bool makePhoto(const char* sample, const std::string& path)
{
    const cv::Mat photo = cv::imread(std::string(MELO_SAMPLES_DIR "/") + sample, cv::IMREAD_COLOR);
    if (photo.empty())
        return false;
    cv::Mat big, grain(kPhotoSize, CV_16SC3), grainy;
    cv::resize(photo, big, kPhotoSize, 0, 0, cv::INTER_CUBIC);
    cv::randn(grain, 0, 6);
    cv::add(big, grain, grainy, cv::noArray(), CV_8UC3);
    return cv::imwrite(path, grainy, {cv::IMWRITE_JPEG_QUALITY, 95});
}

// Processor time used by finished child processes so far, in seconds.
double childrenCpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

struct RunTimes {
    double wallSeconds = 0;
    double cpuSeconds = 0;
};

// Runs each command in turn; false after saying which one failed.
bool timeCommands(const std::vector<std::string>& commands, RunTimes& times)
{
    const double cpuBefore = childrenCpuSeconds();
    const auto start = std::chrono::steady_clock::now();
    for (const std::string& command : commands) {
        if (std::system(command.c_str()) != 0) {
            fprintf(stderr, "batch_bench: failed: %s\n", command.c_str());
            return false;
        }
    }
    times.wallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    times.cpuSeconds = childrenCpuSeconds() - cpuBefore;
    return true;
}

// Prints "<name>_photos_per_min" from the wall time and
// "<name>_cpu_s_per_photo"; returns the photos per minute.
double report(const std::string& name, size_t photos, const RunTimes& times)
{
    const double perMinute = photos * 60.0 / times.wallSeconds;
    printf("%s_photos_per_min %.2f photos/min\n", name.c_str(), perMinute);
    printf("%s_cpu_s_per_photo %.3f s\n", name.c_str(), times.cpuSeconds / photos);
    fflush(stdout);
    return perMinute;
}

// Runs the commands once and reports them; 0 when one failed.
double runAndReport(const std::string& name, size_t photos, const std::vector<std::string>& commands)
{
    RunTimes times;
    return timeCommands(commands, times) ? report(name, photos, times) : 0;
}

// The run of median wall time among several.
RunTimes medianRun(std::vector<RunTimes> runs)
{
    std::sort(runs.begin(), runs.end(),
              [](const RunTimes& a, const RunTimes& b) { return a.wallSeconds < b.wallSeconds; });
    return runs[runs.size() / 2];
}

void ratio(const char* name, double over, double under)
{
    if (over > 0 && under > 0)
        printf("%s %.2f times\n", name, over / under);
}

}  // namespace

int main(int argc, char** argv)
{
    const bool quick = argc > 1 && std::strcmp(argv[1], "--quick") == 0;
    const char* tmp = getenv("TMPDIR");
    std::string folder = std::string(tmp && *tmp ? tmp : "/tmp") + "/batch_bench.XXXXXX";
    if (!mkdtemp(&folder[0])) {
        fprintf(stderr, "batch_bench: cannot make a working folder\n");
        return 1;
    }
    if (std::system(("mkdir -p '" + folder + "'/in '" + folder + "'/melo '" + folder + "'/melo1 '" + folder +
                     "'/ffmpeg '" + folder + "'/gmic && cp '" + kTable + "' '" + folder + "'/table.cube")
                        .c_str()) != 0) {
        fprintf(stderr, "batch_bench: cannot prepare %s\n", folder.c_str());
        return 1;
    }
    cv::theRNG().state = 20240601;
    std::vector<std::string> names;
    for (const char* sample : kSamples) {
        if (quick && names.size() == 3)
            break;
        names.push_back(std::string(sample).substr(0, std::string(sample).find('.')));
        if (!makePhoto(sample, folder + "/in/" + names.back() + ".jpg")) {
            fprintf(stderr, "batch_bench: cannot make a photograph from %s\n", sample);
            return 1;
        }
    }
    printf("batch_photos %zu count\nbatch_photo_megapixels %.1f MP\n", names.size(), kPhotoSize.area() / 1e6);
    loadAverage();

    std::string inputs;
    for (const std::string& name : names)
        inputs += " '" + folder + "/in/" + name + ".jpg'";
    // Standard error is a pipe here: one line per photo, dropped.
    const std::string meloCommand =
        "'" MELO_GRADE_PROGRAM "' 2>/dev/null preset --scene 1 --down 2 --presets '" MELO_PRESET_DIR "' ";
    const std::string meloAll = meloCommand + "--out-dir '" + folder + "/melo'" + inputs;
    const std::string meloOne = meloCommand + "--jobs 1 --out-dir '" + folder + "/melo1'" + inputs;
    // The new photographs go to disk first and one untimed run brings the
    // program, its libraries and the photographs into memory, so neither
    // figure pays for that. Then the two ways take turns, three runs each,
    // and the median of each is reported: the comparison of the two is what
    // matters, and other work on the machine then falls on both alike.
    RunTimes warmUp;
    if (std::system("sync") != 0 || !timeCommands({meloAll}, warmUp))
        return 1;
    std::vector<RunTimes> allRuns(3), oneRuns(3);
    for (int round = 0; round < 3; ++round) {
        if (!timeCommands({meloAll}, allRuns[round]) || !timeCommands({meloOne}, oneRuns[round]))
            return 1;
    }
    std::vector<RunTimes> starts(5);
    for (RunTimes& start : starts) {
        if (!timeCommands({"'" MELO_GRADE_PROGRAM "' lut '" + folder + "/table.cube' >/dev/null"}, start))
            return 1;
    }
    printf("batch_melo_start_ms %.1f ms\n", medianRun(starts).wallSeconds * 1000);
    const double melo = report("batch_melo", names.size(), medianRun(allRuns));
    const double jobs1 = report("batch_melo_jobs1", names.size(), medianRun(oneRuns));
    if (!quick) {
        std::vector<std::string> ffmpeg, gmic;
        for (const std::string& name : names) {
            const std::string in = "'" + folder + "/in/" + name + ".jpg'";
            ffmpeg.push_back("ffmpeg -nostdin -v error -y -threads 0 -i " + in + " -vf lut3d=file='" + folder +
                             "/table.cube':interp=tetrahedral -q:v 1 -qmin 1 '" + folder + "/ffmpeg/" + name +
                             ".jpg'");
            gmic.push_back("gmic -v -1 " + in + " '" + folder + "/table.cube' map_clut[0] [1] rm[1] o '" + folder +
                           "/gmic/" + name + ".jpg',100 >/dev/null");
        }
        ratio("batch_melo_over_ffmpeg", melo, runAndReport("batch_ffmpeg", names.size(), ffmpeg));
        runAndReport("batch_gmic", names.size(), gmic);
    }
    ratio("batch_melo_over_jobs1", melo, jobs1);
    loadAverage();
    printf("cores %ld count\n", sysconf(_SC_NPROCESSORS_ONLN));
    std::system(("rm -rf '" + folder + "'").c_str());
    return 0;
}
