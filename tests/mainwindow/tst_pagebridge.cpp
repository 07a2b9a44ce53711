// The real window with the stand-in service's real pages: what the pages ask
// for through "qtui", what the window runs in them, and what a page cannot
// reach. Runs on the display of xvfb-run.
#include "BrisaQT.h"
#include "FileBytes.h"
#include "GlobalConstants.h"
#include "GuiTestMain.h"
#include "ModalAnswerer.h"
#include "PageBridge.h"
#include "PageInterface.h"
#include "PageScript.h"
#include "SettingsStore.h"
#include "TestService.h"
#include "UrlRecorder.h"
#include "UserDialog.h"

#include <QDir>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QWebEngineView>

#include <memory>

// Opens the window in a test function and stops that function if it failed.
#define OPEN_WINDOW()                        \
    do {                                     \
        openWindow();                        \
        if (QTest::currentTestFailed())      \
            return;                          \
    } while (false)

namespace {

const int kPageTimeoutMs = 20000;

} // namespace

class TestPageBridge : public QObject
{
    Q_OBJECT

    TestService m_service;
    QTemporaryDir m_dir;
    std::unique_ptr<BrisaQT> m_window;

    template <typename T = QWidget>
    T* widget(const char* name) const
    {
        return m_window->findChild<T*>(QLatin1String(name));
    }
    QWebEngineView* gallery() const { return widget<QWebEngineView>("webEngineView"); }
    QWebEngineView* home() const { return widget<QWebEngineView>("webEngineView2"); }
    UserDialog* panel() const { return m_window->findChild<UserDialog*>(); }
    QVariant js(QWebEngineView* view, const QString& script) { return runPageScript(view->page(), script); }
    QString folder() const { return m_dir.filePath(QStringLiteral("downloads")); }

    bool pageConnected(QWebEngineView* view)
    {
        return js(view, QStringLiteral("!!(window.Melo && Melo.inClient())")).toBool();
    }

    // The window with both pages loaded and connected; the home page has
    // reported that nobody is logged in.
    void openWindow()
    {
        m_window = std::make_unique<BrisaQT>();
        QSignalSpy homeLoads(home(), &QWebEngineView::loadFinished);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QVERIFY(homeLoads.count() || homeLoads.wait(kPageTimeoutMs));
        QVERIFY2(homeLoads.at(0).at(0).toBool(), qPrintable(home()->url().toString()));
        QTRY_VERIFY_WITH_TIMEOUT(widget("loginBtn")->isVisible(), kPageTimeoutMs);
        QTRY_VERIFY_WITH_TIMEOUT(pageConnected(gallery()), kPageTimeoutMs);
        QTRY_VERIFY_WITH_TIMEOUT(js(gallery(), QStringLiteral("document.querySelectorAll('.card').length")).toInt() > 0,
                                 kPageTimeoutMs);
    }

    void storeFolder() { writeSettingValue(kProductKey, kDownLoadPath, folder() + QLatin1Char('/')); }

    QString clickOnCard(const char* name, const char* op) const
    {
        return QStringLiteral("document.querySelector('.card[data-name=\"%1\"] [data-op=%2]').click()")
            .arg(QString::fromUtf8(name), QLatin1String(op));
    }

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
        if (m_window)
            js(home(), QStringLiteral("localStorage.clear()"));
        m_window.reset();
    }

    // Log in from the title bar, the page's report, the avatar, log out from
    // a page and from the user panel.
    void account()
    {
        OPEN_WINDOW();
        auto* loginBtn = widget<QPushButton>("loginBtn");
        auto* userFrame = widget<QFrame>("userFrame");
        QVERIFY(!userFrame->isVisible());

        loginBtn->click();  // "toLogin()" in both pages
        const QString cardOpen = QStringLiteral("document.getElementById('loginLayer').classList.contains('open')");
        QVERIFY(js(gallery(), cardOpen).toBool());
        QVERIFY(js(home(), cardOpen).toBool());
        js(home(), QStringLiteral("document.getElementById('loginName').value = '小明';"
                                  "document.getElementById('loginPassword').value = 'secret';"
                                  "document.getElementById('loginSubmit').click()"));
        QTRY_VERIFY(userFrame->isVisible());
        QVERIFY(!loginBtn->isVisible());
        QCOMPARE(widget<QLabel>("userNameLabel")->text(), QStringLiteral("小明"));
        QCOMPARE(panel()->findChild<QLabel*>("nameLabel")->text(), QStringLiteral("小明"));
        QCOMPARE(panel()->findChild<QLabel*>("numLabel")->text(), QStringLiteral("修图卷:12"));
        const int id = js(home(), QStringLiteral("Number(Melo.currentUser().id)")).toInt();
        QVERIFY(id > 0);
        QCOMPARE(PageInterface::currentUserId(), id);

        // The avatar is fetched silently into the install folder and shown.
        auto* face = widget<QLabel>("userFaceLabel");
        QTRY_VERIFY_WITH_TIMEOUT(!face->pixmap(Qt::ReturnByValue).isNull(), kPageTimeoutMs);
        const QString avatarPath = m_dir.filePath(QStringLiteral("install/MELO.jpg"));
        QCOMPARE(fileBytes(avatarPath), m_service.request("GET", "/avatar.jpg").body);
        const QImage avatar(avatarPath);
        QCOMPARE(panel()->findChild<QLabel*>("faceLabel")->pixmap(Qt::ReturnByValue).toImage(),
                 QPixmap::fromImage(avatar).scaled(QSize(50, 50), Qt::KeepAspectRatio).toImage());
        // The gallery follows the login made in the home page.
        QTRY_VERIFY(js(gallery(), QStringLiteral("document.body.dataset.login === 'in' && !") + cardOpen).toBool());

        // Logging out in a page reports four empty texts: the login button
        // returns, the user id stays, both pages reload.
        QSignalSpy homeLoads(home(), &QWebEngineView::loadFinished);
        js(gallery(), QStringLiteral("document.getElementById('pageLogout').click()"));
        QTRY_VERIFY(loginBtn->isVisible());
        QVERIFY(!userFrame->isVisible());
        QCOMPARE(PageInterface::currentUserId(), id);
        QVERIFY(homeLoads.wait(kPageTimeoutMs));
        QTRY_VERIFY_WITH_TIMEOUT(pageConnected(home()), kPageTimeoutMs);

        // The panel's log-out runs "toLogout()" in the home page.
        js(home(), QStringLiteral("toLogin(); document.getElementById('loginDemo').click()"));
        QTRY_VERIFY(userFrame->isVisible());
        m_window->clickedShowUserInfo();
        QVERIFY(panel()->isVisible());
        panel()->findChild<QPushButton*>("quitBtn")->click();
        QVERIFY(!panel()->isVisible());
        QVERIFY(loginBtn->isVisible());
        QVERIFY(!userFrame->isVisible());
        QCOMPARE(js(home(), QStringLiteral("document.body.dataset.login + ':' + localStorage.length")).toString(),
                 QStringLiteral("out:0"));
    }

    void changeWebView_data()
    {
        QTest::addColumn<QString>("page");
        QTest::addColumn<bool>("homeShown");
        QTest::newRow("index") << "index" << true;
        QTest::newRow("Index") << "Index" << false;
        QTest::newRow("gallery") << "gallery" << false;
    }
    void changeWebView()
    {
        QFETCH(QString, page);
        QFETCH(bool, homeShown);
        OPEN_WINDOW();
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
        QTest::newRow("first start") << "2.0.0.0" << "";
        QTest::newRow("same version") << "2.0.0.0" << "2.0.0.0";
    }
    void releaseNotes()
    {
        QFETCH(QString, version);
        QFETCH(QString, lastVersion);
        writeSettingValue(kProductKey, kDisplayVersion, version);
        if (!lastVersion.isEmpty())
            writeSettingValue(kProductKey, kLastTimeVersion, lastVersion);
        OPEN_WINDOW();
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

    // "修图" on a gallery card with no download folder stored: the way is
    // blocked until a folder is stored, then the photo is downloaded there
    // and handed to the editor.
    void retouchFromGallery()
    {
        OPEN_WINDOW();
        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);
        answerer.handle([](QWidget* dialog) { QMetaObject::invokeMethod(dialog, "clickedCancelBtn"); });
        answerer.answer(QMessageBox::Yes);
        const QString target = folder();
        answerer.handle([&answerer, target](QWidget* dialog) {
            answerer.chooseFile(target);
            dialog->findChild<QPushButton*>("openFileBtn")->click();
            dialog->findChild<QPushButton*>("okBtn")->click();
        });
        js(gallery(), clickOnCard("人像_astronaut.png", "retouch"));
        QVERIFY(answerer.waitAllAnswered(kPageTimeoutMs));
        QStringList kinds;
        for (const ModalAnswerer::Seen& seen : answerer.seen())
            kinds << seen.className;
        QCOMPARE(kinds, QStringList({"QMessageBox", "SettingDialog", "QMessageBox", "SettingDialog", "QFileDialog"}));

        const QString expected = readSettingValue(kProductKey, kDownLoadPath) + QStringLiteral("//人像_astronaut.png");
        QTRY_COMPARE_WITH_TIMEOUT(m_window->document().m_filePath, expected, kPageTimeoutMs);
        QCOMPARE(fileBytes(expected), fileBytes(QStringLiteral(MELO_SAMPLES_DIR "/astronaut.png")));
        QVERIFY(widget("myWidget")->isVisible());
        QVERIFY(!gallery()->isVisible());
        QVERIFY(!home()->isVisible());
    }

    // "下载" on a card opens the folder once the picture is there; several
    // selected cards are fetched one after the other.
    void keepAndBatchFromGallery()
    {
        OPEN_WINDOW();
        storeFolder();
        UrlRecorder files({QStringLiteral("file")});
        js(gallery(), clickOnCard("风光_rocket.jpg", "keep"));
        QTRY_COMPARE_WITH_TIMEOUT(files.urls.size(), 1, kPageTimeoutMs);
        QCOMPARE(files.urls.at(0), QUrl::fromLocalFile(folder() + QLatin1Char('/')));
        QCOMPARE(fileBytes(folder() + QStringLiteral("/风光_rocket.jpg")),
                 fileBytes(QStringLiteral(MELO_SAMPLES_DIR "/rocket.jpg")));

        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);  // "多文件下载已经全部完成"
        js(gallery(), QStringLiteral("['动物鸟类_chelsea.png', '黑白影调_camera.png'].forEach(function (name) {"
                                     "  document.querySelector('.card[data-name=\"' + name + '\"] .pick input').click(); });"
                                     "document.getElementById('batchDownload').click()"));
        QVERIFY(answerer.waitAllAnswered(kPageTimeoutMs));
        QCOMPARE(answerer.seen().at(0).text, QStringLiteral("多文件下载已经全部完成"));
        QCOMPARE(fileBytes(folder() + QStringLiteral("/动物鸟类_chelsea.png")),
                 fileBytes(QStringLiteral(MELO_SAMPLES_DIR "/chelsea.png")));
        QCOMPARE(fileBytes(folder() + QStringLiteral("/黑白影调_camera.png")),
                 fileBytes(QStringLiteral(MELO_SAMPLES_DIR "/camera.png")));
    }

    void openDownloadFolder_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("notice");  // empty: the folder is opened
        QTest::newRow("not set") << "" << "请先设置下文件保存路径!";
        QTest::newRow("vanished") << "/nonexistent/melo/" << "请先设置下文件保存路径!原先的路径已经不存在";
        QTest::newRow("usable") << "<folder>" << "";
    }
    void openDownloadFolder()
    {
        QFETCH(QString, stored);
        QFETCH(QString, notice);
        OPEN_WINDOW();
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
        widget<QPushButton>("openDownLoadBtn")->click();
        QCOMPARE(answerer.unexpectedCount(), 0);
        QCOMPARE(answerer.pending(), 0);
        if (notice.isEmpty()) {
            QCOMPARE(files.urls, QList<QUrl>({QUrl::fromLocalFile(stored)}));
        } else {
            QCOMPARE(answerer.seen().at(0).text, notice);
            QCOMPARE(answerer.seen().at(1).className, QStringLiteral("SettingDialog"));
            QVERIFY(files.urls.isEmpty());
        }
    }

    // The page sees exactly its interface; other names, unknown methods and
    // arguments outside the rules reach nothing.
    void pageReachesOnlyItsInterface()
    {
        OPEN_WINDOW();
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
            // helpers of the channel's own script
            "propertyUpdate", "signalEmitted", "unwrapProperties", "unwrapQObject"};
        expected.sort();
        QCOMPARE(methods.join(" "), expected.join(" "));

        UrlRecorder files({QStringLiteral("file")});
        UrlRecorder webs({QStringLiteral("http")});
        ModalAnswerer answerer;  // nothing may ask anything
        for (const char* slot : {"recieveJsToJumpUrl", "recieveJsMessageUser", "recieveJsMessageAdjustment", "onActivated"})
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
                                           "qtui.recieveJsMessageUser('', 'x'.repeat(70000), '', '');"
                                           "qtui.recieveJsMessageAdjustment('file:///etc/passwd', 'passwd');"
                                           "qtui.onActivated(99);"
                                           "document.getElementById('siteLink').click()"));
        // The page's own link to the site arrives after everything above.
        QTRY_COMPARE(webs.urls.size(), 1);
        QCOMPARE(webs.urls.at(0), QUrl(m_service.httpUrl(QStringLiteral("/"))));
        QVERIFY(files.urls.isEmpty());
        QCOMPARE(answerer.seen().size(), 0);
        QVERIFY(m_window->document().m_filePath.isEmpty());
        QVERIFY(!widget("myWidget")->isVisible());
        QVERIFY(widget("loginBtn")->isVisible());
        QVERIFY(m_window->findChild<PageBridge*>());
        QVERIFY(pageConnected(gallery()));
    }
};

MELO_WEBENGINE_TEST_MAIN(TestPageBridge)
#include "tst_pagebridge.moc"
