#include "CompareLook.h"

#include <QAbstractButton>

CompareLook compareLook(bool originalShown)
{
    if (originalShown) {
        return {QString::fromUtf8("修图效果"), QStringLiteral("contrast_eye_normal_yellow.png"),
                QStringLiteral("contrast_eye_normal.png"), QStringLiteral("contrast_eye_normal_yellow.png")};
    }
    return {QString::fromUtf8("查看原图"), QStringLiteral("contrast_eye_hover.png"),
            QStringLiteral("contrast_eye_normal.png"), QStringLiteral("contrast_eye_hover.png")};
}

QString compareStyleSheet(const CompareLook& look)
{
    const QString rule = QStringLiteral(
        "QPushButton%1{background-image:url(:/BrisaQT/Resources/%2);"
        "background-color:transparent;border:none;}");
    return rule.arg(QString(), look.normal) + rule.arg(QStringLiteral(":hover"), look.hover)
        + rule.arg(QStringLiteral(":checked"), look.checked);
}

void applyCompareLook(QAbstractButton* eyeButton, bool originalShown)
{
    if (!eyeButton)
        return;
    const CompareLook look = compareLook(originalShown);
    eyeButton->setToolTip(look.toolTip);
    eyeButton->setStyleSheet(compareStyleSheet(look));
}
