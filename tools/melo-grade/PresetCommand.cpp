// melo-grade preset --scene S [--top I] [--mid I] [--down I] [--strength N]
//                   [--presets DIR|ARCHIVE] [--jobs N] --out-dir DIR INPUT...
//
// Grades every input at full resolution with the chosen layers of a scene,
// as the editor's save does, N photos at a time (default: one per core),
// reporting them in input order. Each result is written
// as DIR/<input base name>.jpg (JPEG quality 100). --presets names a folder
// holding MELO/<scene>/<n>.CUBE (or the MELO folder itself) or the encrypted
// preset archive, which is unpacked into a private temporary folder first;
// without it the library unpacked by the program (temp folder/MELO) is used.
#include "GradeTool.h"

#include "GlobalConstants.h"
#include "LayerGrading.h"
#include "LutApply.h"
#include "LutCache.h"

#include "BatchProgress.h"
#include "OrderedPipeline.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QThread>

#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <exception>
#include <malloc.h>
#include <map>
#include <unistd.h>

namespace {

struct PresetJob {
    int scene = -1;
    LayerSelection selection;
    std::string presets;
    std::string outDir;
    Arguments inputs;
    int jobs = std::max(1, QThread::idealThreadCount());
};

const int kMaxJobs = 256;

const char* const kLayerOptions[kPresetLayerCount] = {"--top", "--mid", "--down"};
const int kLayerSizes[kPresetLayerCount] = {4, 4, 12};

int parseJob(const Arguments& args, PresetJob& job)
{
    int strength = 100;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& option = args[i];
        if (option.rfind("--", 0) != 0) {
            job.inputs.push_back(option);
            continue;
        }
        if (i + 1 >= args.size())
            return usageError(option + " needs a value");
        const std::string& value = args[++i];
        int layer = -1;
        for (int l = 0; l < kPresetLayerCount; ++l)
            if (option == kLayerOptions[l])
                layer = l;
        if (layer >= 0) {
            if (!parseNumber(value, 0, kLayerSizes[layer] - 1, job.selection.ids[layer]))
                return usageError(option + " needs a preset from 0 to " + std::to_string(kLayerSizes[layer] - 1));
        } else if (option == "--scene") {
            if (!parseNumber(value, 0, kSceneCount - 1, job.scene))
                return usageError("--scene needs a scene from 0 to " + std::to_string(kSceneCount - 1));
        } else if (option == "--strength") {
            if (!parseNumber(value, 0, 100, strength))
                return usageError("--strength needs a number from 0 to 100");
        } else if (option == "--jobs") {
            if (!parseNumber(value, 1, kMaxJobs, job.jobs))
                return usageError("--jobs needs a number from 1 to " + std::to_string(kMaxJobs));
        } else if (option == "--presets") {
            job.presets = value;
        } else if (option == "--out-dir") {
            job.outDir = value;
        } else {
            return usageError("unknown option " + option);
        }
    }
    for (int& s : job.selection.strengths)
        s = strength;
    if (job.scene < 0)
        return usageError("preset needs --scene");
    if (job.outDir.empty())
        return usageError("preset needs --out-dir");
    if (job.inputs.empty())
        return usageError("preset needs at least one input image");
    return kExitOk;
}

// The library root (the folder with the scene folders), unpacking an archive
// into unpackDir when one is named. Empty after complaining on failure.
QString libraryRoot(const std::string& presets, QTemporaryDir& unpackDir)
{
    if (presets.empty())
        return presetRoot();
    const QString named = QString::fromLocal8Bit(presets.c_str());
    const QFileInfo info(named);
    if (info.isDir())
        return QDir(named + "/MELO").exists() ? named + "/MELO" : named;
    QString error;
    if (!unpackDir.isValid() || !unpackPresetArchive(named, unpackDir.path(), &error)) {
        complain(presets + ": cannot unpack the presets: " + error.toLocal8Bit().toStdString());
        return {};
    }
    return unpackDir.path() + "/MELO";
}

// Every chosen preset must be there and readable before any file is graded.
bool presetsReadable(const PresetJob& job, const QString& root)
{
    for (int layer = 0; layer < kPresetLayerCount; ++layer) {
        if (job.selection.ids[layer] < 0)
            continue;
        const QString path =
            presetFilePath(root, job.scene, presetFileNumber(PresetLayer(layer), job.selection.ids[layer]));
        const std::string local = path.toLocal8Bit().toStdString();
        if (!QFileInfo(path).isFile()) {
            complain(local + ": no such preset");
            return false;
        }
        if (!loadLutCached(local)) {
            complain(local + ": cannot read the preset");
            return false;
        }
    }
    return true;
}

std::string baseName(const std::string& path)
{
    return QFileInfo(QString::fromLocal8Bit(path.c_str())).completeBaseName().toLocal8Bit().toStdString();
}

// What became of one photo.
struct PhotoOutcome {
    bool written = false;
    std::string problem;  // not yet said; empty when the reader or writer said it
};

PhotoOutcome gradePhoto(const PresetJob& job, const QString& root, const std::string& input,
                        const std::string& output)
{
    PhotoOutcome outcome;
    try {
        // The editor's reader and writer: upright, profile and camera details
        // kept, graded at the photo's own depth.
        std::optional<Photo> photo = readPhotoFile(input);
        if (!photo)
            return outcome;
        const LayerGradeResult result = gradeLayers(photo->pixels, job.scene, job.selection, root, nullptr,
                                                     GradeOutputs::OverBase);
        if (result.graded)
            photo->pixels = result.image;
        outcome.written = writePhotoFile(output, *photo);
    } catch (const std::exception& error) {
        // Out of memory on a huge photo, for one: that photo fails, the
        // others go on.
        outcome.problem = input + ": cannot grade the image: " + error.what();
    }
    return outcome;
}

}  // namespace

int runPresetCommand(const Arguments& args)
{
    PresetJob job;
    if (const int status = parseJob(args, job))
        return status;
    QTemporaryDir unpackDir;
    const QString root = libraryRoot(job.presets, unpackDir);
    if (root.isEmpty() || !presetsReadable(job, root))
        return kExitLutFailed;
    if (!QDir().mkpath(QString::fromLocal8Bit(job.outDir.c_str()))) {
        complain(job.outDir + ": cannot create the output folder");
        return kExitImageFailed;
    }

    // One output per input; a second input with the same base name is refused
    // rather than overwriting the first one's result.
    std::vector<std::string> outputs(job.inputs.size()), refusals(job.inputs.size());
    std::map<std::string, size_t> owner;
    for (size_t i = 0; i < job.inputs.size(); ++i) {
        const std::string output = job.outDir + "/" + baseName(job.inputs[i]) + ".jpg";
        if (owner.emplace(output, i).second)
            outputs[i] = output;
        else
            refusals[i] = job.inputs[i] + ": skipped, " + output + " is the result of " + job.inputs[owner[output]];
    }

    // Every photo needs several picture-sized buffers. Kept in the heap once
    // freed, rather than handed back to the system and faulted in afresh for
    // the next photo, they cost about a third less processor time; the
    // pipeline bounds how many exist at once.
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, INT_MAX);

    // --jobs bounds the cores the batch keeps busy, as make's does: that many
    // photos at a time, each graded on one thread, so --jobs 1 leaves the
    // other cores free. With a photo per core under way, splitting one
    // photo's grading across the cores as well would only add hand-overs
    // between threads (measured: a tenth more time on two cores). With fewer
    // photos than jobs, each photo gets its share of them.
    const int workers = int(std::min(job.inputs.size(), size_t(job.jobs)));
    cv::setNumThreads(std::max(1, std::min(job.jobs, QThread::idealThreadCount()) / workers));

    // Decoding, grading and encoding of different photos overlap; a few
    // photos more than the workers may wait to be reported in order, so
    // memory stays bounded by the number of jobs.
    BatchProgress progress(job.inputs.size(), isatty(fileno(stderr)));
    bool anyFailed = false;
    OrderedPipeline<PhotoOutcome> pipeline(job.jobs, job.jobs + 2);
    try {
        pipeline.run(
            job.inputs.size(),
            [&](size_t i) {
                if (outputs[i].empty())
                    return PhotoOutcome{false, refusals[i]};
                return gradePhoto(job, root, job.inputs[i], outputs[i]);
            },
            [&](size_t i, PhotoOutcome& outcome) {
                if (outcome.written) {
                    progress.photoWritten(job.inputs[i], outputs[i]);
                } else {
                    anyFailed = true;
                    progress.photoFailed(job.inputs[i], outcome.problem);
                }
            });
    } catch (const std::exception& error) {
        // No thread to be had, for one: nothing more is started.
        complain(std::string("the batch stopped: ") + error.what());
        return kExitImageFailed;
    }
    return anyFailed ? kExitImageFailed : kExitOk;
}
