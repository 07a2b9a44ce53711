// The window's side of the embedded pages: loading both pages with their
// channels, what the pages ask for through the bridge object (downloads,
// account, views, links), the results of those downloads, and the scripts
// the window runs in the pages.
#include "BrisaQT.h"

#include "AvatarPicture.h"
#include "DownLoadDialog.h"
#include "GlobalConstants.h"
#include "ImageSaver.h"
#include "MyMousePressLabel.h"
#include "NoticeBox.h"
#include "PageBridge.h"
#include "PageInterface.h"
#include "ServicePage.h"
#include "SettingsStore.h"
#include "UserDialog.h"

#include <QDesktopServices>
#include <QFrame>
#include <QPixmap>
#include <QPushButton>
#include <QTimer>
#include <QUrl>
#include <QWebChannel>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineView>

namespace {

const char kFolderFirst[] = "请先设置下文件保存路径!";
constexpr int kCacheClearSettleMs = 1000;

// The view gets a page that stays on the service's origin, and the channel
// with the bridge for the service's pages only.
QWebChannel* pageChannel(QObject* window, QObject* bridge, QWebEngineView* view)
{
    auto* page = new ServicePage(view->page()->profile(), {serviceHttpBase(), serviceHttpsBase()}, view);
    page->setObjectName(view->objectName());
    view->setPage(page);
    auto* channel = new QWebChannel(window);
    channel->registerObject(QStringLiteral("qtui"), bridge);
    page->setServiceChannel(channel);
    return channel;
}

} // namespace

void BrisaQT::setupPageChannels()
{
    const QString channel = readSettingValue(kProductKey, kChannel);
    webClearCache();
    m_pageBridge = new PageBridge(this);
    m_galleryChannel = pageChannel(this, m_pageBridge, m_webEngineView);
    m_homeChannel = pageChannel(this, m_pageBridge, m_webEngineView2);
    connect(m_webEngineView2, &QWebEngineView::loadFinished, this, &BrisaQT::toWebUpdateWebNote);
    // The engine must not start a navigation while a cache clearing runs (a
    // page loading meanwhile can stall for good) and cannot tell when the
    // clearing is over, so the pages are loaded after it has had time to end.
    const QUrl gallery(PageInterface::pageAddress(serviceHttpBase(), kGalleryPagePath, channel));
    const QUrl home(PageInterface::pageAddress(serviceHttpBase(), kHomePagePath, channel));
    QTimer::singleShot(kCacheClearSettleMs, this, [this, gallery, home] {
        m_webEngineView->load(gallery);
        m_webEngineView2->load(home);
    });
}

void BrisaQT::connectPageControls()
{
    connect(m_loginBtn, &QPushButton::clicked, this, &BrisaQT::clickedLoginBtn);
    connect(m_openDownLoadBtn, &QPushButton::clicked, this, &BrisaQT::clickedOpenDownLoadBtn);
    connect(m_userDlg, &UserDialog::userLogout, this, &BrisaQT::onUserLogout);
}

// ---- Downloads the pages ask for --------------------------------------------

void BrisaQT::recieveJsMessage(QString jsUrls, QString jsNames)
{
    (new DownLoadDialog(this, jsUrls, jsNames, DownLoadDialog::Batch))->show();
}

void BrisaQT::recieveJsMessageOpenDirectory(QString jsUrl, QString jsName)
{
    if (!ensureDownloadFolder())
        return;
    auto* dialog = new DownLoadDialog(this, jsUrl, jsName, DownLoadDialog::KeepPicture);
    connect(dialog, &DownLoadDialog::onOpenDirectory, this, &BrisaQT::openDownLoadDirectory);
    dialog->show();
}

void BrisaQT::recieveJsMessageAdjustment(QString jsUrl, QString jsName)
{
    if (!ensureDownloadFolder())
        return;
    m_webEngineView->hide();
    m_webEngineView2->hide();
    m_myWidget->show();
    auto* dialog = new DownLoadDialog(this, jsUrl, jsName, DownLoadDialog::AdjustPicture);
    connect(dialog, &DownLoadDialog::onAdjustment, this, &BrisaQT::openAdjustment);
    dialog->show();
}

void BrisaQT::clickedOpenDownLoadBtn()
{
    openDownLoadDirectory();
}

void BrisaQT::openDownLoadDirectory()
{
    QString folder;
    switch (downloadFolderState(&folder)) {
    case DownloadFolderState::NotSet:
        showNotice(QString::fromUtf8(kFolderFirst));
        runSettingDialog(2, 1);
        break;
    case DownloadFolderState::Vanished:
        showNotice(QString::fromUtf8(kFolderFirst) + QStringLiteral("原先的路径已经不存在"));
        runSettingDialog(2, 1);
        break;
    case DownloadFolderState::Usable:
        QDesktopServices::openUrl(QUrl::fromLocalFile(QStringLiteral("%1").arg(folder)));
        break;
    }
}

// ---- Account ------------------------------------------------------------------

void BrisaQT::recieveJsMessageUser(QString jsIconUrl, QString jsName, QString jsNum, QString jsUserID)
{
    if (jsIconUrl.isEmpty() && jsName.isEmpty() && jsNum.isEmpty() && jsUserID.isEmpty()) {
        // Nobody is logged in.
        m_loginBtn->show();
        m_userFrame->hide();
        return;
    }
    m_loginBtn->hide();
    m_userFrame->show();
    m_userNameLabel->setText(jsName);
    if (!jsIconUrl.isEmpty())
        PageInterface::setCurrentUserId(PageInterface::userIdFromPage(jsUserID));
    m_userDlg->setUserInfo(jsName, jsNum);
    // An empty address is passed on (that download fails visibly); any other
    // address that is not a web address only skips the avatar.
    if (!jsIconUrl.isEmpty() && !PageInterface::isWebAddress(jsIconUrl)) {
        qWarning("qtui: avatar skipped: \"%s\" is not an http or https address", qUtf8Printable(jsIconUrl.left(200)));
        return;
    }
    // The avatar is fetched silently: the dialog stays hidden.
    auto* dialog = new DownLoadDialog(this, jsIconUrl,
                                      QStringLiteral("%1%2").arg(QString::fromUtf8(kProductName),
                                                                 QString::fromUtf8(kAvatarFileSuffix)),
                                      DownLoadDialog::UserIcon);
    connect(dialog, &DownLoadDialog::onLoadUserIcon, this, &BrisaQT::openLoadUserIcon);
}

void BrisaQT::openLoadUserIcon(QString szTemp)
{
    if (szTemp.isEmpty())
        return;
    // A body that is no acceptable picture (an error page, a vector drawing,
    // a header claiming a huge size) leaves the previous one.
    QString why;
    const QImage picture = readAvatarPicture(szTemp, &why);
    if (picture.isNull()) {
        qWarning("avatar %s refused: %s", qUtf8Printable(szTemp), qUtf8Printable(why));
        return;
    }
    m_userFaceLabel->setPixmap(QPixmap::fromImage(
        picture.scaled(m_userFaceLabel->frameSize(), Qt::KeepAspectRatio, Qt::FastTransformation)));
    m_userDlg->setUserPicture(szTemp);
}

void BrisaQT::clickedLoginBtn()
{
    m_webEngineView->page()->runJavaScript(QStringLiteral("toLogin()"));
    m_webEngineView2->page()->runJavaScript(QStringLiteral("toLogin()"));
}

void BrisaQT::onUserLogout()
{
    m_webEngineView2->page()->runJavaScript(QStringLiteral("toLogout()"));
    m_userFrame->hide();
    m_loginBtn->show();
}

void BrisaQT::recieveJsToLogout(bool)
{
    m_webEngineView->reload();
    m_webEngineView2->reload();
}

// ---- Pages and links ------------------------------------------------------------

void BrisaQT::recieveJsToChangeWebView(QString page)
{
    // Exact and case-sensitive: only "index" means the home page.
    const bool home = page == QLatin1String("index");
    m_webEngineView->setVisible(!home);
    m_webEngineView2->setVisible(home);
    m_webEngineView->reload();
    m_webEngineView2->reload();
    m_myWidget->hide();
}

void BrisaQT::recieveJsToJumpUrl(QString url)
{
    QDesktopServices::openUrl(QUrl(url));
}

void BrisaQT::webClearCache()
{
    m_webEngineView->page()->profile()->clearHttpCache();
}

// Release notes once after an update: the first successful home-page load
// with a new installed version shows them and records that version.
void BrisaQT::toWebUpdateWebNote(bool bload)
{
    if (!bload)
        return;
    const QString displayVersion = readSettingValue(kProductKey, kDisplayVersion);
    const QString lastVersion = readSettingValue(kProductKey, kLastTimeVersion);
    if (displayVersion == lastVersion)
        return;
    m_webEngineView2->page()->runJavaScript(PageInterface::updateNoteScript(displayVersion, lastVersion));
    writeSettingValue(kProductKey, kLastTimeVersion, displayVersion);
}
