#include "MySlider.h"

#include "NoticeBox.h"

#include <QMouseEvent>

namespace {
const char kChoosePresetFirst[] = "要先选择上部效果，才能滑动！";
}

MySlider::MySlider(QWidget* parent) : MySlider(Qt::Horizontal, parent) {}

MySlider::MySlider(Qt::Orientation orientation, QWidget* parent) : QSlider(orientation, parent)
{
    connect(this, &QSlider::valueChanged, this, &MySlider::onSliderValueChanged);
}

int MySlider::valueAt(int x, int width, int minimum, int maximum)
{
    if (width <= 0)
        return minimum;
    return int(minimum + double(maximum - minimum) * (double(x) / double(width)));
}

void MySlider::onSliderValueChanged(int /*count*/)
{
    emit sliderValueChanged(this);
}

bool MySlider::event(QEvent* e)
{
    // A disabled slider never sees its press handler; the notice explains why.
    if (e->type() == QEvent::MouseButtonPress && !isEnabled())
        showNotice(QString::fromUtf8(kChoosePresetFirst));
    else if (e->type() == QEvent::MouseButtonDblClick && isEnabled())
        emit sliderDblClickResetImage();
    return QSlider::event(e);
}

void MySlider::jumpTo(int x)
{
    const int v = valueAt(x, width(), minimum(), maximum());
    if (v != value())
        setValue(v);
}

void MySlider::mousePressEvent(QMouseEvent* e)
{
    jumpTo(e->pos().x());
    QSlider::mousePressEvent(e);
}

void MySlider::mouseMoveEvent(QMouseEvent* e)
{
    if (e->buttons() != Qt::NoButton)
        jumpTo(e->pos().x());
    QSlider::mouseMoveEvent(e);
}
