// The editor's own widgets around the image: the image view that fills the
// image area, the tool strip floating over its top left (crop, undo crop,
// before/after compare), and the bar at the bottom of the right panel with
// the return and save buttons. The grading panel and the crop controls are
// built in their own files.
#include "BrisaQT.h"

#include "MyDrawLabel.h"

#include <QFrame>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>

namespace {

// The bottom bar takes the strip below the right panel's lower marker; the
// grading panel scrolls in the space above it.
constexpr int kSaveBarHeight = 62;

const char kSaveBarStyle[] =
    "QFrame#saveBar{background-color:#2E2C2C; border-top:1px solid #454242;}"
    "QPushButton{font-size:14px; border-radius:4px;}"
    "QPushButton#returnCloudBtn{color:#E6E6E6; background-color:transparent; border:1px solid #5A5656;}"
    "QPushButton#returnCloudBtn:hover{border-color:#FF7316; color:#FFFFFF;}"
    "QPushButton#m_right_down_saveBtn{color:#FFFFFF; background-color:#FF7316; border:none; font-weight:bold;}"
    "QPushButton#m_right_down_saveBtn:hover{background-color:#F47019;}"
    "QPushButton#m_right_down_saveBtn:pressed{background-color:#cc7137;}";

// The scroll area leaves the bar's height free at its bottom.
const char kScrollAreaStyle[] = "QScrollArea{background-color:#333333; border:none; padding-bottom:62px;}";
// A slim scroll bar; its style must be its own, the area's does not reach it.
const char kScrollBarStyle[] =
    "QScrollBar:vertical{background:#2B2929; width:6px; margin:0;}"
    "QScrollBar::handle:vertical{background:#5A5656; border-radius:3px; min-height:40px;}"
    "QScrollBar::handle:vertical:hover{background:#FF7316;}"
    "QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical{height:0; border:none;}"
    "QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical{background:none;}";

} // namespace

void BrisaQT::buildImageEditor()
{
    buildImageView();
    buildCropTools();
    buildGradingPanel();
    buildSaveBar();
    connect(m_addImageBtn, &QPushButton::clicked, this, &BrisaQT::clickedAddBtn);
    connect(this, &BrisaQT::imageViewRefitRequested, this, &BrisaQT::refitImageView);
}

void BrisaQT::buildImageView()
{
    m_drawLabel = new MyDrawLabel(m_imageArea);
    m_drawLabel->setObjectName(QStringLiteral("imageView"));
    m_drawLabel->setStyleSheet(QStringLiteral("QLabel#imageView{background-color:#353232; border:none;}"));
    m_drawLabel->setAlignment(Qt::AlignCenter);
    m_addImageBtn->raise();
    connect(m_drawLabel, &MyDrawLabel::mouseButtonDBClicke, this, &BrisaQT::screenMouseButtonDBClicke);
}

void BrisaQT::buildSaveBar()
{
    m_rightContentFrame->setStyleSheet(QString::fromLatin1(kScrollAreaStyle));
    m_rightContentFrame->verticalScrollBar()->setStyleSheet(QString::fromLatin1(kScrollBarStyle));
    m_saveBar = new QFrame(m_rightPanel);
    m_saveBar->setObjectName(QStringLiteral("saveBar"));
    m_saveBar->setStyleSheet(QString::fromLatin1(kSaveBarStyle));

    m_returnCloudBtn = new QPushButton(QStringLiteral("返回云图库"), m_saveBar);
    m_returnCloudBtn->setObjectName(QStringLiteral("returnCloudBtn"));
    m_returnCloudBtn->setIcon(QIcon(QStringLiteral(":/BrisaQT/Resources/return_cloud.png")));
    m_returnCloudBtn->setIconSize(QSize(16, 16));
    m_returnCloudBtn->setCursor(Qt::PointingHandCursor);
    m_returnCloudBtn->setGeometry(20, 13, 160, 36);

    m_saveBtn = new QPushButton(QStringLiteral("保存"), m_saveBar);
    m_saveBtn->setObjectName(QStringLiteral("m_right_down_saveBtn"));
    m_saveBtn->setCursor(Qt::PointingHandCursor);
    m_saveBtn->setGeometry(192, 13, 160, 36);

    connect(m_returnCloudBtn, &QPushButton::clicked, this, &BrisaQT::clickedReturnCloudBtn);
    connect(m_saveBtn, &QPushButton::clicked, this, &BrisaQT::clickedSaveBtn);
}

void BrisaQT::layoutEditorTools()
{
    m_saveBar->setGeometry(0, m_rightPanel->height() - kSaveBarHeight, m_rightPanel->width(), kSaveBarHeight);
    m_saveBar->raise();
}
