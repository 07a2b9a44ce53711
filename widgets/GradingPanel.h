// The grading panel of the editor's right side: the scene combo box, the
// three preset layers (top, mid, down), each a group of preset buttons with
// a strength slider, a spin box and a reset button, and the smart
// recommendation with its history buttons and strength slider. A fixed
// 374 x 927 frame with absolute geometry; the main window puts it into its
// scroll area and connects the controls to its slots.
#pragma once

#include "LayerGrading.h"

#include <QFrame>
#include <QSize>
#include <QVector>

class MyButtonGroup;
class MyDrawLutButton;
class MySlider;
class MySpinBox;
class QComboBox;
class QPixmap;
class QPushButton;

class GradingPanel : public QFrame
{
    Q_OBJECT
public:
    static constexpr QSize kSize{374, 927};
    static constexpr int kStrengthMax = 100;
    static constexpr int kSmartStrength = 50;

    explicit GradingPanel(QWidget* parent = nullptr);

    QComboBox* sceneBox() const { return m_sceneBox; }
    MyButtonGroup* group(PresetLayer layer) const { return m_layers[int(layer)].group; }
    MyDrawLutButton* presetButton(PresetLayer layer, int id) const;
    MySlider* slider(PresetLayer layer) const { return m_layers[int(layer)].slider; }
    MySpinBox* spinBox(PresetLayer layer) const { return m_layers[int(layer)].spinBox; }
    QPushButton* resetButton(PresetLayer layer) const { return m_layers[int(layer)].reset; }

    QPushButton* randButton() const { return m_randBtn; }
    QPushButton* randResetButton() const { return m_randResetBtn; }
    QPushButton* previousButton() const { return m_previousBtn; }
    QPushButton* nextButton() const { return m_nextBtn; }
    MySlider* randSlider() const { return m_randSlider; }

    // The checked preset of every layer (-1 for none) at its slider's value.
    LayerSelection selection() const;
    bool anyPresetChecked() const;
    // Unchecks every button of the layer (the group is exclusive again after).
    void uncheckLayer(PresetLayer layer);
    // A preset button's face; the button repaints at once.
    void setPresetFace(PresetLayer layer, int id, const QPixmap& thumbnail, const QString& caption);

protected:
    // A click on the combo box's read-only text opens its list.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Layer {
        MyButtonGroup* group = nullptr;
        QVector<MyDrawLutButton*> buttons;
        MySlider* slider = nullptr;
        MySpinBox* spinBox = nullptr;
        QPushButton* reset = nullptr;
    };
    void buildSceneBox();
    void buildLayer(PresetLayer layer);
    void buildSmart();
    QPushButton* textButton(const QString& text, const QRect& geometry, const char* icon = nullptr);

    QComboBox* m_sceneBox = nullptr;
    Layer m_layers[kPresetLayerCount];
    QPushButton* m_randBtn = nullptr;
    QPushButton* m_randResetBtn = nullptr;
    QPushButton* m_previousBtn = nullptr;
    QPushButton* m_nextBtn = nullptr;
    MySlider* m_randSlider = nullptr;
};
