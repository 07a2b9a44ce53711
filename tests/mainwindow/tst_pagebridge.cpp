// The real window with the stand-in service's real pages: what the pages ask
// for through "qtui", what the window runs in them, and what a page cannot
// reach. Runs on the display of xvfb-run.
#include "FileBytes.h"
#include "GlobalConstants.h"
#include "GuiTestMain.h"
#include "ModalAnswerer.h"
#include "PageBridge.h"
#include "PageInterface.h"
#include "PageWindow.h"
#include "SettingsStore.h"
#include "TestService.h"
#include "UrlRecorder.h"
#include "UserDialog.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>

class TestPageBridge : public QObject
{
    Q_OBJECT

    TestService m_service;
    QTemporaryDir m_dir;
    PageWindow m_win;

    template <typename T = QWidget>
    T* widget(const char* name) const { return m_win.widget<T>(name); }
    QWebEngineView* gallery() const { return m_win.gallery(); }
    QWebEngineView* home() const { return m_win.home(); }
    UserDialog* panel() const { return m_win.window().findChild<UserDialog*>(); }
    QVariant js(QWebEngineView* view, const QString& script) { return PageWindow::js(view, script); }
    QString folder() const { return m_dir.filePath(QStringLiteral("downloads")); }
    void storeFolder() { writeSettingValue(kProductKey, kDownLoadPath, folder() + QLatin1Char('/')); }

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY2(m_service.start(), qPrintable(m_service.errorString()));
        m_service.exportEnvironment();
        QVERIFY(QDir().mkpath(folder()));
        QVERIFY(QDir().mkpath(m_dir.filePath(QStringLiteral("install"))));
        writeSettingValue(kProductKey, kInstallLocation, m_dir.filePath(QStringLiteral("install")));
    }

    void init()
    {
        for (const char* name : {kDownLoadPath, kDisplayVersion, kLastTimeVersion})
            removeSettingValue(kProductKey, name);
    }

    void cleanup()
    {
        if (m_win)
            js(home(), QStringLiteral("localStorage.clear()"));
        m_win.close();
    }

    // Log in from the title bar, the page's report, the avatar, log out from
    // a page and from the user panel.
    void account()
    {
        QVERIFY(m_win.open());
        auto* loginBtn = widget<QPushButton>("loginBtn");
        auto* userFrame = widget<QFrame>("userFrame");
        QVERIFY(!userFrame->isVisible());
        loginBtn->click();  // "toLogin()" in both pages
        const QString cardOpen = QStringLiteral("document.getElementById('loginLayer').classList.contains('open')");
        QVERIFY(js(gallery(), cardOpen).toBool() && js(home(), cardOpen).toBool());
        js(home(), QStringLiteral("document.getElementById('loginName').value = '小明';"
                                  "document.getElementById('loginPassword').value = 'secret';"
                                  "document.getElementById('loginSubmit').click()"));
        QTRY_VERIFY(userFrame->isVisible() && !loginBtn->isVisible());
        QCOMPARE(widget<QLabel>("userNameLabel")->text(), QStringLiteral("小明"));
        QCOMPARE(panel()->findChild<QLabel*>("numLabel")->text(), QStringLiteral("修图卷:12"));
        const int id = js(home(), QStringLiteral("Number(Melo.currentUser().id)")).toInt();
        QVERIFY(id > 0 && PageInterface::currentUserId() == id);

        // The avatar is fetched silently into the user's cache folder, never
        // the install folder, and shown.
        auto* face = widget<QLabel>("userFaceLabel");
        QTRY_VERIFY_WITH_TIMEOUT(!face->pixmap(Qt::ReturnByValue).isNull(), kPageTimeoutMs);
        const QString avatarPath = QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + "/MELO.jpg";
        QCOMPARE(fileBytes(avatarPath), m_service.request("GET", "/avatar.jpg").body);
        QVERIFY(QDir(m_dir.filePath(QStringLiteral("install"))).isEmpty());
        // A drawing that claims a huge size leaves the avatar as it was.
        const qint64 shown = face->pixmap(Qt::ReturnByValue).cacheKey();
        const QString drawing = m_dir.filePath(QStringLiteral("huge.jpg"));
        QVERIFY(writeFileBytes(drawing, "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"60000\" height=\"60000\"/>"));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^avatar .* refused: not a raster picture")));
        m_win.window().openLoadUserIcon(drawing);
        QCOMPARE(face->pixmap(Qt::ReturnByValue).cacheKey(), shown);
        QTRY_VERIFY(js(gallery(), QStringLiteral("document.body.dataset.login === 'in' && !") + cardOpen).toBool());

        // Logging out in a page reports four empty texts: the login button
        // returns, the user id stays, both pages reload.
        QSignalSpy homeLoads(home(), &QWebEngineView::loadFinished);
        js(gallery(), QStringLiteral("document.getElementById('pageLogout').click()"));
        QTRY_VERIFY(loginBtn->isVisible() && !userFrame->isVisible());
        QCOMPARE(PageInterface::currentUserId(), id);
        QVERIFY(homeLoads.wait(kPageTimeoutMs));
        QTRY_VERIFY_WITH_TIMEOUT(PageWindow::connected(home()), kPageTimeoutMs);

        // The panel's log-out runs "toLogout()" in the home page.
        js(home(), QStringLiteral("toLogin(); document.getElementById('loginDemo').click()"));
        QTRY_VERIFY(userFrame->isVisible());
        m_win.window().clickedShowUserInfo();
        QVERIFY(panel()->isVisible());
        panel()->findChild<QPushButton*>("quitBtn")->click();
        QVERIFY(!panel()->isVisible() && loginBtn->isVisible() && !userFrame->isVisible());
        QCOMPARE(js(home(), QStringLiteral("document.body.dataset.login + ':' + localStorage.length")).toString(),
                 QStringLiteral("out:0"));
    }

    void changeWebView_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<bool>("homeShown");
        QTest::newRow("index") << "index" << true;
        QTest::newRow("Index") << "Index" << false;
    }
    void changeWebView()
    {
        QFETCH(QString, page);
        QFETCH(bool, homeShown);
        QVERIFY(m_win.open());
        storeFolder();
        js(home(), QStringLiteral("document.getElementById('enterEditor').click()"));  // "开始修图"
        QTRY_VERIFY(widget("myWidget")->isVisible());
        QSignalSpy galleryLoads(gallery(), &QWebEngineView::loadFinished);
        QSignalSpy homeLoads(home(), &QWebEngineView::loadFinished);
        js(gallery(), QStringLiteral("qtui.recieveJsToChangeWebView('%1')").arg(page));
        QVERIFY(galleryLoads.wait(kPageTimeoutMs));
        QVERIFY(homeLoads.count() || homeLoads.wait(kPageTimeoutMs));
        QCOMPARE(home()->isVisible(), homeShown);
        QCOMPARE(gallery()->isVisible(), !homeShown);
        QVERIFY(!widget("myWidget")->isVisible());
    }

    void releaseNotes_data()
    {
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("lastVersion");
        QTest::newRow("updated") << "2.0.0.0" << "1.0.0.0";
        QTest::newRow("same version") << "2.0.0.0" << "2.0.0.0";
    }
    void releaseNotes()
    {
        QFETCH(QString, version);
        QFETCH(QString, lastVersion);
        writeSettingValue(kProductKey, kDisplayVersion, version);
        writeSettingValue(kProductKey, kLastTimeVersion, lastVersion);
        QVERIFY(m_win.open());
        const QString noteState = QStringLiteral(
            "document.getElementById('note').hidden ? '' : document.getElementById('noteVersion').textContent");
        QCOMPARE(js(home(), noteState).toString(), version == lastVersion ? QString() : version);
        QCOMPARE(readSettingValue(kProductKey, kLastTimeVersion), version);

        // Later loads of the same version run no script.
        QSignalSpy homeLoads(home(), &QWebEngineView::loadFinished);
        home()->reload();
        QVERIFY(homeLoads.wait(kPageTimeoutMs));
        QCOMPARE(js(home(), noteState).toString(), QString());
    }

    // The title bar's folder button, and "下载" on a gallery card, which
    // fetches the picture into the folder first.
    void openDownloadFolder_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("notice");  // empty: the folder is opened
        QTest::addColumn<bool>("card");
        QTest::newRow("not set") << "" << "请先设置下文件保存路径!" << false;
        QTest::newRow("vanished") << "/nonexistent/melo/" << "请先设置下文件保存路径!原先的路径已经不存在" << false;
        QTest::newRow("usable") << "<folder>" << "" << false;
        QTest::newRow("card") << "<folder>" << "" << true;
    }
    void openDownloadFolder()
    {
        QFETCH(QString, stored);
        QFETCH(QString, notice);
        QFETCH(bool, card);
        QVERIFY(m_win.open());
        if (stored == QLatin1String("<folder>"))
            stored = folder() + QLatin1Char('/');
        if (!stored.isEmpty())
            writeSettingValue(kProductKey, kDownLoadPath, stored);
        UrlRecorder files({QStringLiteral("file")});
        ModalAnswerer answerer;
        if (!notice.isEmpty()) {
            answerer.answer(QMessageBox::Yes);
            answerer.handle([](QWidget* dialog) { QMetaObject::invokeMethod(dialog, "clickedCancelBtn"); });
        }
        if (card)
            js(gallery(), PageWindow::clickOnCard(QStringLiteral("风光_rocket.jpg"), "keep"));
        else
            widget<QPushButton>("openDownLoadBtn")->click();
        if (notice.isEmpty()) {
            QTRY_COMPARE_WITH_TIMEOUT(files.urls, QList<QUrl>({QUrl::fromLocalFile(stored)}), kPageTimeoutMs);
        } else {
            QCOMPARE(answerer.seen().at(0).text, notice);
            QCOMPARE(answerer.seen().at(1).className, QStringLiteral("SettingDialog"));
            QVERIFY(files.urls.isEmpty());
        }
        QVERIFY(answerer.pending() == 0 && answerer.unexpectedCount() == 0);
        if (card)
            QCOMPARE(fileBytes(stored + QStringLiteral("风光_rocket.jpg")),
                     fileBytes(QStringLiteral(MELO_SAMPLES_DIR "/rocket.jpg")));
    }

    // The page sees exactly its interface; other names, unknown methods and
    // arguments outside the rules reach nothing.
    void pageReachesOnlyItsInterface()
    {
        QVERIFY(m_win.open());
        const QStringList methods =
            js(gallery(), QStringLiteral("Object.keys(qtui).filter(function (k) { return typeof qtui[k] === 'function' && k.indexOf('(') < 0; }).sort()"))
                .toStringList();
        QStringList expected = {
            "recieveJsMessage", "recieveJsMessageOpenDirectory", "recieveJsMessageAdjustment", "recieveJsMessageUser",
            "recieveJsToChangeWebView", "recieveJsToJumpUrl", "recieveJsToLogout", "webClearCache",
            "clickedShowAPPWebBtn", "clickedCloudBtn", "clickedRepairBtn", "clickedRefreshBtn", "clickedReturnCloudBtn",
            "clickedMaxBtn", "clickedFullPageBtn", "clickedNormalBtn", "clickedDisFullPageBtn", "clickedCloseBtn",
            "onMinSystemTray", "closeToWindows", "timerTimeoutToClose", "onActivated", "clickedHelpBtn",
            "clickedHomePageBtn", "clickedSettingBtn", "clickedShowAppBtn", "deleteLater",
            "propertyUpdate", "signalEmitted", "unwrapProperties", "unwrapQObject"};
        expected.sort();
        QCOMPARE(methods.join(" "), expected.join(" "));

        UrlRecorder files({QStringLiteral("file")});
        UrlRecorder webs({QStringLiteral("http"), QStringLiteral("javascript")});
        ModalAnswerer answerer;  // nothing may ask anything
        for (const char* slot : {"recieveJsToJumpUrl", "recieveJsToJumpUrl", "recieveJsMessageUser", "onActivated"})
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^qtui: %1 refused").arg(slot)));
        const QString send = QStringLiteral(
            "qt.webChannelTransport.send(JSON.stringify({type: 6, object: 'qtui', method: %1, args: %2}));");
        // Raw messages name window slots, an unknown index and QObject's
        // private slot (index 4); deleteLater() is not carried out either.
        js(gallery(), QStringLiteral("qtui.deleteLater();")
                          + send.arg("'openAdjustment'", "['/etc/hostname']")
                          + send.arg("'clickedAddBtn'", "[]")
                          + send.arg("9999", "[]") + send.arg("4", "[12345]")
                          + QStringLiteral("qtui.recieveJsToJumpUrl('file:///etc/passwd');"
                                           "qtui.recieveJsToJumpUrl('javascript:alert(1)');"
                                           "qtui.recieveJsMessageUser('', 'x'.repeat(70000), '', '');"
                                           "qtui.onActivated(99);"
                                           "document.getElementById('siteLink').click()"));
        // The page's own link to the site arrives after everything above.
        QTRY_COMPARE(webs.urls.size(), 1);
        QCOMPARE(webs.urls.at(0), QUrl(m_service.httpUrl(QStringLiteral("/"))));
        QVERIFY(files.urls.isEmpty());
        QCOMPARE(answerer.seen().size(), 0);
        QVERIFY(m_win.window().document().m_filePath.isEmpty());
        QVERIFY(!widget("myWidget")->isVisible());
        QVERIFY(widget("loginBtn")->isVisible());
        QVERIFY(m_win.window().findChild<PageBridge*>());
        QVERIFY(PageWindow::connected(gallery()));
    }

    // The views stay on the service's origin: a page elsewhere, reached from
    // the gallery, opens in the system browser and never gets the bridge.
    void navigationElsewhereOpensInBrowser_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<bool>("scripted");  // location.href, else a link the user clicks
        QTest::addColumn<QString>("opened");   // what the system browser gets
        // The service's own page under another host name: another origin
        // that would answer if it were loaded.
        const QString otherHost = QStringLiteral("http://localhost:%1/client/gallery.html?channel=")
                                      .arg(QUrl(m_service.httpBase()).port());
        const QString otherPort = QStringLiteral("http://127.0.0.1:%1/elsewhere.html").arg(TestService::unusedPort());
        QTest::newRow("other host, script") << otherHost << true << otherHost;
        QTest::newRow("other port, link") << otherPort << false << otherPort;
        // A service address whose answer sends the view elsewhere.
        QTest::newRow("service redirects elsewhere")
            << m_service.httpUrl(QStringLiteral("/test/redirect?to=") + QUrl::toPercentEncoding(otherHost)) << true
            << otherHost;
    }
    void navigationElsewhereOpensInBrowser()
    {
        QFETCH(QString, target);
        QFETCH(bool, scripted);
        QFETCH(QString, opened);
        QVERIFY(m_win.open());
        const QUrl gallery = this->gallery()->url();
        QSignalSpy urlChanges(this->gallery(), &QWebEngineView::urlChanged);
        UrlRecorder webs;
        if (scripted) {
            js(this->gallery(), QStringLiteral("location.href = '%1'").arg(target));
        } else {
            js(this->gallery(), QStringLiteral("var a = document.createElement('a'); a.href = '%1';"
                                               "document.body.appendChild(a); a.click()").arg(target));
        }
        QTRY_COMPARE_WITH_TIMEOUT(webs.urls, QList<QUrl>({QUrl(opened)}), kPageTimeoutMs);
        // Pop-ups stay refused: no window, nothing opened. The view still
        // shows the gallery with its bridge.
        const int windows = QApplication::topLevelWidgets().size();
        js(this->gallery(), QStringLiteral("window.open('%1')").arg(target));
        QVERIFY(PageWindow::connected(this->gallery()));
        QCOMPARE(QApplication::topLevelWidgets().size(), windows);
        QCOMPARE(this->gallery()->url(), gallery);
        QCOMPARE(urlChanges.count(), 0);
        QCOMPARE(webs.urls.size(), 1);
    }

    // A page's bad avatar address costs only the avatar: the user is still
    // shown logged in, with name and balance, and nothing is downloaded.
    // Page text is shown as it is: markup in a name or a balance is not
    // rendered (no red, no picture), neither in the title bar nor the panel.
    void userFromThePage_data()
    {
        QTest::addColumn<QString>("avatar");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("count");
        const QString red = QStringLiteral("<span style=\"background-color:#ff0000\">MMMM</span>");
        QTest::newRow("relative avatar") << "/avatar.jpg" << "小红" << "7";
        QTest::newRow("local file avatar") << "file:///etc/hostname" << "小红" << "7";
        QTest::newRow("markup") << "x.png" << red + "<img src=\"file:///etc/x.png\">" << red;
    }
    void userFromThePage()
    {
        QFETCH(QString, avatar);
        QFETCH(QString, name);
        QFETCH(QString, count);
        QVERIFY(m_win.open());
        ModalAnswerer answerer;  // nothing may ask anything
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^qtui: avatar skipped")));
        js(home(), QStringLiteral("qtui.recieveJsMessageUser('%1', '%2', '%3', '42')").arg(avatar, name, count));
        auto* title = widget<QLabel>("userNameLabel");
        QTRY_VERIFY(widget("userFrame")->isVisible());
        QVERIFY(!widget("loginBtn")->isVisible());
        const auto* panelName = panel()->findChild<QLabel*>("nameLabel");
        const auto* panelCount = panel()->findChild<QLabel*>("numLabel");
        QCOMPARE(title->text(), name);
        QCOMPARE(panelName->text(), name);
        QCOMPARE(panelCount->text(), QStringLiteral("修图卷:") + count);
        QCOMPARE(PageInterface::currentUserId(), 42);
        QVERIFY(m_win.window().findChildren<QDialog*>(QStringLiteral("DownLoadDialog")).isEmpty());
        QCOMPARE(answerer.seen().size(), 0);
        for (const QLabel* label : {static_cast<const QLabel*>(title), panelName, panelCount}) {
            const QImage shown = const_cast<QLabel*>(label)->grab().toImage().convertToFormat(QImage::Format_RGB32);
            int red = 0;
            for (int y = 0; y < shown.height(); ++y)
                for (int x = 0; x < shown.width(); ++x) {
                    const QColor c = shown.pixelColor(x, y);
                    red += c.red() > 200 && c.green() < 80 && c.blue() < 80;
                }
            QVERIFY2(red == 0, qPrintable(label->objectName()));
        }
    }

    // A download the page asks for under a name or address that is refused
    // tells the user why, quoting it literally.
    void refusedDownloadTellsWhy_data()
    {
        QTest::addColumn<QString>("call");
        QTest::addColumn<QString>("notice");
        QTest::newRow("climbing name") << "recieveJsMessage('http://127.0.0.1:1/a.png', '../.bashrc')"
                                       << "文件名“../.bashrc”不是单纯的文件名（不能含有路径），已取消下载！";
        QTest::newRow("name with markup") << "recieveJsMessageOpenDirectory('http://127.0.0.1:1/a.png', '<b>x</b>/a.png')"
                                          << "文件名“<b>x</b>/a.png”不是单纯的文件名（不能含有路径），已取消下载！";
        QTest::newRow("local file") << "recieveJsMessageAdjustment('file:///etc/passwd', 'passwd')"
                                    << "下载地址“file:///etc/passwd”不是网址，已取消下载！";
    }
    void refusedDownloadTellsWhy()
    {
        QFETCH(QString, call);
        QFETCH(QString, notice);
        QVERIFY(m_win.open());
        storeFolder();
        const QStringList files = QDir(folder()).entryList(QDir::Files);
        ModalAnswerer answerer;
        Qt::TextFormat format = Qt::AutoText;
        answerer.handle([&format](QWidget* widget) {
            auto* box = qobject_cast<QMessageBox*>(widget);
            format = box ? box->textFormat() : Qt::AutoText;
            widget->close();
        });
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^qtui: recieveJsMessage\\w* refused")));
        js(gallery(), QStringLiteral("qtui.") + call);
        QVERIFY(answerer.waitAllAnswered(kPageTimeoutMs));
        QCOMPARE(answerer.seen().size(), 1);
        QCOMPARE(answerer.seen().at(0).text, notice);
        // Shown as it is, whatever markup the page put in the name.
        QCOMPARE(format, Qt::PlainText);
        QVERIFY(m_win.window().findChildren<QDialog*>(QStringLiteral("DownLoadDialog")).isEmpty());
        QCOMPARE(QDir(folder()).entryList(QDir::Files), files);
    }
};

MELO_WEBENGINE_TEST_MAIN(TestPageBridge)
#include "tst_pagebridge.moc"
