#include "PageBridge.h"

#include "BrisaQT.h"
#include "NoticeBox.h"
#include "PageInterface.h"

#include <QSystemTrayIcon>

using PageInterface::lengthRefusal;

PageBridge::PageBridge(BrisaQT* window) : QObject(window), m_window(window)
{
    setObjectName(QStringLiteral("qtui"));
}

// True when the call must not go on.
bool PageBridge::refuse(const char* slot, const QString& reason) const
{
    if (reason.isEmpty())
        return false;
    qWarning("qtui: %s refused: %s", slot, qUtf8Printable(reason));
    return true;
}

// A download the user asked for in the page must not vanish without a word.
bool PageBridge::refuseDownload(const char* slot, const QString& urls, const QString& names) const
{
    const PageInterface::Refusal refusal = PageInterface::downloadRefusal(urls, names);
    if (!refuse(slot, refusal.reason))
        return false;
    showNotice(refusal.notice);
    return true;
}

void PageBridge::recieveJsMessage(QString jsUrls, QString jsNames)
{
    if (!refuseDownload("recieveJsMessage", jsUrls, jsNames))
        m_window->recieveJsMessage(jsUrls, jsNames);
}

void PageBridge::recieveJsMessageOpenDirectory(QString jsUrl, QString jsName)
{
    if (!refuseDownload("recieveJsMessageOpenDirectory", jsUrl, jsName))
        m_window->recieveJsMessageOpenDirectory(jsUrl, jsName);
}

void PageBridge::recieveJsMessageAdjustment(QString jsUrl, QString jsName)
{
    if (!refuseDownload("recieveJsMessageAdjustment", jsUrl, jsName))
        m_window->recieveJsMessageAdjustment(jsUrl, jsName);
}

// A bad avatar address costs only the avatar (the window skips its download);
// the user is still shown as logged in.
void PageBridge::recieveJsMessageUser(QString jsIconUrl, QString jsName, QString jsNum, QString jsUserID)
{
    if (!refuse("recieveJsMessageUser", lengthRefusal({jsIconUrl, jsName, jsNum, jsUserID})))
        m_window->recieveJsMessageUser(jsIconUrl, jsName, jsNum, jsUserID);
}

void PageBridge::recieveJsToChangeWebView(QString page)
{
    if (!refuse("recieveJsToChangeWebView", lengthRefusal({page})))
        m_window->recieveJsToChangeWebView(page);
}

void PageBridge::recieveJsToJumpUrl(QString url)
{
    QString reason = lengthRefusal({url});
    if (reason.isEmpty() && !PageInterface::isWebAddress(url))
        reason = QStringLiteral("\"%1\" is not an http or https address").arg(url.left(200));
    if (!refuse("recieveJsToJumpUrl", reason))
        m_window->recieveJsToJumpUrl(url);
}

void PageBridge::recieveJsToLogout(bool bLogout) { m_window->recieveJsToLogout(bLogout); }
void PageBridge::webClearCache() { m_window->webClearCache(); }
void PageBridge::clickedShowAPPWebBtn() { m_window->clickedShowAPPWebBtn(); }

void PageBridge::clickedCloudBtn() { m_window->clickedCloudBtn(); }
void PageBridge::clickedRepairBtn() { m_window->clickedRepairBtn(); }
void PageBridge::clickedRefreshBtn() { m_window->clickedRefreshBtn(); }
void PageBridge::clickedReturnCloudBtn() { m_window->clickedReturnCloudBtn(); }
void PageBridge::clickedMaxBtn() { m_window->clickedMaxBtn(); }
void PageBridge::clickedFullPageBtn() { m_window->clickedFullPageBtn(); }
void PageBridge::clickedNormalBtn() { m_window->clickedNormalBtn(); }
void PageBridge::clickedDisFullPageBtn() { m_window->clickedDisFullPageBtn(); }
void PageBridge::clickedCloseBtn() { m_window->clickedCloseBtn(); }
void PageBridge::onMinSystemTray() { m_window->onMinSystemTray(); }
void PageBridge::closeToWindows() { m_window->closeToWindows(); }
void PageBridge::timerTimeoutToClose() { m_window->timerTimeoutToClose(); }

void PageBridge::onActivated(int reason)
{
    if (reason < QSystemTrayIcon::Unknown || reason > QSystemTrayIcon::MiddleClick) {
        refuse("onActivated", QStringLiteral("no activation reason %1").arg(reason));
        return;
    }
    m_window->onActivated(static_cast<QSystemTrayIcon::ActivationReason>(reason));
}

void PageBridge::clickedHelpBtn() { m_window->clickedHelpBtn(); }
void PageBridge::clickedHomePageBtn() { m_window->clickedHomePageBtn(); }
void PageBridge::clickedSettingBtn() { m_window->clickedSettingBtn(); }
void PageBridge::clickedShowAppBtn() { m_window->clickedShowAppBtn(); }
