// The grading panel in the right panel's scroll area, and its connections to
// the window's slots: one connection per control.
#include "BrisaQT.h"

#include "GradingPanel.h"
#include "MyButtonGroup.h"
#include "MySlider.h"
#include "MySpinBox.h"

#include <QComboBox>
#include <QPushButton>
#include <QScrollArea>

namespace {

using IntSlot = void (BrisaQT::*)(int);
using PlainSlot = void (BrisaQT::*)();

struct LayerSlots {
    IntSlot group;
    IntSlot slider;
    IntSlot spinBox;
    PlainSlot reset;
};

const LayerSlots kLayerSlots[kPresetLayerCount] = {
    {&BrisaQT::on_changeButtonGroup, &BrisaQT::onRight_top_sliderValueChanged,
     &BrisaQT::onRight_top_spinValueChanged, &BrisaQT::resetTopImage},
    {&BrisaQT::on_changeButtonMidGroup, &BrisaQT::onRight_top_mid_sliderValueChanged,
     &BrisaQT::onRight_top_mid_spinValueChanged, &BrisaQT::resetMidImage},
    {&BrisaQT::on_changeButtonDownGroup, &BrisaQT::onRight_top_down_sliderValueChanged,
     &BrisaQT::onRight_top_down_spinValueChanged, &BrisaQT::resetDownImage},
};

} // namespace

void BrisaQT::buildGradingPanel()
{
    m_gradingPanel = new GradingPanel;
    m_rightContentFrame->setWidget(m_gradingPanel);

    for (int i = 0; i < kPresetLayerCount; ++i) {
        const PresetLayer layer = PresetLayer(i);
        const LayerSlots& target = kLayerSlots[i];
        connect(m_gradingPanel->group(layer), &QButtonGroup::idClicked, this, target.group);
        connect(m_gradingPanel->slider(layer), &QSlider::valueChanged, this, target.slider);
        connect(m_gradingPanel->spinBox(layer), QOverload<int>::of(&QSpinBox::valueChanged), this, target.spinBox);
        connect(m_gradingPanel->resetButton(layer), &QPushButton::clicked, this, target.reset);
    }
    connect(m_gradingPanel->sceneBox(), QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &BrisaQT::comboBoxCurrentIndexChanged);
    connect(m_gradingPanel->randButton(), &QPushButton::clicked, this, &BrisaQT::on_randButtonEvent);
    connect(m_gradingPanel->randResetButton(), &QPushButton::clicked, this, &BrisaQT::resetRandImage);
    connect(m_gradingPanel->previousButton(), &QPushButton::clicked, this, &BrisaQT::resetUpRandImage);
    connect(m_gradingPanel->nextButton(), &QPushButton::clicked, this, &BrisaQT::resetDownRandImage);
    connect(m_gradingPanel->randSlider(), &QSlider::valueChanged, this, &BrisaQT::onRight_rand_sliderValueChanged);
}
