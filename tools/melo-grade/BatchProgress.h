// How a batch tells the user where it is. On a terminal: one bar redrawn in
// place (photos done of total, rate, time left), with every other line written
// to standard error meanwhile (complaints, decoder warnings) printed above it
// rather than across it. Otherwise: one line per photo, in input order.
#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>

class BatchProgress {
public:
    // terminal: draw a bar (standard error is a terminal) rather than lines.
    BatchProgress(size_t total, bool terminal);
    // Ends the bar's line and gives standard error back.
    ~BatchProgress();
    BatchProgress(const BatchProgress&) = delete;
    BatchProgress& operator=(const BatchProgress&) = delete;

    void photoWritten(const std::string& input, const std::string& output);
    // problem is complained about first unless it is empty (already said).
    void photoFailed(const std::string& input, const std::string& problem);

private:
    void finished(const std::string& line, const std::string& problem = {});
    void drawBar();
    void forwardStderr();
    // Whole lines others wrote to standard error, above the bar if any.
    void writeLines(const std::string& lines);
    // To the real standard error.
    void writeStderr(const std::string& text);

    const size_t m_total;
    const bool m_terminal;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    size_t m_done = 0;
    std::mutex m_mutex;  // the terminal and m_done
    int m_stderrFd = -1;  // the real standard error
    int m_pipeFd = -1;      // read end of what standard error now writes to
    std::thread m_forwarder;
};

// "1:05" for 65 seconds, "1:01:05" from an hour on.
std::string clockText(double seconds);
// The bar's text: "melo-grade [#####...] 5 of 12  2.4 photos/s  0:03 left".
std::string progressBarText(size_t done, size_t total, double elapsedSeconds);
