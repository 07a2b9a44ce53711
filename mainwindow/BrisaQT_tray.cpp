// Tray icon with its menu, hiding into the tray, and the delayed close the
// pages can ask for.
#include "BrisaQT.h"

#include "GlobalConstants.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QMenu>
#include <QTimer>

void BrisaQT::buildTray()
{
    m_trayIcon = new QSystemTrayIcon(QIcon(QString::fromUtf8(kAppIconPath)), this);
    m_trayIcon->setToolTip(QString::fromUtf8(kProductName) + QStringLiteral("客户端"));

    m_trayMenu = new QMenu(this);
    m_trayMenu->setStyleSheet(QStringLiteral("QMenu::item{background-color:white;color:black;}"));
    m_showAction = m_trayMenu->addAction(QStringLiteral("显示"));
    m_quitAction = m_trayMenu->addAction(QStringLiteral("退出"));
    connect(m_showAction, &QAction::triggered, this, &QWidget::showNormal);
    connect(m_quitAction, &QAction::triggered, qApp, &QCoreApplication::quit);
    m_trayIcon->setContextMenu(m_trayMenu);
    connect(m_trayIcon, &QSystemTrayIcon::activated, this, &BrisaQT::onActivated);
    // Without a tray on the desktop this shows nothing until one appears.
    m_trayIcon->show();
}

void BrisaQT::onActivated(QSystemTrayIcon::ActivationReason reason)
{
    if (reason != QSystemTrayIcon::DoubleClick && reason != QSystemTrayIcon::Trigger)
        return;
    showNormal();
    raise();
    activateWindow();
}

void BrisaQT::onMinSystemTray()
{
    // Without a tray a hidden window could not be brought back.
    if (QSystemTrayIcon::isSystemTrayAvailable())
        hide();
    else
        showMinimized();
}

void BrisaQT::closeToWindows()
{
    if (!m_closeTimer) {
        m_closeTimer = std::make_unique<QTimer>();
        connect(m_closeTimer.get(), &QTimer::timeout, this, &BrisaQT::timerTimeoutToClose);
    }
    m_closeTimer->start(50);
}

void BrisaQT::timerTimeoutToClose()
{
    if (!m_closeTimer || !m_closeTimer->isActive())
        return;
    m_closeTimer->stop();
    close();
}

void BrisaQT::closeEvent(QCloseEvent* event)
{
    QMainWindow::closeEvent(event);
    // The program does not end with its last window (a notice closed while
    // this window is hidden in the tray must not end it), so this window's
    // close ends it instead.
    if (event->isAccepted() && !QApplication::quitOnLastWindowClosed())
        QCoreApplication::quit();
}
