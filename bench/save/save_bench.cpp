// save_bench: the user's save in the real main window, one "<name> <value>
// <unit>" line, the median of five saves. Run on a display (xvfb-run).
//
// save_24mp_3layers_jpg_ms  from the save timer's firing to the file written
//                           (reported when the success notice appears, which
//                           follows the write): 6000 x 4000 JPEG, three layers
//                           graded at full resolution, JPEG quality 100
// save_24mp_3layers_16bit_tiff_ms  the same from a 16-bit TIFF of that size,
//                           written as TIFF (its depth as the grading keeps it)
// save_24mp_gui_max_stall_ms  the longest gap between two runs of a 10 ms GUI
//                           timer during the same save, from the request
//                           until its result reaches the window (target
//                           50 ms): the work runs in the background. The
//                           success notice that follows is not counted
#include "EditorBench.h"

#include <QApplication>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTimer>

#include <opencv2/imgcodecs.hpp>

#include <algorithm>
#include <cstdio>

// Swallows the folder the save opens, so no file browser starts.
class FolderSink : public QObject
{
    Q_OBJECT
public slots:
    void open(const QUrl&) {}
};

// The longest gap between two ticks of a 10 ms timer while one save runs, from
// the save request (the 500 ms delay included) until the save has ended and
// its notice is about to be shown.
double maxGuiStallMs(BrisaQT& window, setting st)
{
    QElapsedTimer clock;
    double last = 0;
    double longest = 0;
    QTimer tick;
    tick.setTimerType(Qt::PreciseTimer);
    tick.setInterval(10);
    bool begun = false;
    QObject::connect(&tick, &QTimer::timeout, [&] {
        const double now = double(clock.nsecsElapsed()) / 1e6;
        begun = begun || window.isSaving();
        if (!begun || window.isSaving())
            longest = std::max(longest, now - last);
        last = now;
    });
    QSignalSpy ended(&window, &BrisaQT::saveEnded);
    clock.start();
    tick.start();
    window.start_timer_event(st);
    ended.wait(60000);
    return longest;
}

int main(int argc, char* argv[])
{
    EditorBench bench;
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    printConditions("save_bench");
    FolderSink sink;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &sink, "open");
    BrisaQT& window = bench.window();
    const QString jpeg = bench.photograph(cv::Size(6000, 4000), QStringLiteral("big.jpg"));
    // The same picture at 16 bits, with values between the 8-bit steps.
    const QString tiff = QFileInfo(jpeg).absolutePath() + QStringLiteral("/big16.tif");
    {
        cv::Mat deep;
        cv::imread(jpeg.toStdString(), cv::IMREAD_COLOR).convertTo(deep, CV_16U, 256.9, 3);
        cv::imwrite(tiff.toStdString(), deep);
    }

    QElapsedTimer clock;
    double written = 0;
    QTimer closer;   // answers the success notice the moment it shows
    closer.setInterval(1);
    QObject::connect(&closer, &QTimer::timeout, [&] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            written = double(clock.nsecsElapsed()) / 1e6;
            box->done(QMessageBox::Yes);
        }
    });
    closer.start();
    auto measure = [&](const QString& photo, const char* format, const char* figure, bool stall) {
        openAndWait(window, photo);
        for (const char* name : {"topPreset1", "midPreset2", "downPreset3"})
            checkPreset(window, name);
        setting st;
        st.savePath = (bench.folder() + "/saved").toLocal8Bit().toStdString();
        st.saveName = "big-graded";
        st.saveFormat = format;
        st.interactive = 1;
        std::vector<double> runs;
        for (int i = 0; i < 5; ++i) {
            window.start_timer_event(st);
            clock.start();
            QSignalSpy ended(&window, &BrisaQT::saveEnded);
            window.timerTimeout();   // what the timer does when it fires
            ended.wait(60000);
            runs.push_back(written);
        }
        printf("%s %.1f ms\n", figure, median(runs));
        if (stall) {
            std::vector<double> stalls;
            for (int i = 0; i < 3; ++i)
                stalls.push_back(maxGuiStallMs(window, st));
            printf("save_24mp_gui_max_stall_ms %.1f ms\n", median(stalls));
        }
        fflush(stdout);
    };
    measure(jpeg, "JPG", "save_24mp_3layers_jpg_ms", true);
    measure(tiff, "TIFF", "save_24mp_3layers_16bit_tiff_ms", false);
    bench.closeWindow();
    return 0;
}

#include "save_bench.moc"
