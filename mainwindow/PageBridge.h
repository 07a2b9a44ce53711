// The object the embedded pages know as "qtui". It offers the pages exactly
// their interface and forwards each call to the main window; the window's
// other slots (document, grading, crop, save, file dialogs) stay out of the
// pages' reach. Page-supplied arguments are checked here: a call with
// arguments outside PageInterface's rules is refused with a warning, and a
// refused download also tells the user why.
//
// The slot names beginning "recieve" are spelt so on purpose: the pages call
// them by these names.
#pragma once

#include <QObject>
#include <QString>

class BrisaQT;

class PageBridge : public QObject
{
    Q_OBJECT
public:
    explicit PageBridge(BrisaQT* window);

public slots:
    // -- Downloads, account and pages -------------------------------------
    void recieveJsMessage(QString jsUrls, QString jsNames);
    void recieveJsMessageOpenDirectory(QString jsUrl, QString jsName);
    void recieveJsMessageAdjustment(QString jsUrl, QString jsName);
    void recieveJsMessageUser(QString jsIconUrl, QString jsName, QString jsNum, QString jsUserID);
    void recieveJsToChangeWebView(QString page);
    // Opens http and https addresses in the system browser; others are refused.
    void recieveJsToJumpUrl(QString url);
    void recieveJsToLogout(bool bLogout);
    void webClearCache();
    void clickedShowAPPWebBtn();

    // -- The frame's views, window size, close and tray -------------------
    void clickedCloudBtn();
    void clickedRepairBtn();
    void clickedRefreshBtn();
    void clickedReturnCloudBtn();
    void clickedMaxBtn();
    void clickedFullPageBtn();
    void clickedNormalBtn();
    void clickedDisFullPageBtn();
    void clickedCloseBtn();
    void onMinSystemTray();
    void closeToWindows();
    void timerTimeoutToClose();
    // The tray activation reason as its number (QSystemTrayIcon's values).
    void onActivated(int reason);

    // -- Links and dialogs of the title bar --------------------------------
    void clickedHelpBtn();
    void clickedHomePageBtn();
    void clickedSettingBtn();
    void clickedShowAppBtn();

private:
    bool refuse(const char* slot, const QString& reason) const;
    bool refuseDownload(const char* slot, const QString& urls, const QString& names) const;

    BrisaQT* m_window;
};
