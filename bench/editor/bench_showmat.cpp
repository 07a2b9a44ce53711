// Time to convert a preview matrix and set it on a label by the fit rule.
// Prints "<name> <value> <unit>" lines.
#include "ShowMat.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>

#include <cstdio>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

static double millisPerShow(QLabel& label, const cv::Mat& mat, int rounds)
{
    showMatOnLabel(&label, mat);   // warm-up
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < rounds; ++i)
        showMatOnLabel(&label, mat);
    return double(clock.nsecsElapsed()) / 1e6 / rounds;
}

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    cv::Mat photo = cv::imread(MELO_SAMPLES_DIR "/motorcycle_left.png", cv::IMREAD_COLOR);
    if (photo.empty())
        photo = cv::Mat(900, 1200, CV_8UC3, cv::Scalar(40, 90, 160));
    cv::Mat preview;
    cv::resize(photo, preview, cv::Size(1200, 900), 0, 0, cv::INTER_AREA);
    cv::Mat grey;
    cv::cvtColor(preview, grey, cv::COLOR_BGR2GRAY);

    QLabel maximised;
    maximised.resize(1545, 990);
    QLabel normal;
    normal.resize(1065, 718);
    const int rounds = 200;
    std::printf("showmat_1200x900_bgr_maximised %.3f ms\n", millisPerShow(maximised, preview, rounds));
    std::printf("showmat_1200x900_grey_maximised %.3f ms\n", millisPerShow(maximised, grey, rounds));
    std::printf("showmat_1200x900_bgr_normal_shrunk %.3f ms\n", millisPerShow(normal, preview, 50));
    return 0;
}
