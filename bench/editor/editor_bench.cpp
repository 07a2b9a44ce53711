// editor_bench: the editor's interactive speed in the real main window, one
// "<name> <value> <unit>" line per figure, each a median. Run on a display
// (xvfb-run): the window holds web views.
//
// regrade_preview_3layers_ms  one strength-slider step with all three layers
//                             checked on a 1200 x 900 preview, from the value
//                             change to the new pixmap set on the view; the
//                             steps go round the three sliders. The lines
//                             _top, _mid and _down give each slider alone:
//                             a step re-blends its layer and regrades the
//                             layers above it (the top slider: two LUTs)
// refresh_thumbnails_ms       the twenty preset thumbnails graded and set
// open_24mp_jpeg_ms           opening a 6000 x 4000 JPEG up to the first
//                             shown preview and its thumbnails
// open_24mp_heic_ms           the same picture as a HEIC (libheif, quality 90)
//                             (to the shown document: no quick preview)
// open_24mp_dng_ms            the same picture as an uncompressed 16-bit DNG,
//                             to its first preview: LibRaw's half-size
//                             development; _full_ms to the shown document
//                             (demosaic, sRGB, 16 bits)
// open_24mp_jpeg_first_preview_ms  the same, from the file chosen to the
//                             quick preview on the view (target 150 ms); the
//                             full decode goes on in the background
// read_24mp_jpeg_ms           the reader on that JPEG's bytes (headers,
//                             completeness, orientation, profile, decoding)
// decode_24mp_jpeg_ms         its decoding alone; _opencv_ms the same by
//                             OpenCV's imdecode, as opening did before
// open_24mp_jpeg_orientation_icc_pct  what the reader adds to decoding, in
//                             per cent of open_24mp_jpeg_ms (target 5)
// open_24mp_{jpeg,heic,dng}_gui_max_stall_ms  the longest gap between two
//                             runs of a 10 ms GUI timer during each open:
//                             the window keeps painting while it decodes
#include "EditorBench.h"
#include "FormatSamples.h"

#include "JpegCodec.h"
#include "MySlider.h"
#include "PhotoReader.h"

#include <QApplication>
#include <QFile>

#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cstdio>

int main(int argc, char* argv[])
{
    EditorBench bench;
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    printConditions("editor_bench");
    BrisaQT& window = bench.window();

    const QString preview = bench.photograph(cv::Size(4000, 3000), QStringLiteral("preview.jpg"));
    openAndWait(window, preview);
    for (const char* name : {"topPreset0", "midPreset1", "downPreset4"})
        checkPreset(window, name);
    MySlider* sliders[3];
    const char* const names[3] = {"top", "mid", "down"};
    for (int i = 0; i < 3; ++i)
        sliders[i] = window.findChild<MySlider*>(QString::fromLatin1(names[i]) + QStringLiteral("Slider"));
    int step = 0;
    auto stepSlider = [&](MySlider* slider) { slider->setValue(slider->value() == 60 ? 61 : 60); };
    const double round = medianMs(90, [&] { stepSlider(sliders[step++ % 3]); });
    printf("regrade_preview_3layers_ms %.2f ms\n", round);
    for (int i = 0; i < 3; ++i)
        printf("regrade_preview_3layers_%s_ms %.2f ms\n", names[i], medianMs(40, [&] { stepSlider(sliders[i]); }));
    printf("refresh_thumbnails_ms %.2f ms\n", medianMs(30, [&] { window.refreshPresetThumbnails(); }));

    const QString big = bench.photograph(cv::Size(6000, 4000), QStringLiteral("big.jpg"));
    std::vector<double> opens, firsts, stalls;
    for (int i = 0; i < 5; ++i) {
        double first = 0;
        double stall = 0;
        opens.push_back(openAndWait(window, big, &first, &stall));
        firsts.push_back(first);
        stalls.push_back(stall);
    }
    const double open = median(opens);
    printf("open_24mp_jpeg_ms %.1f ms\n", open);
    printf("open_24mp_jpeg_first_preview_ms %.1f ms\n", median(firsts));
    printf("open_24mp_jpeg_gui_max_stall_ms %.1f ms\n", median(stalls));
    fflush(stdout);

    // What reading a photograph upright and in its own colours costs beside
    // decoding it, for a photo that needs neither turning nor a profile.
    QFile bigFile(big);
    if (!bigFile.open(QIODevice::ReadOnly)) {
        fprintf(stderr, "editor_bench: cannot read %s\n", qPrintable(big));
        return 1;
    }
    const QByteArray bytes = bigFile.readAll();
    // Taken in turns, so the window's own work falls on both alike.
    std::vector<double> reads, decodes;
    for (int i = 0; i < 9; ++i) {
        reads.push_back(medianMs(1, [&] { decodePhoto(bytes); }));
        decodes.push_back(medianMs(1, [&] { decodeJpeg(bytes, 1, false, kMaxPhotoPixels); }));
    }
    const double read = median(reads);
    const double decode = median(decodes);
    const double openCv = medianMs(7, [&] {
        cv::imdecode(cv::Mat(1, bytes.size(), CV_8U, const_cast<char*>(bytes.constData())), cv::IMREAD_COLOR);
    });
    printf("read_24mp_jpeg_ms %.1f ms\n", read);
    printf("decode_24mp_jpeg_ms %.1f ms\n", decode);
    printf("decode_24mp_jpeg_opencv_ms %.1f ms\n", openCv);
    printf("open_24mp_jpeg_orientation_icc_pct %.2f %%\n", std::max(0.0, read - decode) * 100.0 / open);
    fflush(stdout);

    const cv::Mat picture = cv::imread(big.toLocal8Bit().constData(), cv::IMREAD_COLOR);
    const QString heic = bench.folder() + QStringLiteral("/风光/big.heic");
    HeifSample sample;
    sample.quality = 90;
    if (!writeHeif(heic, picture, sample)) {
        fprintf(stderr, "editor_bench: cannot write the HEIC photograph\n");
        return 1;
    }
    // To the first picture shown; *fullMs to the shown document, *stallMs
    // the longest the window stood still.
    const auto openMs = [&](const QString& path, double* fullMs, double* stallMs) {
        std::vector<double> firstRuns, fullRuns, stallRuns;
        for (int i = 0; i < 3; ++i) {
            double first = 0;
            double stall = 0;
            fullRuns.push_back(openAndWait(window, path, &first, &stall));
            firstRuns.push_back(first);
            stallRuns.push_back(stall);
        }
        *fullMs = median(fullRuns);
        *stallMs = median(stallRuns);
        return median(firstRuns);
    };
    double fullMs = 0;
    double stallMs = 0;
    printf("open_24mp_heic_ms %.1f ms\n", openMs(heic, &fullMs, &stallMs));
    printf("open_24mp_heic_gui_max_stall_ms %.1f ms\n", stallMs);
    fflush(stdout);

    CameraExif camera;
    camera.make = "Melo Optics";
    camera.model = "Test Body 24";
    const QString dng = bench.folder() + QStringLiteral("/风光/big.dng");
    QFile dngFile(dng);
    if (!dngFile.open(QIODevice::WriteOnly) || dngFile.write(makeDng(picture, 1, camera)) <= 0) {
        fprintf(stderr, "editor_bench: cannot write the DNG photograph\n");
        return 1;
    }
    dngFile.close();
    printf("open_24mp_dng_ms %.1f ms\n", openMs(dng, &fullMs, &stallMs));
    printf("open_24mp_dng_full_ms %.1f ms\n", fullMs);
    printf("open_24mp_dng_gui_max_stall_ms %.1f ms\n", stallMs);
    fflush(stdout);
    bench.closeWindow();
    return 0;
}
