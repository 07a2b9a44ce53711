// The look of the eye button of the before/after compare, for either state
// of the view: the graded picture shown, or the unedited one over it.
#pragma once

#include <QString>

class QAbstractButton;

struct CompareLook {
    QString toolTip;
    // Background pictures under ":/BrisaQT/Resources/".
    QString normal;
    QString hover;
    QString checked;
};

CompareLook compareLook(bool originalShown);
// The button's style sheet for a look: the pictures as background images on
// a transparent background without border.
QString compareStyleSheet(const CompareLook& look);
// Gives the eye button the tool tip and pictures of the state.
void applyCompareLook(QAbstractButton* eyeButton, bool originalShown);
