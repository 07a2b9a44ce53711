#include "StartupSteps.h"

#include "GlobalConstants.h"
#include "SettingsStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

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

QString tempPresetFolder()
{
    return joinNative(QDir::tempPath(), QString::fromUtf8(kProductName));
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

    auto* process = new QProcess(owner);
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
#ifdef Q_OS_WIN
    // The extractor lives in the install folder; its switches are fixed.
    QStringList parts = QProcess::splitCommand(
        unpackCommandLine(readSettingValue(kProductKey, kInstallLocation), archive, QDir::tempPath()));
    const QString program = parts.takeFirst();
    process->start(program, parts);
#else
    process->start(QStringLiteral("7z"), unpackArguments(archive, QDir::tempPath()));
#endif
    // A missing, failing or slow extractor never stops the start-up.
    if (process->waitForFinished(kUnpackTimeoutMs) || process->state() == QProcess::NotRunning)
        process->deleteLater();

    const QString perUser =
        perUserFolderToDelete(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
    if (!perUser.isEmpty())
        QDir(perUser).removeRecursively();
    return true;
}

void removeTempPresetFolder()
{
    QDir(tempPresetFolder()).removeRecursively();
}
