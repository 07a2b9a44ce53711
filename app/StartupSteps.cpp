#include "StartupSteps.h"

#include "GlobalConstants.h"
#include "PresetFolder.h"
#include "SettingsStore.h"
#include "TerminationSignals.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

#include <cstdio>

QString joinNative(const QString& folder, const QString& name)
{
#ifdef Q_OS_WIN
    return QStringLiteral("%1\\%2").arg(folder, name);
#else
    return QStringLiteral("%1/%2").arg(folder, name);
#endif
}

QString updaterPath(const QString& folder)
{
    return QStringLiteral("%1//%2").arg(folder, QString::fromUtf8(kUpdaterName));
}

QString presetArchivePath(const QString& installLocation)
{
    return joinNative(installLocation, QString::fromUtf8(kPresetArchiveName));
}

namespace {
const char kExtractorName[] = "presetExtractor";
// How often a running extractor is checked for the time limit and signals.
constexpr int kUnpackPollMs = 100;
} // namespace

QString tempPresetFolder()
{
    return presetLibraryFolder();
}

QString perUserFolderToDelete(const QString& appDataLocation)
{
    const int cut = appDataLocation.lastIndexOf(QLatin1Char('/'));
    if (cut <= 0)
        return QString();
    return joinNative(appDataLocation.left(cut), QString::fromUtf8(kProductName));
}

QString unpackCommandLine(const QString& installLocation, const QString& archive,
                          const QString& targetFolder)
{
    return QString::fromUtf8(kUnpackCommandFormat)
        .arg(installLocation, QString::fromUtf8(kPresetArchivePassword), archive, targetFolder);
}

QStringList unpackArguments(const QString& archive, const QString& targetFolder)
{
    return {QStringLiteral("x"), QStringLiteral("-y"),
            QStringLiteral("-p") + QString::fromUtf8(kPresetArchivePassword), archive,
            QStringLiteral("-o") + targetFolder};
}

bool startUpdater()
{
    QString folder = readSettingValue(kProductKey, kInstallLocation);
    if (folder.isEmpty())
        folder = QCoreApplication::applicationDirPath();
    return QProcess::startDetached(updaterPath(folder), QStringList());
}

bool unpackPresetLibrary(QObject* owner)
{
    const QString archive = presetArchivePath(readSettingValue(kProductKey, kInstallLocation));
    if (!QFile::exists(archive))
        return false;

    const QString parent = presetUnpackParent();
    if (!isOwnRealFolder(tempPresetFolder(), true)) {
        std::printf("preset folder refused: %s\n", qPrintable(tempPresetFolder()));
        std::fflush(stdout);
    } else {
        auto* process = new QProcess(owner);
        process->setObjectName(QString::fromLatin1(kExtractorName));
        process->setStandardOutputFile(QProcess::nullDevice());
        process->setStandardErrorFile(QProcess::nullDevice());
#ifdef Q_OS_WIN
        // The extractor lives in the install folder; its switches are fixed.
        QStringList parts = QProcess::splitCommand(
            unpackCommandLine(readSettingValue(kProductKey, kInstallLocation), archive, parent));
        const QString program = parts.takeFirst();
        process->start(program, parts);
#else
        process->start(QStringLiteral("7z"), unpackArguments(archive, parent));
#endif
        // A missing, failing or slow extractor never stops the start-up, and
        // neither does it keep a termination signal waiting.
        QElapsedTimer clock;
        clock.start();
        while (process->state() != QProcess::NotRunning && clock.elapsed() < kUnpackTimeoutMs
               && !TerminationSignalWatcher::requested())
            process->waitForFinished(kUnpackPollMs);
        if (process->state() == QProcess::NotRunning)
            process->deleteLater();
    }

#ifdef Q_OS_WIN
    const QString perUser =
        perUserFolderToDelete(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
    if (!perUser.isEmpty())
        QDir(perUser).removeRecursively();
#endif
    return true;
}

void stopPresetExtractor(QObject* owner)
{
    auto* process = owner ? owner->findChild<QProcess*>(QString::fromLatin1(kExtractorName)) : nullptr;
    if (!process || process->state() == QProcess::NotRunning)
        return;
    process->kill();
    process->waitForFinished(5000);
}

void removeTempPresetFolder()
{
    const QString folder = tempPresetFolder();
    // removeRecursively would empty the folder a link points to.
    if (isOwnRealFolder(folder, false))
        QDir(folder).removeRecursively();
}
