#include "BatchProgress.h"

#include "GradeTool.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>

namespace {

const int kBarWidth = 24;

}  // namespace

std::string clockText(double seconds)
{
    const long whole = seconds > 0 ? long(seconds + 0.5) : 0;
    char text[32];
    if (whole >= 3600)
        snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
    else
        snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
    return text;
}

std::string progressBarText(size_t done, size_t total, double elapsedSeconds)
{
    const size_t filled = total ? done * kBarWidth / total : kBarWidth;
    std::string text = "melo-grade [" + std::string(filled, '#') + std::string(kBarWidth - filled, '.') + "] " +
                       std::to_string(done) + " of " + std::to_string(total);
    if (done == 0 || elapsedSeconds <= 0)
        return text + "  --:-- left";
    const double perSecond = done / elapsedSeconds;
    char rate[48];
    if (perSecond >= 1)
        snprintf(rate, sizeof rate, "  %.1f photos/s  ", perSecond);
    else
        snprintf(rate, sizeof rate, "  %.1f photos/min  ", perSecond * 60);
    return text + rate + clockText((total - done) / perSecond) + " left";
}

BatchProgress::BatchProgress(size_t total, bool terminal) : m_total(total), m_terminal(terminal)
{
    // Standard error goes through a pipe for the run and comes out whole lines
    // at a time, so that a line anyone writes there (a complaint from a
    // worker, a decoder's warning in two pieces) is printed over the bar,
    // which is then redrawn below it, and never inside another line.
    int ends[2];
    fflush(stderr);
    const int stderrFd = dup(STDERR_FILENO);
    if (stderrFd >= 0 && pipe(ends) == 0) {
        if (dup2(ends[1], STDERR_FILENO) >= 0) {
            m_stderrFd = stderrFd;
            m_pipeFd = ends[0];
            m_forwarder = std::thread([this] { forwardStderr(); });
        } else {
            close(ends[0]);
        }
        close(ends[1]);
    }
    if (m_stderrFd < 0 && stderrFd >= 0)
        close(stderrFd);
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_terminal)
        drawBar();
}

BatchProgress::~BatchProgress()
{
    if (m_forwarder.joinable()) {
        fflush(stderr);
        dup2(m_stderrFd, STDERR_FILENO);  // closes the pipe's last write end
        m_forwarder.join();
        close(m_pipeFd);
    }
    if (m_terminal)
        writeStderr("\n");
    if (m_stderrFd >= 0)
        close(m_stderrFd);
}

void BatchProgress::photoWritten(const std::string& input, const std::string& output)
{
    finished(input + " -> " + output);
}

void BatchProgress::photoFailed(const std::string& input, const std::string& problem)
{
    finished(input + " failed", problem);
}

void BatchProgress::finished(const std::string& line, const std::string& problem)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    ++m_done;
    // The problem is written here rather than complained about, so that it
    // comes before the photo's own line.
    const std::string said = problem.empty() ? std::string() : "melo-grade: " + problem + "\n";
    if (!m_terminal)
        writeStderr(said + "melo-grade: " + std::to_string(m_done) + " of " + std::to_string(m_total) + " " + line +
                    "\n");
    else if (!said.empty())
        writeLines(said);  // redraws the bar
    else
        drawBar();
}

void BatchProgress::drawBar()
{
    const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    writeStderr("\r\033[K" + progressBarText(m_done, m_total, elapsed));
}

void BatchProgress::writeStderr(const std::string& text)
{
    const int fd = m_stderrFd >= 0 ? m_stderrFd : STDERR_FILENO;
    for (size_t written = 0; written < text.size();) {
        const ssize_t n = write(fd, text.data() + written, text.size() - written);
        if (n <= 0)
            return;
        written += size_t(n);
    }
}

void BatchProgress::writeLines(const std::string& lines)
{
    if (!m_terminal)
        return writeStderr(lines);
    writeStderr("\r\033[K" + lines);
    drawBar();
}

void BatchProgress::forwardStderr()
{
    std::string pending;
    char buffer[4096];
    for (;;) {
        const ssize_t n = read(m_pipeFd, buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        pending.append(buffer, size_t(n));
        const size_t end = pending.rfind('\n');
        if (end == std::string::npos)
            continue;
        std::lock_guard<std::mutex> lock(m_mutex);
        writeLines(pending.substr(0, end + 1));
        pending.erase(0, end + 1);
    }
    if (!pending.empty()) {
        std::lock_guard<std::mutex> lock(m_mutex);
        writeLines(pending + "\n");
    }
}
