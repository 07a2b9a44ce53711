#pragma once

#include <QSpinBox>

// A spin box that reports itself with every value change.
class MySpinBox : public QSpinBox
{
    Q_OBJECT
public:
    explicit MySpinBox(QWidget* parent = nullptr);

signals:
    void spinBoxValueChanged(QSpinBox* spinBox);

public slots:
    // Re-emits a value change as spinBoxValueChanged(this); connected to
    // valueChanged(int).
    void onSpinBoxValueChanged(int count);
};
