#include "Presets.h"

#include "GlobalConstants.h"
#include "PresetFolder.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

QString presetRoot()
{
#ifdef Q_OS_WIN
    return QStringLiteral("%1\\%2").arg(QDir::tempPath(), QString::fromLatin1(kProductName));
#else
    // Per user, where start-up unpacks it.
    return presetLibraryFolder();
#endif
}

QString presetFilePath(int scene, int fileNumber)
{
#ifdef Q_OS_WIN
    return QStringLiteral("%1\\%2\\%3\\%4.CUBE")
        .arg(QDir::tempPath(), QString::fromLatin1(kProductName), QString::number(scene),
             QString::number(fileNumber));
#else
    return presetFilePath(presetRoot(), scene, fileNumber);
#endif
}

QString presetFilePath(const QString& root, int scene, int fileNumber)
{
#ifdef Q_OS_WIN
    return QStringLiteral("%1\\%2\\%3.CUBE").arg(root, QString::number(scene), QString::number(fileNumber));
#else
    return QStringLiteral("%1/%2/%3.CUBE").arg(root, QString::number(scene), QString::number(fileNumber));
#endif
}

bool unpackPresetArchive(const QString& archive, const QString& targetFolder, QString* error, int timeoutMs)
{
    auto fail = [error](const QString& why) {
        if (error)
            *error = why;
        return false;
    };
    if (!QFileInfo(archive).isFile())
        return fail(QStringLiteral("no preset archive at %1").arg(archive));
    const QString tool = QStandardPaths::findExecutable(QStringLiteral("7z"));
    if (tool.isEmpty())
        return fail(QStringLiteral("the 7z program was not found"));
    if (!QDir().mkpath(targetFolder))
        return fail(QStringLiteral("cannot create %1").arg(targetFolder));

    QProcess unpack;
    unpack.setProcessChannelMode(QProcess::MergedChannels);
    unpack.start(tool, {QStringLiteral("x"), QStringLiteral("-y"), QStringLiteral("-bd"),
                        QStringLiteral("-p") + QString::fromLatin1(kPresetArchivePassword),
                        QStringLiteral("-o") + targetFolder, archive});
    if (!unpack.waitForStarted(timeoutMs))
        return fail(QStringLiteral("7z did not start"));
    if (!unpack.waitForFinished(timeoutMs)) {
        unpack.kill();
        unpack.waitForFinished();
        return fail(QStringLiteral("7z did not finish within %1 ms").arg(timeoutMs));
    }
    if (unpack.exitStatus() != QProcess::NormalExit || unpack.exitCode() != 0)
        return fail(QStringLiteral("7z failed: %1").arg(QString::fromLocal8Bit(unpack.readAll()).trimmed()));
    return true;
}
