#pragma once

#include <QLabel>

// A label that reports a left-button press; the press is consumed.
class MyMousePressLabel : public QLabel
{
    Q_OBJECT
public:
    using QLabel::QLabel;

signals:
    void mouseButtonLeftPress();

protected:
    bool event(QEvent* e) override;
};
