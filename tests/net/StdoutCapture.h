// Captures what the code under test writes to standard output (file
// descriptor 1) between construction and take().
#pragma once

#include <QByteArray>

#include <cstdio>
#include <unistd.h>

class StdoutCapture
{
public:
    StdoutCapture()
    {
        std::fflush(stdout);
        m_saved = dup(STDOUT_FILENO);
        m_file = std::tmpfile();
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
        size_t n;
        while ((n = std::fread(buffer, 1, sizeof buffer, m_file)) > 0)
            text.append(buffer, static_cast<int>(n));
        std::fclose(m_file);
        return text;
    }

private:
    int m_saved = -1;
    std::FILE* m_file = nullptr;
};
