// What the editor and save benchmarks share: a private temporary folder with
// the preset library unpacked by the program's own routine, isolated
// settings with a download folder, photographs of a given size, the main
// window in its editor view, and medians of repeated timings.
#pragma once

#include "BrisaQT.h"

#include <QString>
#include <QTemporaryDir>

#include <opencv2/core.hpp>

#include <functional>
#include <memory>
#include <vector>

class EditorBench
{
public:
    // Call before the application object exists: points the temporary
    // folder at a private one and unpacks the presets there. Exits on failure.
    EditorBench();

    // Opens the editor view of a new main window (after the application
    // object exists).
    BrisaQT& window();
    // Closes the window; call before the application object goes.
    void closeWindow() { m_window.reset(); }
    // A sample photograph upscaled to size with grain added, written as JPEG
    // (quality 95) into a folder whose name selects the scene "风光" (4).
    QString photograph(cv::Size size, const QString& name);
    const QString& folder() const { return m_folderPath; }

private:
    QTemporaryDir m_folder;
    QString m_folderPath;
    std::unique_ptr<BrisaQT> m_window;
};

double median(std::vector<double> values);
double medianMs(int runs, const std::function<void()>& work);
// Opens a photograph as the gallery hands it over and waits until the
// background open has ended; returns the milliseconds to that end, and in
// `firstPictureMs` those to the first picture shown (the quick preview, or
// the photograph itself when it has none), and in `maxStallMs` the longest
// gap between two ticks of a 10 ms GUI timer meanwhile. Negative when it
// failed.
double openAndWait(BrisaQT& window, const QString& path, double* firstPictureMs = nullptr,
                   double* maxStallMs = nullptr);
// Clicks a preset button of the window by its object name.
void checkPreset(BrisaQT& window, const char* name);
// Describes the run's conditions on standard error (load, cores).
void printConditions(const char* program);
