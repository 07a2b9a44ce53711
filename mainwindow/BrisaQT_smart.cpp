// The smart recommendation: drawing a pick, its strength slider and stepping
// through the history of picks (SmartDraw holds the pick and the history).
#include "BrisaQT.h"

#include "DocumentGrading.h"
#include "GradingPanel.h"
#include "MySlider.h"

#include <QMessageBox>

void BrisaQT::applyRandom(bool full, bool replay, int strength)
{
    if (!full && !replay)
        m_smartDraw.draw();
    const RandomPick& pick = m_smartDraw.pick();
    // The preset buttons, the combo box and the document's scene stay as
    // they are: the pick carries its own scene.
    if (gradeDocument(m_document, pick.scene, pick.selection(strength), full, &m_previewGrades) && !full)
        showMat(m_document.m_dstMat);
}

void BrisaQT::on_randButtonEvent()
{
    if (m_gradingPanel->anyPresetChecked())
        resetImage();
    applyRandom(false, false, GradingPanel::kSmartStrength);
    // When the slider moves, its slot applies the pick once more at 50.
    m_gradingPanel->randSlider()->setValue(GradingPanel::kSmartStrength);
}

void BrisaQT::onRight_rand_sliderValueChanged(int value)
{
    applyRandom(false, true, value);
}

void BrisaQT::resetRandImage()
{
    resetImage();
}

// Stepping applies the pick at 50 whatever the smart slider shows. True when
// there was no record in that direction (the user has been told).
bool BrisaQT::showSmartStep(SmartDraw::Step step, const QString& endText)
{
    if (step == SmartDraw::Step::Moved)
        applyRandom(false, true, GradingPanel::kSmartStrength);
    if (step != SmartDraw::Step::AtEnd)
        return false;
    QMessageBox::information(nullptr, QStringLiteral("提示"), endText, QMessageBox::Ok);
    return true;
}

void BrisaQT::resetDownRandImage()
{
    showSmartStep(m_smartDraw.stepForward(), QStringLiteral("没有更多的智能推荐历史了，可以尝试点击智能推荐！"));
}

void BrisaQT::resetUpRandImage()
{
    if (showSmartStep(m_smartDraw.stepBack(), QStringLiteral("没有更多的智能推荐历史了，点击确定会变成原图")))
        resetImage();
}
