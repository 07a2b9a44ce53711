#include "EditorBench.h"

#include "GlobalConstants.h"
#include "PresetFolder.h"
#include "Presets.h"
#include "SettingsStore.h"

#include <QAbstractButton>
#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

EditorBench::EditorBench()
{
    m_folderPath = m_folder.path();
    qputenv("TMPDIR", m_folderPath.toLocal8Bit());
    // The preset folder then lies in the bench's own folder too.
    qunsetenv("XDG_RUNTIME_DIR");
    QStandardPaths::setTestModeEnabled(true);
    QString error;
    if (!unpackPresetArchive(QStringLiteral(MELO_PRESET_ARCHIVE), presetUnpackParent(), &error)) {
        fprintf(stderr, "bench: cannot unpack the presets: %s\n", qPrintable(error));
        exit(1);
    }
}

BrisaQT& EditorBench::window()
{
    if (!m_window) {
        QDir().mkpath(m_folderPath + "/saved");
        writeSettingValue(kProductKey, kDownLoadPath, m_folderPath + "/saved");
        qRegisterMetaType<cv::Mat>(kMatMetaTypeName);
        m_window = std::make_unique<BrisaQT>();
        m_window->show();
        if (!QTest::qWaitForWindowExposed(m_window.get()))
            fprintf(stderr, "bench: the window was not exposed\n");
        m_window->clickedRefreshBtn();
    }
    return *m_window;
}

QString EditorBench::photograph(cv::Size size, const QString& name)
{
    const cv::Mat photo = cv::imread(MELO_SAMPLES_DIR "/motorcycle_left.png", cv::IMREAD_COLOR);
    if (photo.empty()) {
        fprintf(stderr, "bench: cannot read the sample photograph\n");
        exit(1);
    }
    cv::Mat big;
    cv::resize(photo, big, size, 0, 0, cv::INTER_CUBIC);
    // Grain, so the picture has the detail of a camera image.
    cv::Mat grain(big.size(), CV_8UC3);
    cv::theRNG().state = 4242;
    cv::randn(grain, cv::Scalar::all(0), cv::Scalar::all(6));
    cv::Mat noisy;
    cv::add(big, grain, noisy);
    const QString dir = m_folderPath + "/风光";
    QDir().mkpath(dir);
    const QString path = dir + "/" + name;
    cv::imwrite(path.toLocal8Bit().constData(), noisy, {cv::IMWRITE_JPEG_QUALITY, 95});
    return path;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0.0 : values[values.size() / 2];
}

double medianMs(int runs, const std::function<void()>& work)
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer clock;
        clock.start();
        work();
        times.push_back(double(clock.nsecsElapsed()) / 1e6);
    }
    return median(times);
}

double openAndWait(BrisaQT& window, const QString& path, double* firstPictureMs, double* maxStallMs)
{
    QElapsedTimer clock;
    double first = -1;
    double end = -1;
    bool opened = false;
    double lastTick = 0;
    double longestGap = 0;
    QTimer tick;
    tick.setTimerType(Qt::PreciseTimer);
    tick.setInterval(10);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        const double now = double(clock.nsecsElapsed()) / 1e6;
        longestGap = std::max(longestGap, now - lastTick);
        lastTick = now;
    });
    const QMetaObject::Connection shown = QObject::connect(&window, &BrisaQT::photographPreviewShown, [&] {
        first = double(clock.nsecsElapsed()) / 1e6;
    });
    const QMetaObject::Connection ended = QObject::connect(&window, &BrisaQT::photographOpenEnded,
                                                           [&](const QString&, bool ok) {
        end = double(clock.nsecsElapsed()) / 1e6;
        opened = ok;
    });
    QSignalSpy spy(&window, &BrisaQT::photographOpenEnded);
    clock.start();
    tick.start();
    window.openAdjustment(path);
    spy.wait(60000);
    tick.stop();
    QObject::disconnect(shown);
    QObject::disconnect(ended);
    if (firstPictureMs)
        *firstPictureMs = first < 0 ? end : first;
    if (maxStallMs)
        *maxStallMs = std::max(longestGap, end - lastTick);
    return opened ? end : -1;
}

void checkPreset(BrisaQT& window, const char* name)
{
    if (auto* button = window.findChild<QAbstractButton*>(QLatin1String(name)))
        button->click();
}

void printConditions(const char* program)
{
    double load[3] = {0, 0, 0};
    if (getloadavg(load, 3) < 0)
        load[0] = -1;
    fprintf(stderr, "%s: %d cores, load average %.2f at start\n", program, QThread::idealThreadCount(), load[0]);
}
