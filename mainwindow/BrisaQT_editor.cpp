// The editor's container: the image area on the left (the image view fills
// it, the add-image button sits in its middle) and the right panel whose
// content frame holds the grading controls. The editor fills these widgets;
// the frame only creates and lays them out.
#include "BrisaQT.h"

#include "EditorShortcuts.h"
#include "FrameLayout.h"
#include "MyDrawLabel.h"

#include <QComboBox>
#include <QFrame>
#include <QPushButton>
#include <QScrollArea>

void BrisaQT::buildEditorPanel()
{
    m_imageArea = new QWidget(m_myWidget);
    m_imageArea->setObjectName(QStringLiteral("imageArea"));
    m_imageArea->setAttribute(Qt::WA_MouseTracking);

    m_addImageBtn = new QPushButton(QStringLiteral("添加图片"), m_imageArea);
    m_addImageBtn->setObjectName(QStringLiteral("addImageBtn"));
    m_addImageBtn->setIcon(QIcon(QStringLiteral(":/BrisaQT/Resources/add_image.png")));
    m_addImageBtn->setCursor(Qt::PointingHandCursor);
    m_addImageBtn->setStyleSheet(QStringLiteral(
        "QPushButton{background-color:#FF7316; color:white; font-size:16px; border:none; border-radius:4px;}"
        "QPushButton:hover{background-color:#F47019;}"));
    m_addImageBtn->hide();

    m_rightPanel = new QWidget(m_myWidget);
    m_rightPanel->setObjectName(QStringLiteral("rightPanel"));
    m_rightContentFrame = new QScrollArea(m_rightPanel);
    m_rightContentFrame->setObjectName(QStringLiteral("rightContentFrame"));
    m_rightContentFrame->setFrameShape(QFrame::NoFrame);
    m_rightContentFrame->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_rightContentFrame->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_rightUpperStrip = new QFrame(m_rightPanel);
    m_rightUpperStrip->setObjectName(QStringLiteral("rightUpperStrip"));
    m_rightLowerStrip = new QFrame(m_rightPanel);
    m_rightLowerStrip->setObjectName(QStringLiteral("rightLowerStrip"));
    buildImageEditor();

    // Keys for the editor's buttons, each live only where its button can be
    // used: opening in the editor, saving with a photograph open, accepting
    // and leaving a crop while cropping, the before/after eye once shown.
    auto* shortcuts = new EditorShortcuts(this);
    const auto usable = [](const QPushButton* button) { return button->isVisible() && button->isEnabled(); };
    shortcuts->bind(QKeySequence(Qt::CTRL | Qt::Key_O), m_addImageBtn,
                    [this] { return m_myWidget->isVisible() && m_addImageBtn->isEnabled(); });
    shortcuts->bind(QKeySequence(Qt::CTRL | Qt::Key_S), m_saveBtn,
                    [this, usable] { return usable(m_saveBtn) && m_document.hasImage(); });
    for (const Qt::Key key : {Qt::Key_Enter, Qt::Key_Return})
        shortcuts->bind(QKeySequence(key), m_yesShapeBtn, [this, usable] { return m_cropActive && usable(m_yesShapeBtn); });
    shortcuts->bind(QKeySequence(Qt::Key_Escape), m_noShapeBtn,
                    [this, usable] { return m_cropActive && usable(m_noShapeBtn); });
    shortcuts->bind(QKeySequence(Qt::Key_Backslash), m_contrastBtn, [this, usable] { return usable(m_contrastBtn); });
}

void BrisaQT::layoutEditor()
{
    const FrameLayout::Editor e = FrameLayout::editor(m_myWidget->size());
    m_imageArea->setGeometry(e.imageArea);
    // Whatever the editor puts into the image area (the image view) fills it.
    for (QWidget* child : m_imageArea->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (child != m_addImageBtn && child != m_toolStrip && child != m_cropStrip)
            child->setGeometry(0, 0, e.imageArea.width(), e.imageArea.height());
    }
    m_addImageBtn->setGeometry(e.addImageBtn);
    m_addImageBtn->raise();
    m_rightPanel->setGeometry(e.rightPanel);
    m_rightContentFrame->setGeometry(e.contentFrame);
    m_rightUpperStrip->setGeometry(e.upperStrip);
    m_rightLowerStrip->setGeometry(e.lowerStrip);
    layoutEditorTools();
    const cv::Mat& shown = m_document.m_dstMat;
    placeToolStrips(QSize(shown.cols, shown.rows));
}

void BrisaQT::placeToolStrips(const QSize& photo)
{
    const FrameLayout::ToolStrips place = FrameLayout::toolStrips(m_imageArea->size(), photo);
    const FrameLayout::StripButtons b = FrameLayout::stripButtons(place.column);
    m_toolStrip->setGeometry(place.toolStrip);
    m_cropBtn->setGeometry(b.crop);
    m_cropResetBtn->setGeometry(b.cropReset);
    for (QFrame* separator : m_toolStrip->findChildren<QFrame*>(QString(), Qt::FindDirectChildrenOnly))
        separator->setGeometry(b.separator);
    m_contrastBtn->setGeometry(b.eye);
    m_cropStrip->setGeometry(place.cropStrip);
    m_cropComboBox->setGeometry(b.ratioBox);
    m_returnShapeBtn->setGeometry(b.reset);
    m_noShapeBtn->setGeometry(b.cancel);
    m_yesShapeBtn->setGeometry(b.accept);
    m_toolStrip->raise();
    m_cropStrip->raise();
    if (m_drawLabel->geometry() == place.view)
        return;
    // The view changed its size: the photo is fitted to it again (which
    // comes back here and finds the view in place).
    m_drawLabel->setGeometry(place.view);
    if (m_document.hasImage())
        refitImageView();
}
