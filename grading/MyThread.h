// A worker object that blends graded layer images on a thread of its own and
// sends each result back. The editor grades on the GUI thread; the main
// window creates and wires this worker but no path of the program starts it.
#pragma once

#include <QMetaType>
#include <QObject>

#include <opencv2/core.hpp>

// Images travel between threads in queued signals (registered as "cv::Mat").
Q_DECLARE_METATYPE(cv::Mat)

class MyThread : public QObject
{
    Q_OBJECT
public:
    static constexpr int kLayerCount = 8;

    explicit MyThread(QObject* parent = nullptr);

    // Registers the argument types the queued connections carry
    // ("cv::Mat", "char*"); called by the constructor, safe to repeat.
    static void registerArgumentTypes();

signals:
    void send_Thread_msg(cv::Mat msg);

public slots:
    // Blends layer `num` (0..7): the image in the file szTempFile is laid
    // over the base at value / 100 (the previous layer's result, or `mat`
    // for layer 0), stored as that layer's result and sent. Dropped with a
    // line on standard output when stopped, when num is outside 0..7, when
    // the file cannot be read, or when the base is empty or does not match
    // the file's image in size and type.
    void startThreadSlot(cv::Mat mat, char* szTempFile, int value, int num);
    void Stop();
    void Start();

private:
    bool m_stopped = false;
    cv::Mat m_layerMats[kLayerCount];
};
