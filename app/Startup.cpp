#include "Startup.h"

#include "BrisaQT.h"
#include "BringForward.h"
#include "ComApartment.h"
#include "GlobalConstants.h"
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

int meloMain(int argc, char* argv[])
{
    QCoreApplication::setAttribute(Qt::AA_UseDesktopOpenGL);
    // The web views need shared GL contexts, set before the application exists.
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QApplication app(argc, argv);
    installQtTranslation(&app);
    qRegisterMetaType<cv::Mat>(kMatMetaTypeName);
    initComForGuiThread();

    SingleInstanceGuard instance;
    if (instance.anotherInstanceRunning()) {
        instance.askRunningCopyToShow();
        return 1;
    }

    if (checkClientVersion()) {
        startUpdater();
        QApplication::closeAllWindows();
        return 0;
    }

    applyApplicationFont();
    QApplication::setWindowIcon(QIcon(QString::fromUtf8(kAppIconPath)));
    QWebEngineProfile::defaultProfile()->setUseForGlobalCertificateVerification();

    unpackPresetLibrary(&app);

    auto window = std::make_unique<BrisaQT>();
    window->setWindowTitle(QString::fromUtf8(kMainWindowTitle));
    window->setWindowIcon(QIcon(QString::fromUtf8(kAppIconPath)));
    window->show();
    instance.listenForShowRequests([w = window.get()] { bringWindowForward(w); });

    TerminationSignalWatcher quitOnSignal;
    const int result = app.exec();

    // The unpacked presets never outlive the run, whatever was added to them.
    removeTempPresetFolder();
    curl_global_cleanup();
    window.reset();
    return result;
}
