// The title bar: logo, six navigation buttons, the window buttons, the login
// button and the user frame with its drop-down panel.
#include "BrisaQT.h"

#include "FrameLayout.h"
#include "MyMousePressLabel.h"
#include "UserDialog.h"

#include <QFrame>
#include <QLabel>
#include <QPushButton>

namespace {

struct NavButton {
    int x;
    const char* objectName;
    const char* text;
    const char* icon;
    QSize iconSize;
    void (BrisaQT::*slot)();  // null: connected by the part that owns the action
};

// The help button shows the download icon and the download-folder button the
// save icon; the pairings are intended.
const NavButton kNavButtons[] = {
    {176, "repairBtn", "开始修图", ":/BrisaQT/Resources/hot.png", {18, 16}, &BrisaQT::clickedRepairBtn},
    {296, "cloudBtn", "云图库", ":/BrisaQT/Resources/cloud.png", {18, 16}, &BrisaQT::clickedCloudBtn},
    {416, "settingBtn", "设置", ":/BrisaQT/Resources/setting.png", {14, 16}, &BrisaQT::clickedSettingBtn},
    {536, "helpBtn", "帮助", ":/BrisaQT/Resources/download_icon.png", {14, 16}, &BrisaQT::clickedHelpBtn},
    {656, "showAppBtn", "联系客服", ":/BrisaQT/Resources/qq.png", {14, 16}, &BrisaQT::clickedShowAppBtn},
    {786, "openDownLoadBtn", "打开下载路径", ":/BrisaQT/Resources/save.png", {16, 14}, nullptr},
};

const char kNavStyle[] =
    "QPushButton{background-color:#494949; border:none; color:rgb(255,115,22);"
    " font-weight:bold; font-size:16px;}"
    "QPushButton:hover{background-color:#5c5a5c;}"
    "QPushButton:checked{background-color:#333333;}";

QString windowButtonStyle(const QString& image)
{
    return QStringLiteral("QPushButton{border-image:url(:/BrisaQT/Resources/%1.png); background:transparent;}"
                          "QPushButton:hover{border-image:url(:/BrisaQT/Resources/%1_hover.png);}")
        .arg(image);
}

} // namespace

void BrisaQT::buildTitleBar()
{
    m_logoLabel = new QLabel(m_titleframe);
    m_logoLabel->setObjectName(QStringLiteral("logoLabel"));
    m_logoLabel->setGeometry(35, 4, 115, 42);
    m_logoLabel->setStyleSheet(QStringLiteral("QLabel{border-image:url(:/BrisaQT/Resources/melo_icon.png);}"));

    QPushButton** navMembers[] = {&m_repairBtn, &m_cloudBtn, &m_settingBtn,
                                  &m_helpBtn, &m_showAppBtn, &m_openDownLoadBtn};
    int index = 0;
    for (const NavButton& nav : kNavButtons) {
        auto* button = new QPushButton(QString::fromUtf8(nav.text), m_titleframe);
        button->setObjectName(QString::fromLatin1(nav.objectName));
        button->setGeometry(nav.x, 0, 120, FrameLayout::kTitleBarHeight);
        button->setIcon(QIcon(QString::fromLatin1(nav.icon)));
        button->setIconSize(nav.iconSize);
        button->setStyleSheet(QString::fromUtf8(kNavStyle));
        button->setCursor(Qt::PointingHandCursor);
        if (nav.slot)
            connect(button, &QPushButton::clicked, this, nav.slot);
        *navMembers[index++] = button;
    }
    for (QPushButton* view : {m_repairBtn, m_cloudBtn}) {
        view->setCheckable(true);
        view->setAutoExclusive(true);
    }
    m_repairBtn->setChecked(true);
    m_checkedViewBtn = m_repairBtn;

    // Both size buttons carry the name "maxBtn"; only one is shown at a time.
    const struct {
        QPushButton** member;
        const char* name;
        const char* image;
    } windowButtons[] = {{&m_closeBtn, "closeBtn", "close"},
                         {&m_normalBtn, "maxBtn", "normal"},
                         {&m_maxBtn, "maxBtn", "max"},
                         {&m_minBtn, "minBtn", "min"}};
    for (const auto& entry : windowButtons) {
        auto* button = new QPushButton(m_titleframe);
        button->setObjectName(QString::fromLatin1(entry.name));
        button->resize(FrameLayout::kWindowButtonSize, FrameLayout::kWindowButtonSize);
        button->setStyleSheet(windowButtonStyle(QString::fromLatin1(entry.image)));
        *entry.member = button;
    }
    connect(m_closeBtn, &QPushButton::clicked, this, &BrisaQT::clickedCloseBtn);
    connect(m_normalBtn, &QPushButton::clicked, this, &BrisaQT::clickedNormalBtn);
    connect(m_maxBtn, &QPushButton::clicked, this, &BrisaQT::clickedMaxBtn);
    connect(m_minBtn, &QPushButton::clicked, this, &QWidget::showMinimized);

    m_loginBtn = new QPushButton(QStringLiteral("登录/注册"), m_titleframe);
    m_loginBtn->setObjectName(QStringLiteral("loginBtn"));
    m_loginBtn->resize(120, 34);
    m_loginBtn->setStyleSheet(QStringLiteral(
        "QPushButton{background-color:#FF7316; color:white; font-weight:bold; font-size:16px; border:none;}"
        "QPushButton:hover{background-color:#F47019;}"));
    m_loginBtn->hide();

    m_userFrame = new QFrame(m_titleframe);
    m_userFrame->setObjectName(QStringLiteral("userFrame"));
    m_userFrame->resize(148, 34);
    m_userFrame->setStyleSheet(QStringLiteral("QFrame#userFrame{background-color:#494949;}"));
    m_userFaceLabel = new MyMousePressLabel(m_userFrame);
    m_userFaceLabel->setObjectName(QStringLiteral("userFaceLabel"));
    m_userFaceLabel->setGeometry(0, 0, 34, 34);
    m_userFaceLabel->setStyleSheet(QStringLiteral("border-image:url(:/BrisaQT/Resources/user_normal.png);"));
    m_userFaceLabel->setScaledContents(true);
    m_userFaceLabel->setAlignment(Qt::AlignCenter);
    m_userNameLabel = new MyMousePressLabel(m_userFrame);
    m_userNameLabel->setObjectName(QStringLiteral("userNameLabel"));
    m_userNameLabel->setGeometry(40, 0, 69, 34);
    m_userNameLabel->setStyleSheet(QStringLiteral("color:white; font-size:14px;"));
    // The page's user name, shown as it is, never as markup.
    m_userNameLabel->setTextFormat(Qt::PlainText);
    m_userShowBtn = new QPushButton(m_userFrame);
    m_userShowBtn->setObjectName(QStringLiteral("userShowBtn"));
    m_userShowBtn->setGeometry(104, 8, 17, 15);
    m_userShowBtn->setStyleSheet(QStringLiteral("border-image:url(:/BrisaQT/Resources/userDlg_show.png);"));
    m_userFrame->hide();
    connect(m_userNameLabel, &MyMousePressLabel::mouseButtonLeftPress, this, &BrisaQT::clickedShowUserInfo);
    connect(m_userFaceLabel, &MyMousePressLabel::mouseButtonLeftPress, this, &BrisaQT::clickedShowUserInfo);
    connect(m_userShowBtn, &QPushButton::clicked, this, &BrisaQT::clickedShowUserInfo);

    m_userDlg = new UserDialog(this, QString(), QString());
    m_userDlg->setGeometry(width() - 400, FrameLayout::kTitleBarHeight, 356, 215);
    m_userDlg->hide();
}
