#include "DesktopEntry.h"

#include "GlobalConstants.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

// Exec values are quoted when they hold a blank or a reserved character;
// inside quotes ", `, $ and \ are escaped with a backslash, and the desktop
// file format escapes that backslash once more.
static QString quotedExec(const QString& program)
{
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    bool needsQuotes = false;
    for (const QChar c : program)
        needsQuotes = needsQuotes || reserved.contains(c);
    if (!needsQuotes)
        return program;
    QString quoted;
    for (const QChar c : program) {
        if (c == QLatin1Char('"') || c == QLatin1Char('`') || c == QLatin1Char('$'))
            quoted += QStringLiteral("\\\\");
        else if (c == QLatin1Char('\\'))
            quoted += QStringLiteral("\\\\\\");
        quoted += c;
    }
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QString desktopEntryText(const QString& program)
{
    return QStringLiteral("[Desktop Entry]\n"
                          "Type=Application\n"
                          "Version=1.0\n"
                          "Name=%1\n"
                          "Comment=Photo retouching with colour presets\n"
                          "Comment[zh_CN]=%1客户端\n"
                          "Exec=%2\n"
                          "Icon=%3\n"
                          "Terminal=false\n"
                          "Categories=Graphics;Photography;\n")
        .arg(QString::fromUtf8(kProductName), quotedExec(program), QString::fromUtf8(kDesktopIconName));
}

bool writeDesktopEntry(const QString& file, const QString& program)
{
    if (!QDir().mkpath(QFileInfo(file).absolutePath()))
        return false;
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly))
        return false;
    out.write(desktopEntryText(program).toUtf8());
    return out.commit();
}

QString autostartEntryPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
           + QStringLiteral("/autostart/") + QString::fromUtf8(kDesktopEntryFile);
}
