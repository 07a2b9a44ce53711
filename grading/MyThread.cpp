#include "MyThread.h"

#include "GlobalConstants.h"
#include "ImageCodecs.h"
#include "LayerGrading.h"

#include <QMetaType>

#include <opencv2/imgcodecs.hpp>

#include <cstdio>

namespace {

void dropWork(int num, const char* why)
{
    printf("worker: layer %d dropped, %s\n", num, why);
    fflush(stdout);
}

} // namespace

MyThread::MyThread(QObject* parent) : QObject(parent)
{
    registerArgumentTypes();
}

void MyThread::registerArgumentTypes()
{
    qRegisterMetaType<cv::Mat>(kMatMetaTypeName);
    qRegisterMetaType<char*>("char*");
}

void MyThread::startThreadSlot(cv::Mat mat, char* szTempFile, int value, int num)
{
    if (m_stopped)
        return;
    if (num < 0 || num >= kLayerCount) {
        dropWork(num, "no such layer");
        return;
    }
    const cv::Mat layer = szTempFile ? ImageCodecs::read(szTempFile, cv::IMREAD_UNCHANGED) : cv::Mat();
    if (layer.empty()) {
        dropWork(num, "the graded image cannot be read");
        return;
    }
    const cv::Mat& base = num == 0 ? mat : m_layerMats[num - 1];
    if (base.empty()) {
        dropWork(num, "nothing to blend over");
        return;
    }
    if (base.size() != layer.size() || base.type() != layer.type()) {
        dropWork(num, "the graded image does not match the base");
        return;
    }
    m_layerMats[num] = blendLayer(base, layer, value);
    emit send_Thread_msg(m_layerMats[num]);
}

void MyThread::Stop() { m_stopped = true; }
void MyThread::Start() { m_stopped = false; }
