// The windows a program under test shows on the test's X display, found
// with xdotool.
#pragma once

#include <QElapsedTimer>
#include <QProcess>
#include <QString>
#include <QStringList>

inline QString xdotool(const QStringList& arguments)
{
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), arguments);
    tool.waitForFinished(10000);
    return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
}

inline QStringList visibleWindowsOf(qint64 pid)
{
    return xdotool({"search", "--onlyvisible", "--pid", QString::number(pid)}).split('\n', Qt::SkipEmptyParts);
}

// The process's first visible window once it shows one; empty when it ends
// (or the time passes) first.
inline QString firstWindowOf(QProcess* process, int timeoutMs = 60000)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < timeoutMs && process->state() != QProcess::NotRunning) {
        const QStringList windows = visibleWindowsOf(process->processId());
        if (!windows.isEmpty())
            return windows.first();
        process->waitForFinished(50);
    }
    return QString();
}
