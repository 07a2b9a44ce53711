#pragma once

#include <QString>

// The crop frame pictures (cropBj.png for free cropping, cropBj_ratio.png for
// a locked ratio) are nine-slice images: their corner brackets sit in the
// outer 20 pixels, the edges between them stretch along their length and the
// transparent middle with the rule-of-thirds lines stretches both ways. Use
// them as a border image with this slice so a frame of any size keeps its
// corners crisp.
constexpr int kCropFrameSlice = 20;

// Style sheet for the label that shows the crop frame; picture is a resource
// path such as ":/BrisaQT/Resources/cropBj.png".
inline QString cropFrameStyleSheet(const QString &picture)
{
    return QStringLiteral("QLabel{border-image:url(%1) %2 %2 %2 %2 stretch stretch;"
                          "border-width:%2px;background:transparent;}")
        .arg(picture)
        .arg(kCropFrameSlice);
}
