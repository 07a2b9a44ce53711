#include "PresetFolder.h"

#include "GlobalConstants.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#ifndef Q_OS_WIN
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// lstat, so a link is seen as a link and never followed.
bool ownFolderOnlyWeEnter(const QString& path)
{
    struct stat st = {};
    if (::lstat(QFile::encodeName(path).constData(), &st) != 0)
        return false;
    return S_ISDIR(st.st_mode) && st.st_uid == ::geteuid() && (st.st_mode & 077) == 0;
}

} // namespace
#endif

bool isOwnRealFolder(const QString& path, bool allowAbsent)
{
    if (path.isEmpty())
        return false;
#ifdef Q_OS_WIN
    const QFileInfo info(path);
    return info.exists() ? info.isDir() && !info.isSymLink() : allowAbsent;
#else
    struct stat st = {};
    if (::lstat(QFile::encodeName(path).constData(), &st) != 0)
        return allowAbsent && errno == ENOENT;
    return S_ISDIR(st.st_mode) && st.st_uid == ::geteuid();
#endif
}

QString presetUnpackParent()
{
#ifdef Q_OS_WIN
    return QDir::tempPath();
#else
    const QString runtime = QFile::decodeName(qgetenv("XDG_RUNTIME_DIR"));
    if (runtime.startsWith(QLatin1Char('/')) && ownFolderOnlyWeEnter(runtime))
        return runtime;
    const QString own = QDir::tempPath() + QStringLiteral("/melo-") + QString::number(::geteuid());
    // mkdir does not follow a link planted under the name; the check below
    // refuses it and anything else not made by us for us.
    if (::mkdir(QFile::encodeName(own).constData(), 0700) != 0 && errno != EEXIST)
        return QString();
    return ownFolderOnlyWeEnter(own) ? own : QString();
#endif
}

QString presetLibraryFolder()
{
    const QString parent = presetUnpackParent();
    if (parent.isEmpty())
        return QString();
#ifdef Q_OS_WIN
    return QStringLiteral("%1\\%2").arg(parent, QString::fromUtf8(kProductName));
#else
    return QStringLiteral("%1/%2").arg(parent, QString::fromUtf8(kProductName));
#endif
}
