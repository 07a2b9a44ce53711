#include "ShowMat.h"

#include "FitRule.h"

#include <QLabel>

bool showMatOnLabel(QLabel* label, const cv::Mat& mat)
{
    if (!label)
        return false;
    const QPixmap pixmap = fittedPixmap(mat, label->frameGeometry().size());
    if (pixmap.isNull())
        return false;
    label->setPixmap(pixmap);
    label->setAlignment(Qt::AlignCenter);
    return true;
}
