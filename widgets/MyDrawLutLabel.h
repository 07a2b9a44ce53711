#pragma once

#include "MyMousePressLabel.h"

// A label for preset pictures that reports a left press, as
// MyMousePressLabel does (mouseButtonLeftPress()).
class MyDrawLutLabel : public MyMousePressLabel
{
    Q_OBJECT
public:
    using MyMousePressLabel::MyMousePressLabel;
};
