// Captures what the code under test writes to standard output (file
// descriptor 1, so C stdio and iostreams alike) between construction and take().
#pragma once

#include <QByteArray>

#include <cstdio>
#include <functional>
#include <unistd.h>

class StdoutCapture
{
public:
    StdoutCapture() : m_saved(dup(STDOUT_FILENO)), m_file(std::tmpfile())
    {
        std::fflush(stdout);
        dup2(fileno(m_file), STDOUT_FILENO);
    }
    ~StdoutCapture() { take(); }

    QByteArray take()
    {
        QByteArray text;
        if (m_saved < 0)
            return text;
        std::fflush(stdout);
        dup2(m_saved, STDOUT_FILENO);
        close(m_saved);
        m_saved = -1;
        std::rewind(m_file);
        char buffer[4096];
        for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, m_file)) > 0;)
            text.append(buffer, static_cast<int>(n));
        std::fclose(m_file);
        return text;
    }

private:
    int m_saved;
    std::FILE* m_file;
};

// Everything work printed on standard output.
inline QByteArray captureStdout(const std::function<void()>& work)
{
    StdoutCapture capture;
    work();
    return capture.take();
}
