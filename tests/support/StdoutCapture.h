// Captures what work writes to standard output (file descriptor 1, so C
// stdio and iostreams alike).
#pragma once

#include <QByteArray>

#include <cstdio>
#include <functional>
#include <unistd.h>

inline QByteArray captureStdout(const std::function<void()>& work)
{
    std::fflush(stdout);
    const int saved = dup(STDOUT_FILENO);
    std::FILE* file = std::tmpfile();
    dup2(fileno(file), STDOUT_FILENO);
    work();
    std::fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    std::rewind(file);
    QByteArray text;
    char buffer[4096];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, file)) > 0;)
        text.append(buffer, static_cast<int>(n));
    std::fclose(file);
    return text;
}
