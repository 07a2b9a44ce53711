// The crop tool: the tool strip over the image view (crop, undo crop and the
// before/after eye), the crop controls shown while cropping (ratio presets,
// reset, cancel, accept), and cutting the preview to an accepted rectangle.
// The geometry is the crop module's; the cut and its record the document's.
#include "BrisaQT.h"

#include "CompareLook.h"
#include "CropGeometry.h"
#include "GlobalConstants.h"
#include "MyDrawLabel.h"
#include "WindowState.h"

#include <QApplication>
#include <QComboBox>
#include <QFrame>
#include <QMessageBox>
#include <QPushButton>

namespace {

const char kStripStyle[] =
    "QFrame#editorToolStrip, QFrame#cropToolStrip{background-color:rgba(38,36,36,225);"
    " border:1px solid #4A4646; border-radius:6px;}"
    "QFrame[role=\"separator\"]{background-color:#5A5656; border:none;}"
    "QPushButton{color:#E6E6E6; background-color:transparent; border:none; border-radius:4px;"
    " font-size:13px; padding:0 6px;}"
    "QPushButton:hover{background-color:#4A4646;}"
    "QPushButton:disabled{color:#6E6A6A;}"
    "QPushButton#yesShapeBtn{color:#FF7316; border:1px solid #FF7316;}"
    "QPushButton#yesShapeBtn:hover{background-color:#4A3A2E;}"
    "QComboBox{background-color:#262424; color:#F0F0F0; border:1px solid #4A4646; border-radius:4px;"
    " font-size:13px; padding-left:10px;}"
    "QComboBox:hover{border-color:#FF7316;}"
    "QComboBox::drop-down{width:22px; border:none;}"
    "QComboBox::down-arrow{image:url(:/BrisaQT/Resources/userDlg_show.png); width:12px; height:10px;}"
    "QComboBox QAbstractItemView{background-color:#2B2929; color:#E6E6E6; border:1px solid #4A4646;"
    " selection-background-color:#FF7316; selection-color:#FFFFFF; outline:none;}";

constexpr int kStripX = 12;
constexpr int kStripY = 10;
constexpr int kStripHeight = 44;
constexpr int kToolStripWidth = 233;
constexpr int kCropStripWidth = 366;

QPushButton* toolButton(QWidget* strip, const QString& text, const char* name, const QRect& geometry,
                        const char* icon = nullptr)
{
    auto* button = new QPushButton(text, strip);
    button->setObjectName(QLatin1String(name));
    button->setGeometry(geometry);
    button->setCursor(Qt::PointingHandCursor);
    if (icon) {
        button->setIcon(QIcon(QStringLiteral(":/BrisaQT/Resources/") + QLatin1String(icon)));
        button->setIconSize(QSize(16, 16));
    }
    return button;
}

QFrame* toolStrip(QWidget* view, const char* name, int x, int width)
{
    auto* strip = new QFrame(view);
    strip->setObjectName(QLatin1String(name));
    strip->setStyleSheet(QString::fromUtf8(kStripStyle));
    strip->setGeometry(x, kStripY, width, kStripHeight);
    strip->hide();
    return strip;
}

} // namespace

void BrisaQT::buildCropTools()
{
    m_toolStrip = toolStrip(m_imageArea, "editorToolStrip", kStripX, kToolStripWidth);
    m_cropBtn = toolButton(m_toolStrip, QStringLiteral("裁剪"), "cropBtn", QRect(6, 6, 76, 32), "crop.png");
    m_cropBtn->setIconSize(QSize(20, 20));
    m_cropResetBtn = toolButton(m_toolStrip, QStringLiteral("撤销裁剪"), "cropResetBtn", QRect(86, 6, 96, 32));
    m_cropResetBtn->setEnabled(false);
    auto* separator = new QFrame(m_toolStrip);
    separator->setProperty("role", QLatin1String("separator"));
    separator->setGeometry(188, 12, 1, 20);
    m_contrastBtn = new QPushButton(m_toolStrip);
    m_contrastBtn->setObjectName(QStringLiteral("contrastBtn"));
    m_contrastBtn->setGeometry(195, 6, 32, 32);
    m_contrastBtn->setCursor(Qt::PointingHandCursor);
    applyCompareLook(m_contrastBtn, false);

    m_cropStrip = toolStrip(m_imageArea, "cropToolStrip", kStripX + kToolStripWidth + 8, kCropStripWidth);
    m_cropComboBox = new QComboBox(m_cropStrip);
    m_cropComboBox->setObjectName(QStringLiteral("cropComboBox"));
    m_cropComboBox->setGeometry(6, 6, 112, 32);
    for (const char* name : kCropRatioNames)
        m_cropComboBox->addItem(QString::fromUtf8(name));
    m_returnShapeBtn = toolButton(m_cropStrip, QStringLiteral("重置"), "returnShapeBtn", QRect(124, 6, 76, 32),
                                  "return_shape.png");
    m_noShapeBtn = toolButton(m_cropStrip, QStringLiteral("取消"), "noShapeBtn", QRect(204, 6, 76, 32),
                              "no_shape.png");
    m_yesShapeBtn = toolButton(m_cropStrip, QStringLiteral("确定"), "yesShapeBtn", QRect(284, 6, 76, 32),
                               "yes_shape.png");

    connect(m_cropBtn, &QPushButton::clicked, this, &BrisaQT::startCropImage);
    connect(m_cropResetBtn, &QPushButton::clicked, this, &BrisaQT::resetCropImage);
    connect(m_contrastBtn, &QPushButton::clicked, this, &BrisaQT::clickedContrastBtn);
    connect(m_cropComboBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &BrisaQT::cropComboBoxCurrentIndexChanged);
    connect(m_returnShapeBtn, &QPushButton::clicked, this, &BrisaQT::returnShapeImage);
    connect(m_noShapeBtn, &QPushButton::clicked, this, &BrisaQT::noShapeImage);
    connect(m_yesShapeBtn, &QPushButton::clicked, this, &BrisaQT::yesShapeImage);
}

void BrisaQT::startCropImage()
{
    m_cropStrip->show();
    m_cropActive = true;
    m_drawLabel->setCropMode(true);
}

void BrisaQT::cropComboBoxCurrentIndexChanged(int index)
{
    m_drawLabel->setRatioIndex(index);
}

void BrisaQT::returnShapeImage()
{
    if (m_cropActive && !m_drawLabel->image().empty())
        m_drawLabel->resetCropRect();
}

void BrisaQT::noShapeImage()
{
    m_cropActive = false;
    m_drawLabel->setCropMode(false);
    // Hiding the ratio box while it holds the keyboard focus would pass the
    // focus on to the scene box, where the next arrow key switches the scene.
    QWidget* focus = QApplication::focusWidget();
    if (focus && m_cropStrip->isAncestorOf(focus))
        focus->clearFocus();
    m_cropStrip->hide();
}

void BrisaQT::yesShapeImage()
{
    noShapeImage();
    sizeCropRect();
}

// The view reports every double click; only in crop mode does it accept.
void BrisaQT::screenMouseButtonDBClicke()
{
    if (m_cropActive)
        yesShapeImage();
}

void BrisaQT::sizeCropRect()
{
    const cv::Mat& display = m_document.m_dstMat;
    const std::optional<QRect> rect = crop::mapToPreview(
        m_drawLabel->cropRect(), crop::viewSize(isMainWindowMaximized()), QSize(display.cols, display.rows));
    if (!rect || !m_document.acceptCrop(*rect)) {
        QMessageBox::information(nullptr, QStringLiteral("提示"), QString::fromUtf8(crop::kRefusedText),
                                 QMessageBox::Ok);
        return;
    }
    showCroppedImage();
}

void BrisaQT::cropRect()
{
    if (m_document.cropRect())
        showCroppedImage();
}

void BrisaQT::showCroppedImage()
{
    m_drawLabel->setImage(m_document.forDisplay(m_document.m_showMat));
    showMat(m_document.m_dstMat);
    refreshPresetThumbnails();
    m_cropResetBtn->setEnabled(true);
}

void BrisaQT::resetCropImage()
{
    m_cropResetBtn->setEnabled(false);
    if (!m_document.resetCrop())
        return;
    m_drawLabel->setImage(m_document.forDisplay(m_document.m_showMat));
    applyLayers(false);
    refreshPresetThumbnails();
}

void BrisaQT::clickedCropLineText() {}
