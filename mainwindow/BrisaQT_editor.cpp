// The editor's container: the image area on the left (the image view fills
// it, the add-image button sits in its middle) and the right panel whose
// content frame holds the grading controls. The editor fills these widgets;
// the frame only creates and lays them out.
#include "BrisaQT.h"

#include "FrameLayout.h"

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
}

void BrisaQT::layoutEditor()
{
    const FrameLayout::Editor e = FrameLayout::editor(m_myWidget->size());
    m_imageArea->setGeometry(e.imageArea);
    // Whatever the editor puts into the image area (the image view) fills it.
    for (QWidget* child : m_imageArea->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (child != m_addImageBtn)
            child->setGeometry(0, 0, e.imageArea.width(), e.imageArea.height());
    }
    m_addImageBtn->setGeometry(e.addImageBtn);
    m_addImageBtn->raise();
    m_rightPanel->setGeometry(e.rightPanel);
    m_rightContentFrame->setGeometry(e.contentFrame);
    m_rightUpperStrip->setGeometry(e.upperStrip);
    m_rightLowerStrip->setGeometry(e.lowerStrip);
    layoutEditorTools();
}
