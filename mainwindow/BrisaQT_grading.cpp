// Grading with the preset layers: the three groups, their strength sliders
// and spin boxes, the resets and the scene switch. The grading itself is the
// engine's (gradeLayers); these slots only read the panel and show results.
#include "BrisaQT.h"

#include "DocumentGrading.h"
#include "GradingPanel.h"
#include "MyDrawLabel.h"
#include "MySlider.h"
#include "MySpinBox.h"
#include "NoticeBox.h"

#include <QComboBox>

void BrisaQT::applyLayers(bool full)
{
    const int scene = m_document.m_sceneIndex;
    if (scene >= 0 && gradeDocument(m_document, scene, m_gradingPanel->selection(), full, &m_previewGrades)) {
        if (!full)
            showMat(m_document.m_dstMat);
        return;
    }
    // Nothing graded: the unedited preview is the picture.
    if (!m_document.m_showMat.empty()) {
        m_document.m_dstMat = m_document.m_showMat;
        showMat(m_document.m_showMat);
    }
}

void BrisaQT::refreshPresetThumbnails()
{
    if (m_document.m_dstMat.empty() || m_document.m_sceneIndex < 0)
        return;
    for (const PresetThumbnail& face : presetThumbnails(m_document.m_thumbMat, m_document.m_sceneIndex,
                                                                  presetRoot(), m_document.m_display.get()))
        m_gradingPanel->setPresetFace(face.layer, face.id, QPixmap::fromImage(face.image), face.caption);
}

// ---- Preset groups, strengths, resets ----------------------------------------

void BrisaQT::on_changeButtonGroup(int) { changeLayerGroup(PresetLayer::Top); }
void BrisaQT::on_changeButtonMidGroup(int) { changeLayerGroup(PresetLayer::Mid); }
void BrisaQT::on_changeButtonDownGroup(int) { changeLayerGroup(PresetLayer::Down); }
void BrisaQT::onRight_top_sliderValueChanged(int value) { layerSliderChanged(PresetLayer::Top, value); }
void BrisaQT::onRight_top_spinValueChanged(int value) { layerSpinChanged(PresetLayer::Top, value); }
void BrisaQT::onRight_top_mid_sliderValueChanged(int value) { layerSliderChanged(PresetLayer::Mid, value); }
void BrisaQT::onRight_top_mid_spinValueChanged(int value) { layerSpinChanged(PresetLayer::Mid, value); }
void BrisaQT::onRight_top_down_sliderValueChanged(int value) { layerSliderChanged(PresetLayer::Down, value); }
void BrisaQT::onRight_top_down_spinValueChanged(int value) { layerSpinChanged(PresetLayer::Down, value); }
void BrisaQT::resetTopImage() { resetLayer(PresetLayer::Top); }
void BrisaQT::resetMidImage() { resetLayer(PresetLayer::Mid); }
void BrisaQT::resetDownImage() { resetLayer(PresetLayer::Down); }

void BrisaQT::onRight_top_slidersValueChanged(QSlider*, int) {}
void BrisaQT::onRight_top_spinsValueChanged(QSpinBox*, int) {}
void BrisaQT::onsliderDblClickResetImage(QSlider*) {}
void BrisaQT::onRight_down_sliderValueChanged(int) {}
void BrisaQT::onRight_down_spinValueChanged(int) {}

void BrisaQT::changeLayerGroup(PresetLayer layer)
{
    MySlider* slider = m_gradingPanel->slider(layer);
    if (!slider->isEnabled()) {
        slider->setEnabled(true);
        m_gradingPanel->spinBox(layer)->setEnabled(true);
    }
    leaveCompare();
    applyLayers(false);
}

// The slider regrades; the spin box only moves the slider, which then finds
// the spin box equal: a typed strength takes effect at the next regrade.
void BrisaQT::layerSliderChanged(PresetLayer layer, int value)
{
    MySpinBox* spinBox = m_gradingPanel->spinBox(layer);
    if (spinBox->value() == value)
        return;
    spinBox->setValue(value);
    applyLayers(false);
}

void BrisaQT::layerSpinChanged(PresetLayer layer, int value)
{
    MySlider* slider = m_gradingPanel->slider(layer);
    if (slider->value() != value)
        slider->setValue(value);
}

void BrisaQT::resetLayer(PresetLayer layer)
{
    m_gradingPanel->uncheckLayer(layer);
    m_gradingPanel->slider(layer)->setValue(GradingPanel::kStrengthMax);
    m_gradingPanel->slider(layer)->setEnabled(false);
    m_gradingPanel->spinBox(layer)->setEnabled(false);
    applyLayers(false);
}

void BrisaQT::resetImage()
{
    for (PresetLayer layer : {PresetLayer::Mid, PresetLayer::Down, PresetLayer::Top})
        m_gradingPanel->uncheckLayer(layer);
    for (PresetLayer layer : {PresetLayer::Down, PresetLayer::Mid, PresetLayer::Top})
        m_gradingPanel->slider(layer)->setValue(GradingPanel::kStrengthMax);
    m_document.m_cropRects.clear();
    if (!m_document.m_srcMat.empty())
        m_document.m_orgMat = m_document.m_srcMat;
    applyLayers(false);
}

// ---- Scene --------------------------------------------------------------------

void BrisaQT::comboBoxCurrentIndexChanged(int index)
{
    if (index == m_document.m_sceneIndex)
        return;
    if (askNotice(QStringLiteral("切换类别后，当前效果将重置！"))) {
        m_document.m_sceneIndex = index;
        resetImage();
        refreshPresetThumbnails();
    } else {
        // Setting it back calls this slot again, which stops at the test above.
        m_gradingPanel->sceneBox()->setCurrentIndex(m_document.m_sceneIndex);
    }
}
