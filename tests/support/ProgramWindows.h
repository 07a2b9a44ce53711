// The program under test run as separate processes on the test's X display,
// and the windows it shows there, found with xdotool.
#pragma once

#include "FileBytes.h"

#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTest>

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

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

// Polls `look` until it holds `inARow` looks running (true), or the time
// passes (false). For looks through xdotool: its search can miss a window
// while another of the program's windows comes or goes, and a QTRY macro,
// which looks once more after its loop, would fail on such a miss.
template <typename Look>
bool holdsWithin(Look look, int timeoutMs, int inARow = 1)
{
    QElapsedTimer clock;
    clock.start();
    int held = 0;
    while (clock.elapsed() < timeoutMs) {
        held = look() ? held + 1 : 0;
        if (held >= inARow)
            return true;
        QTest::qWait(100);
    }
    return false;
}

inline xcb_atom_t internAtom(xcb_connection_t* connection, const char* name)
{
    xcb_intern_atom_reply_t* reply =
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, std::strlen(name), name), nullptr);
    const xcb_atom_t value = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    std::free(reply);
    return value;
}

// The copies a test started, each writing to a log of its own that is shown
// when the test fails. Nothing listens at the default service address: the
// version check finds no service and lets the program start.
class ProgramRuns
{
public:
    explicit ProgramRuns(const QString& logName) : m_logName(logName) {}

    QProcess* start(const QString& program, const QProcessEnvironment& extra = QProcessEnvironment())
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("MELO_SERVICE_HTTPS"), QStringLiteral("https://127.0.0.1:9"));
        env.insert(QStringLiteral("MELO_SERVICE_HTTP"), QStringLiteral("http://127.0.0.1:9"));
        env.insert(extra);
        auto process = std::make_unique<QProcess>();
        process->setProcessEnvironment(env);
        process->setProcessChannelMode(QProcess::MergedChannels);
        process->setStandardOutputFile(logPath(m_processes.size()));
        process->start(program, QStringList());
        m_processes.push_back(std::move(process));
        return m_processes.back().get();
    }

    QProcess* first() const { return m_processes.front().get(); }
    // What the last copy started has written so far.
    QByteArray lastLog() const { return m_processes.empty() ? QByteArray() : fileBytes(logPath(m_processes.size() - 1)); }

    // Ends every copy, asked to quit first when `gently`, else killed.
    void endAll(bool gently)
    {
        for (size_t i = 0; i < m_processes.size(); ++i) {
            if (gently)
                m_processes[i]->terminate();
            if (!gently || !m_processes[i]->waitForFinished(20000))
                m_processes[i]->kill();
            m_processes[i]->waitForFinished(10000);
            if (QTest::currentTestFailed())
                qWarning().noquote() << "program" << i << "said:" << fileBytes(logPath(i));
        }
        m_processes.clear();
    }

private:
    QString logPath(size_t i) const { return QDir::tempPath() + QStringLiteral("/%1-%2.log").arg(m_logName).arg(i); }

    QString m_logName;
    std::vector<std::unique_ptr<QProcess>> m_processes;
};
