#include "Startup.h"

#include "BrisaQT.h"
#include "BringForward.h"
#include "ComApartment.h"
#include "DownloadPool.h"
#include "GlobalConstants.h"
#include "Network.h"
#include "QtTranslation.h"
#include "SingleInstance.h"
#include "StartupSteps.h"
#include "TerminationSignals.h"
#include "VersionCheck.h"

#include <QApplication>
#include <QFont>
#include <QIcon>
#include <QWebEngineProfile>

#include <curl/curl.h>
#include <cstdio>
#include <opencv2/core.hpp>

#include <memory>

static void applyApplicationFont()
{
    const QString family = QString::fromUtf8(kAppFontFamily);
#ifndef Q_OS_WIN
    // The family is a Windows font; a CJK font of the system stands in for it
    // so every Chinese text renders.
    QFont::insertSubstitution(family, QStringLiteral("WenQuanYi Micro Hei"));
#endif
    QFont font = QApplication::font();
    font.setFamily(family);
    QApplication::setFont(font);
}

// How long the way out waits for downloads to end once they were aborted; an
// aborted transfer notices within about a second.
constexpr int kDownloadStopWaitMs = 5000;

// Every way out: the extractor first, so nothing writes into the preset
// folder after it is gone, then the folder, then the downloads, and libcurl
// only once no transfer uses it any more.
static void cleanUp(QObject* extractorOwner)
{
    stopPresetExtractor(extractorOwner);
    // The unpacked presets never outlive the run, whatever was added to them.
    removeTempPresetFolder();
    if (stopDownloads(kDownloadStopWaitMs)) {
        curl_global_cleanup();
    } else {
        // Cleaning up under a running transfer is forbidden; the process ends
        // anyway.
        std::printf("downloads still running at exit\n");
        std::fflush(stdout);
    }
}

int meloMain(int argc, char* argv[])
{
    QCoreApplication::setAttribute(Qt::AA_UseDesktopOpenGL);
    // The web views need shared GL contexts, set before the application exists.
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    installQtTranslation(&app);
    // From here on a termination signal ends the program through its
    // clean-up, also while the version check waits for its answer or the
    // presets are being unpacked.
    TerminationSignalWatcher quitOnSignal(&Network::abortTransfers);
    qRegisterMetaType<cv::Mat>(kMatMetaTypeName);
    initComForGuiThread();

    SingleInstanceGuard instance;
    if (instance.anotherInstanceRunning()) {
        instance.askRunningCopyToShow();
        return 1;
    }

    const bool updateNeeded = checkClientVersion();
    if (TerminationSignalWatcher::requested()) {
        cleanUp(&app);
        return 0;
    }
    if (updateNeeded) {
        startUpdater();
        QApplication::closeAllWindows();
        return 0;
    }

    applyApplicationFont();
    QApplication::setWindowIcon(QIcon(QString::fromUtf8(kAppIconPath)));
    QWebEngineProfile::defaultProfile()->setUseForGlobalCertificateVerification();

    unpackPresetLibrary(&app);
    if (TerminationSignalWatcher::requested()) {
        cleanUp(&app);
        return 0;
    }

    // Notices and download dialogs are windows too: with the main window
    // hidden in the tray, closing one must not end the program. The main
    // window's own close ends it (BrisaQT::closeEvent).
    app.setQuitOnLastWindowClosed(false);
    auto window = std::make_unique<BrisaQT>();
    window->setWindowTitle(QString::fromUtf8(kMainWindowTitle));
    window->setWindowIcon(QIcon(QString::fromUtf8(kAppIconPath)));
    window->show();
    instance.listenForShowRequests([w = window.get()] { bringWindowForward(w); });

    // A signal that came while the window was built has not quit anything yet.
    const int result = TerminationSignalWatcher::requested() ? 0 : app.exec();

    cleanUp(&app);
    window.reset();
    return result;
}
