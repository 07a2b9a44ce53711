#include "MyMousePressLabel.h"

#include <QMouseEvent>

bool MyMousePressLabel::event(QEvent* e)
{
    if (e->type() == QEvent::MouseButtonPress
        && static_cast<QMouseEvent*>(e)->button() == Qt::LeftButton) {
        emit mouseButtonLeftPress();
        return true;
    }
    return QLabel::event(e);
}
