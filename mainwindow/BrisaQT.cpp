#include "BrisaQT.h"

#include "FrameLayout.h"
#include "GlobalConstants.h"
#include "SettingDialog.h"
#include "SettingsStore.h"
#include "ShowAppDialog.h"
#include "UserDialog.h"
#include "WindowState.h"

#include <QDesktopServices>
#include <QFrame>
#include <QMouseEvent>
#include <QPushButton>
#include <QTimer>
#include <QUrl>
#include <QWebEngineView>

BrisaQT::BrisaQT(QWidget* parent) : QMainWindow(parent)
{
    setWindowFlags(windowFlags() | Qt::FramelessWindowHint);
    buildUi();
    buildTray();
    setupPageChannels();
    buildTitleBar();
    buildEditorPanel();
    connectPageControls();
    acceptPhotoDrops();
    setMaximumSize(FrameLayout::kMaximizedSize);
    setMinimumSize(FrameLayout::kNormalSize);
    applyWindowSize(true);
    m_titleframe->setStyleSheet(QStringLiteral("QFrame{ background-color:#494949; border:none;}"));
    m_webEngineView->setContextMenuPolicy(Qt::NoContextMenu);
    m_webEngineView2->setContextMenuPolicy(Qt::NoContextMenu);
    // Hidden widgets get their resize events only when shown; lay out now so
    // the geometry is right from the start.
    layoutFrame();
}

BrisaQT::~BrisaQT()
{
    stopWorkerThread();
}

// ---- Window size ----------------------------------------------------------

// The window is never put into the system's maximised state: it is resized.
void BrisaQT::applyWindowSize(bool maximized)
{
    m_normalBtn->setVisible(maximized);
    m_maxBtn->setVisible(!maximized);
    resize(maximized ? FrameLayout::kMaximizedSize : FrameLayout::kNormalSize);
    setMainWindowMaximized(maximized);
    emit imageViewRefitRequested();
}

void BrisaQT::clickedMaxBtn() { applyWindowSize(true); }
void BrisaQT::clickedFullPageBtn() { applyWindowSize(true); }
void BrisaQT::clickedNormalBtn() { applyWindowSize(false); }
void BrisaQT::clickedDisFullPageBtn() { applyWindowSize(false); }

void BrisaQT::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    layoutFrame();
}

void BrisaQT::layoutFrame()
{
    const FrameLayout::Frame f = FrameLayout::frame(size());
    m_titleframe->setGeometry(f.titleBar);
    m_closeBtn->setGeometry(f.closeBtn);
    m_normalBtn->setGeometry(f.maxBtn);
    m_maxBtn->setGeometry(f.maxBtn);
    m_minBtn->setGeometry(f.minBtn);
    m_userDlg->setGeometry(f.userPanel);
    m_loginBtn->setGeometry(f.loginBtn);
    m_userFrame->setGeometry(f.loginBtn);
    m_webEngineView->setGeometry(f.view);
    m_webEngineView2->setGeometry(f.view);
    m_myWidget->setGeometry(f.view);
    layoutEditor();
}

// ---- Title-bar dragging ---------------------------------------------------

void BrisaQT::mousePressEvent(QMouseEvent* event)
{
    if (FrameLayout::pressStartsDrag(event->pos(), event->button(), isMaximized())) {
        m_dragging = true;
        m_pressPos = event->pos();
    }
    QMainWindow::mousePressEvent(event);
}

void BrisaQT::mouseMoveEvent(QMouseEvent* event)
{
    if (m_dragging)
        move(FrameLayout::dragTarget(pos(), m_pressPos, event->pos()));
    QMainWindow::mouseMoveEvent(event);
}

void BrisaQT::mouseReleaseEvent(QMouseEvent* event)
{
    m_dragging = false;
    QMainWindow::mouseReleaseEvent(event);
}

// ---- Close button ---------------------------------------------------------

void BrisaQT::clickedCloseBtn()
{
    const QString choice = readSettingValue(kProductKey, kDirectClose);
    if (choice == QLatin1String("1")) {
        close();
    } else if (choice == QLatin1String("0")) {
        showMinimized();
    } else {
        // Not chosen yet: ask; the choice applies from the next press on.
        runSettingDialog(6, 0);
    }
}

// ---- Title-bar actions ----------------------------------------------------

int BrisaQT::runSettingDialog(int mode, int twoButtons)
{
    auto* dialog = new SettingDialog(this);
    dialog->setTitleText(QString());
    dialog->setBodyText(QString());
    dialog->setMode(mode, twoButtons);
    connect(dialog, &SettingDialog::minSystemTray, this, &BrisaQT::onMinSystemTray);
    const int result = dialog->exec();
    dialog->deleteLater();
    return result;
}

void BrisaQT::clickedSettingBtn()
{
    runSettingDialog(2, 1);
}

void BrisaQT::clickedHelpBtn()
{
    QDesktopServices::openUrl(QUrl(helpArticleUrl()));
}

void BrisaQT::clickedHomePageBtn()
{
    QDesktopServices::openUrl(QUrl(serviceHttpsBase() + QString::fromUtf8(kSiteRootPath)));
}

void BrisaQT::clickedShowAppBtn()
{
    ShowAppDialog dialog(this, QString(), QString());
    dialog.exec();
}

void BrisaQT::clickedShowAPPWebBtn()
{
    clickedShowAppBtn();
}

void BrisaQT::clickedShowUserInfo()
{
    m_userDlg->show();
    m_userDlg->setFocus(Qt::OtherFocusReason);
}
