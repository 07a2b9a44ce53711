#include "GradingPanel.h"

#include "GlobalConstants.h"
#include "MyButtonGroup.h"
#include "MyDrawLutButton.h"
#include "MySlider.h"
#include "MySpinBox.h"

#include <QComboBox>
#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>

namespace {

struct LayerGeometry {
    const char* name;      // object-name prefix
    const char* heading;
    int presets;
    QRect reset;
    int presetsTop;
    QRect slider;
    QRect spinBox;
    int separatorY;        // the line above the section
};

constexpr LayerGeometry kLayerGeometry[kPresetLayerCount] = {
    {"top", "基础影调", 4, {292, 62, 70, 14}, 88, {11, 180, 343, 20}, {286, 205, 52, 18}, 50},
    {"mid", "对比层次", 4, {292, 253, 70, 14}, 280, {11, 372, 343, 20}, {285, 396, 52, 18}, 238},
    {"down", "色彩风格", 12, {292, 447, 70, 12}, 476, {11, 755, 343, 20}, {285, 780, 52, 18}, 430},
};
constexpr int kPresetSide = 82;
constexpr int kPresetStepX = 87;
constexpr int kPresetStepY = 88;
constexpr int kPresetsPerRow = 4;
constexpr int kSmartSeparatorY = 812;

const char kPanelStyle[] =
    "QFrame#gradingPanel{background-color:#333333;}"
    "QLabel{color:#E6E6E6; background:transparent;}"
    "QLabel[role=\"heading\"]{font-size:14px; font-weight:bold;}"
    "QLabel[role=\"hint\"]{color:#9A9A9A; font-size:12px;}"
    "QFrame[role=\"separator\"]{background-color:#454242;}";

// Text buttons: the accent colour, darker when hovered or checked.
const char kTextButtonStyle[] =
    "QPushButton{color:rgb(255,115,22); background:transparent; border:none; font-size:12px;}"
    "QPushButton:hover, QPushButton:checked{color:#cc7137;}";

// The face is the thumbnail and caption the button draws itself; the check
// mark is its own child label.
const char kPresetStyle[] =
    "QPushButton{background-color:rgb(51,51,51); color:#C8C8C8; font-size:12px; border:none;}"
    "QPushButton:checked{background-image:url(:/BrisaQT/Resources/lutCheck.png);border:none;}";

const char kSliderStyle[] =
    "QSlider{background:transparent;}"
    "QSlider::groove:horizontal{height:4px; background:#4F4B4B; border-radius:2px;}"
    "QSlider::sub-page:horizontal{background:#FF7316; border-radius:2px;}"
    "QSlider::sub-page:horizontal:disabled{background:#5E5A5A;}"
    "QSlider::handle:horizontal{width:14px; margin:-5px 0; border-radius:7px; background:#F4F4F4;}"
    "QSlider::handle:horizontal:hover{background:#FFFFFF; border:2px solid #FF7316; width:10px;}"
    "QSlider::handle:horizontal:disabled{background:#6E6A6A;}";

const char kSpinStyle[] =
    "QSpinBox{background:#262424; color:#E6E6E6; border:1px solid #4A4646; border-radius:2px;"
    " font-size:12px; padding:0 2px;}"
    "QSpinBox:disabled{color:#6E6A6A; border-color:#3E3B3B;}";

const char kComboStyle[] =
    "QComboBox{background:#262424; color:#F0F0F0; border:1px solid #4A4646; border-radius:3px;"
    " font-size:13px;}"
    "QComboBox:hover{border-color:#FF7316;}"
    "QComboBox QLineEdit{background:transparent; color:#F0F0F0; border:none;}"
    "QComboBox::drop-down{width:22px; border:none;}"
    "QComboBox::down-arrow{image:url(:/BrisaQT/Resources/userDlg_show.png); width:12px; height:10px;}"
    "QListWidget{background:#2B2929; color:#E6E6E6; border:1px solid #4A4646; outline:none;"
    " font-size:13px;}"
    "QListWidget::item{height:28px;}"
    "QListWidget::item:hover, QListWidget::item:selected{background:#FF7316; color:#FFFFFF;}";

const char kRandStyle[] =
    "QPushButton{border-image:url(:/BrisaQT/Resources/rand.png); color:#FFFFFF; font-size:14px;"
    " font-weight:bold; padding-left:18px;}"
    "QPushButton:pressed{padding-top:2px;}";

QLabel* addLabel(QWidget* parent, const QString& text, const QRect& geometry, const char* role)
{
    auto* label = new QLabel(text, parent);
    label->setProperty("role", QLatin1String(role));
    label->setGeometry(geometry);
    return label;
}

void addSeparator(QWidget* parent, int y)
{
    auto* line = new QFrame(parent);
    line->setProperty("role", QLatin1String("separator"));
    line->setGeometry(11, y, 343, 1);
}

MySlider* addSlider(QWidget* parent, const QRect& geometry, const QString& name)
{
    auto* slider = new MySlider(Qt::Horizontal, parent);
    slider->setObjectName(name);
    slider->setGeometry(geometry);
    slider->setRange(0, GradingPanel::kStrengthMax);
    slider->setSingleStep(1);
    slider->setPageStep(1);
    slider->setValue(GradingPanel::kStrengthMax);
    slider->setStyleSheet(QString::fromUtf8(kSliderStyle));
    slider->setCursor(Qt::PointingHandCursor);
    return slider;
}

} // namespace

GradingPanel::GradingPanel(QWidget* parent) : QFrame(parent)
{
    setObjectName(QStringLiteral("gradingPanel"));
    setFixedSize(kSize);
    setStyleSheet(QString::fromUtf8(kPanelStyle));
    buildSceneBox();
    for (int layer = 0; layer < kPresetLayerCount; ++layer)
        buildLayer(PresetLayer(layer));
    buildSmart();
}

void GradingPanel::buildSceneBox()
{
    addLabel(this, QStringLiteral("场景类别"), QRect(15, 13, 140, 26), "heading");
    m_sceneBox = new QComboBox(this);
    m_sceneBox->setObjectName(QStringLiteral("sceneComboBox"));
    m_sceneBox->setGeometry(162, 13, 148, 26);
    m_sceneBox->setStyleSheet(QString::fromUtf8(kComboStyle));
    auto* list = new QListWidget(m_sceneBox);
    m_sceneBox->setModel(list->model());
    m_sceneBox->setView(list);
    m_sceneBox->setEditable(true);
    m_sceneBox->lineEdit()->setReadOnly(true);
    m_sceneBox->lineEdit()->setAlignment(Qt::AlignCenter);
    m_sceneBox->lineEdit()->setPlaceholderText(QStringLiteral("请选择类别"));
    m_sceneBox->lineEdit()->installEventFilter(this);
    for (const char* name : kSceneNames) {
        auto* item = new QListWidgetItem(QString::fromUtf8(name));
        item->setTextAlignment(Qt::AlignCenter);
        list->addItem(item);
    }
    // No scene until a photograph names one or the user picks one.
    m_sceneBox->setCurrentIndex(-1);
}

void GradingPanel::buildLayer(PresetLayer which)
{
    const LayerGeometry& g = kLayerGeometry[int(which)];
    const QString name = QString::fromLatin1(g.name);
    Layer& layer = m_layers[int(which)];
    addSeparator(this, g.separatorY);
    addLabel(this, QString::fromUtf8(g.heading),
             QRect(15, g.reset.center().y() - 10, 200, 20), "heading");
    layer.reset = textButton(QStringLiteral("默认值"), g.reset, "right_top_resetBtn.png");
    layer.reset->setObjectName(name + QStringLiteral("ResetBtn"));

    layer.group = new MyButtonGroup(this);
    layer.group->setObjectName(name + QStringLiteral("PresetGroup"));
    layer.group->setExclusive(true);
    for (int id = 0; id < g.presets; ++id) {
        auto* button = new MyDrawLutButton(this);
        button->setObjectName(name + QStringLiteral("Preset%1").arg(id));
        button->setGeometry((id % kPresetsPerRow) * kPresetStepX + 11,
                            g.presetsTop + (id / kPresetsPerRow) * kPresetStepY, kPresetSide, kPresetSide);
        button->setCheckable(true);
        button->setStyleSheet(QString::fromUtf8(kPresetStyle));
        button->setCursor(Qt::PointingHandCursor);
        layer.group->addButton(button, id);
        layer.buttons.append(button);
    }

    layer.slider = addSlider(this, g.slider, name + QStringLiteral("Slider"));
    layer.slider->setEnabled(false);
    addLabel(this, QStringLiteral("强度"), QRect(15, g.spinBox.y(), 80, g.spinBox.height()), "hint");
    layer.spinBox = new MySpinBox(this);
    layer.spinBox->setObjectName(name + QStringLiteral("SpinBox"));
    layer.spinBox->setGeometry(g.spinBox);
    layer.spinBox->setRange(0, kStrengthMax);
    layer.spinBox->setSingleStep(1);
    layer.spinBox->setValue(kStrengthMax);
    layer.spinBox->setButtonSymbols(QAbstractSpinBox::NoButtons);
    layer.spinBox->setAlignment(Qt::AlignCenter);
    layer.spinBox->setStyleSheet(QString::fromUtf8(kSpinStyle));
    layer.spinBox->setEnabled(false);
}

void GradingPanel::buildSmart()
{
    addSeparator(this, kSmartSeparatorY);
    addLabel(this, QStringLiteral("智能推荐"), QRect(15, 822, 200, 20), "heading");
    m_randResetBtn = textButton(QStringLiteral("默认值"), QRect(282, 825, 70, 14), "right_top_resetBtn.png");
    m_randResetBtn->setObjectName(QStringLiteral("randResetBtn"));
    m_previousBtn = textButton(QStringLiteral("上一次"), QRect(15, 866, 70, 14), "userDlg_upshow.png");
    m_previousBtn->setObjectName(QStringLiteral("randPreviousBtn"));
    m_nextBtn = textButton(QStringLiteral("下一次"), QRect(282, 866, 70, 14), "userDlg_show.png");
    m_nextBtn->setObjectName(QStringLiteral("randNextBtn"));
    m_nextBtn->setLayoutDirection(Qt::RightToLeft);   // the arrow after the text

    m_randBtn = new QPushButton(QStringLiteral("AI智能影调"), this);
    m_randBtn->setObjectName(QStringLiteral("randBtn"));
    m_randBtn->setGeometry(104, 860, 156, 34);
    m_randBtn->setStyleSheet(QString::fromUtf8(kRandStyle));
    m_randBtn->setCursor(Qt::PointingHandCursor);

    m_randSlider = addSlider(this, QRect(11, 900, 343, 20), QStringLiteral("randSlider"));
}

QPushButton* GradingPanel::textButton(const QString& text, const QRect& geometry, const char* icon)
{
    auto* button = new QPushButton(text, this);
    button->setGeometry(geometry);
    button->setStyleSheet(QString::fromUtf8(kTextButtonStyle));
    button->setCursor(Qt::PointingHandCursor);
    if (icon) {
        button->setIcon(QIcon(QStringLiteral(":/BrisaQT/Resources/") + QLatin1String(icon)));
        button->setIconSize(QSize(12, 12));
    }
    return button;
}

MyDrawLutButton* GradingPanel::presetButton(PresetLayer layer, int id) const
{
    return m_layers[int(layer)].buttons.value(id, nullptr);
}

LayerSelection GradingPanel::selection() const
{
    LayerSelection s;
    for (int layer = 0; layer < kPresetLayerCount; ++layer) {
        s.ids[layer] = m_layers[layer].group->checkedId();
        s.strengths[layer] = m_layers[layer].slider->value();
    }
    return s;
}

bool GradingPanel::anyPresetChecked() const
{
    for (const Layer& layer : m_layers)
        if (layer.group->checkedId() >= 0)
            return true;
    return false;
}

void GradingPanel::uncheckLayer(PresetLayer which)
{
    Layer& layer = m_layers[int(which)];
    // An exclusive group keeps one button checked; lift that for the moment.
    layer.group->setExclusive(false);
    for (MyDrawLutButton* button : layer.buttons)
        button->setChecked(false);
    layer.group->setExclusive(true);
}

void GradingPanel::setPresetFace(PresetLayer layer, int id, const QPixmap& thumbnail, const QString& caption)
{
    MyDrawLutButton* button = presetButton(layer, id);
    if (!button)
        return;
    button->setCaption(caption);
    button->setThumbnail(thumbnail);
    button->repaint();
}

bool GradingPanel::eventFilter(QObject* watched, QEvent* event)
{
    // The read-only text opens the list like the arrow does. It opens on the
    // release: opened on the press, the list may lie over the box and take
    // that same click's release as the choice of an item, closing at once.
    if (watched == m_sceneBox->lineEdit()) {
        if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick)
            return true;
        if (event->type() == QEvent::MouseButtonRelease) {
            const auto* mouse = static_cast<QMouseEvent*>(event);
            if (mouse->button() == Qt::LeftButton && m_sceneBox->lineEdit()->rect().contains(mouse->pos()))
                m_sceneBox->showPopup();
            return true;
        }
    }
    return QFrame::eventFilter(watched, event);
}
