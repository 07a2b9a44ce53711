#include "MySpinBox.h"

MySpinBox::MySpinBox(QWidget* parent) : QSpinBox(parent)
{
    connect(this, QOverload<int>::of(&QSpinBox::valueChanged), this, &MySpinBox::onSpinBoxValueChanged);
}

void MySpinBox::onSpinBoxValueChanged(int /*count*/)
{
    emit spinBoxValueChanged(this);
}
