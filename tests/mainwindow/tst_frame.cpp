// The real main window on the test's display: close behaviour, view
// switching with its warnings, window size and layout, dragging, the way
// into the editor, delayed close and the links of the title bar.
#include "BrisaQT.h"
#include "FrameLayout.h"
#include "GlobalConstants.h"
#include "GuiTestMain.h"
#include "ModalAnswerer.h"
#include "SettingsStore.h"
#include "UserDialog.h"
#include "WindowState.h"

#include <QDesktopServices>
#include <QFrame>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QWebEngineView>

#include <memory>

class UrlRecorder : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> urls;
public slots:
    void open(const QUrl& url) { urls.append(url); }
};

class TestFrame : public QObject
{
    Q_OBJECT

    std::unique_ptr<BrisaQT> m_window;
    QTemporaryDir m_folder;

    template <typename T = QWidget>
    T* widget(const char* name) const
    {
        return m_window->findChild<T*>(QLatin1String(name));
    }
    QPushButton* titleButton(const char* name) const
    {
        return widget<QFrame>("titleframe")->findChild<QPushButton*>(QLatin1String(name));
    }
    QPushButton* restoreBtn() const { return widget<QFrame>("titleframe")->findChildren<QPushButton*>("maxBtn").at(0); }
    QPushButton* maximiseBtn() const { return widget<QFrame>("titleframe")->findChildren<QPushButton*>("maxBtn").at(1); }

    void enterEditor()
    {
        writeSettingValue(kProductKey, kDownLoadPath, m_folder.path() + QLatin1Char('/'));
        m_window->clickedRefreshBtn();
        QVERIFY(widget("myWidget")->isVisible());
    }

private slots:
    void init()
    {
        removeSettingValue(kProductKey, kDirectClose);
        removeSettingValue(kProductKey, kDownLoadPath);
        m_window = std::make_unique<BrisaQT>();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }
    void cleanup() { m_window.reset(); }

    void startState()
    {
        QCOMPARE(m_window->size(), QSize(1920, 1040));
        QVERIFY(isMainWindowMaximized());
        QVERIFY(m_window->windowFlags() & Qt::FramelessWindowHint);
        QVERIFY(widget("webEngineView2")->isVisible());
        QVERIFY(!widget("myWidget")->isVisible());
        QVERIFY(titleButton("repairBtn")->isChecked());
        QVERIFY(!titleButton("loginBtn")->isVisible());
        QVERIFY(!widget("userFrame")->isVisible());
        QCOMPARE(widget<QWebEngineView>("webEngineView")->contextMenuPolicy(), Qt::NoContextMenu);
        QCOMPARE(widget<QWebEngineView>("webEngineView2")->contextMenuPolicy(), Qt::NoContextMenu);
    }

    void closeButton_data()
    {
        QTest::addColumn<QString>("directClose");  // "-": absent
        QTest::addColumn<bool>("asks");
        QTest::addColumn<bool>("visible");
        QTest::addColumn<bool>("minimized");
        QTest::newRow("absent") << "-" << true << true << false;
        QTest::newRow("0") << "0" << false << true << true;
        QTest::newRow("1") << "1" << false << false << false;
        QTest::newRow("2") << "2" << true << true << false;
    }
    void closeButton()
    {
        QFETCH(QString, directClose);
        QFETCH(bool, asks);
        if (directClose != QLatin1String("-"))
            writeSettingValue(kProductKey, kDirectClose, directClose);

        ModalAnswerer answerer;
        QString asked;
        if (asks) {
            answerer.handle([&asked](QWidget* dialog) {
                asked = dialog->findChild<QRadioButton*>("minRadio")->text();
                QMetaObject::invokeMethod(dialog, "clickedCancelBtn");
            });
        }
        titleButton("closeBtn")->click();
        QCOMPARE(answerer.unexpectedCount(), 0);
        QCOMPARE(answerer.pending(), 0);
        if (asks) {
            QCOMPARE(answerer.seen().at(0).className, QStringLiteral("SettingDialog"));
            QCOMPARE(asked, QStringLiteral("最小化到系统托盘，不退出程序"));
        }
        QTEST(m_window->isVisible(), "visible");
        QTEST(m_window->isMinimized(), "minimized");
        QCOMPARE(readSettingValue(kProductKey, kDirectClose), directClose == "-" ? QString() : directClose);
    }

    void leaveEditorWarnings_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("startInGallery");
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QString>("warning");
        const QString toGallery = QStringLiteral("返回云图库后，当前图片不会被保存！");
        const QString toHome = QStringLiteral("返回首页后，当前图片不会被保存！");
        QTest::newRow("gallery, no") << "cloudBtn" << false << false << toGallery;
        QTest::newRow("gallery, yes") << "cloudBtn" << false << true << toGallery;
        QTest::newRow("home, no") << "repairBtn" << true << false << toHome;
        QTest::newRow("home, yes") << "repairBtn" << true << true << toHome;
    }
    void leaveEditorWarnings()
    {
        QFETCH(QString, button);
        QFETCH(bool, startInGallery);
        QFETCH(bool, yes);
        QFETCH(QString, warning);
        if (startInGallery)
            m_window->clickedCloudBtn();
        enterEditor();
        const bool cloudChecked = titleButton("cloudBtn")->isChecked();

        ModalAnswerer answerer;
        answerer.answer(yes ? QMessageBox::Yes : QMessageBox::No);
        titleButton(button.toLatin1())->click();
        QCOMPARE(answerer.seen().size(), 1);
        QCOMPARE(answerer.seen().at(0).text, warning);

        const bool toGallery = button == QLatin1String("cloudBtn");
        QCOMPARE(widget("myWidget")->isVisible(), !yes);
        QCOMPARE(widget("addImageBtn")->isVisible(), !yes);
        QCOMPARE(widget("webEngineView")->isVisible(), yes && toGallery);
        QCOMPARE(widget("webEngineView2")->isVisible(), yes && !toGallery);
        QCOMPARE(titleButton("cloudBtn")->isChecked(), yes ? toGallery : cloudChecked);
        QCOMPARE(titleButton("repairBtn")->isChecked(), yes ? !toGallery : !cloudChecked);
    }

    void returnToGallery_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }
    void returnToGallery()
    {
        QFETCH(bool, yes);
        enterEditor();
        ModalAnswerer answerer;
        answerer.answer(yes ? QMessageBox::Yes : QMessageBox::No);
        m_window->clickedReturnCloudBtn();
        QCOMPARE(answerer.seen().size(), 1);
        QCOMPARE(answerer.seen().at(0).text, QStringLiteral("返回后，当前页面将刷新！"));
        QVERIFY(!widget("addImageBtn")->isVisible());
        QCOMPARE(widget("myWidget")->isVisible(), !yes);
        QCOMPARE(widget("webEngineView")->isVisible(), yes);
    }

    void refreshWaitsForFolder()
    {
        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);
        answerer.handle([](QWidget* dialog) { QMetaObject::invokeMethod(dialog, "clickedCancelBtn"); });
        answerer.answer(QMessageBox::Yes);
        const QString folder = m_folder.path();
        answerer.handle([&answerer, folder](QWidget* dialog) {
            answerer.chooseFile(folder);
            dialog->findChild<QPushButton*>("openFileBtn")->click();
            dialog->findChild<QPushButton*>("okBtn")->click();
        });
        m_window->clickedRefreshBtn();

        QStringList kinds;
        for (const ModalAnswerer::Seen& seen : answerer.seen())
            kinds << seen.className;
        QCOMPARE(kinds, QStringList({"QMessageBox", "SettingDialog", "QMessageBox", "SettingDialog", "QFileDialog"}));
        QCOMPARE(answerer.seen().at(0).text, QStringLiteral("请先设置下文件保存路径!"));
        QCOMPARE(readSettingValue(kProductKey, kDownLoadPath), folder + QLatin1Char('/'));
        QVERIFY(widget("myWidget")->isVisible());
        QVERIFY(widget("addImageBtn")->isVisible());
        QVERIFY(!widget("webEngineView")->isVisible());
        QVERIFY(!widget("webEngineView2")->isVisible());
    }

    // Restore and maximise on the real window; the layout follows the frame
    // rules and whatever the editor puts into the image area fills it.
    void windowSizes()
    {
        enterEditor();
        auto* imageView = new QLabel(widget("imageArea"));
        QSignalSpy refits(m_window.get(), &BrisaQT::imageViewRefitRequested);

        for (bool maximise : {false, true}) {
            (maximise ? maximiseBtn() : restoreBtn())->click();
            const QSize size = maximise ? FrameLayout::kMaximizedSize : FrameLayout::kNormalSize;
            QCOMPARE(m_window->size(), size);
            QCOMPARE(isMainWindowMaximized(), maximise);
            QCOMPARE(restoreBtn()->isVisible(), maximise);
            QCOMPARE(maximiseBtn()->isVisible(), !maximise);

            const FrameLayout::Frame f = FrameLayout::frame(size);
            QCOMPARE(titleButton("closeBtn")->geometry(), f.closeBtn);
            QCOMPARE(restoreBtn()->geometry(), f.maxBtn);
            QCOMPARE(titleButton("minBtn")->geometry(), f.minBtn);
            QCOMPARE(widget("myWidget")->geometry(), f.view);
            const FrameLayout::Editor e = FrameLayout::editor(f.view.size());
            QCOMPARE(widget("rightPanel")->geometry(), e.rightPanel);
            QCOMPARE(widget("rightContentFrame")->geometry(), e.contentFrame);
            QCOMPARE(imageView->geometry(), QRect(QPoint(0, 0), e.imageArea.size()));
            QCOMPARE(widget("addImageBtn")->geometry(), e.addImageBtn);
        }
        QCOMPARE(refits.count(), 2);
    }

    void dragging_data()
    {
        QTest::addColumn<int>("pressY");
        QTest::addColumn<bool>("moves");
        QTest::newRow("title bar") << 20 << true;
        QTest::newRow("first row below") << 50 << false;
        QTest::newRow("far below") << 600 << false;
    }
    void dragging()
    {
        QFETCH(int, pressY);
        QFETCH(bool, moves);
        const QPoint start = m_window->pos();
        const QPoint press(1200, pressY);
        QTest::mousePress(m_window.get(), Qt::LeftButton, Qt::NoModifier, press);
        QMouseEvent move(QEvent::MouseMove, press + QPoint(30, 40), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_window.get(), &move);
        QTest::mouseRelease(m_window.get(), Qt::LeftButton, Qt::NoModifier, press + QPoint(30, 40));
        QCOMPARE(m_window->pos(), moves ? start + QPoint(30, 40) : start);
    }

    void delayedClose()
    {
        m_window->closeToWindows();
        QVERIFY(m_window->isVisible());
        QTRY_VERIFY_WITH_TIMEOUT(!m_window->isVisible(), 2000);
    }

    void trayActivation()
    {
        m_window->showMinimized();
        m_window->onActivated(QSystemTrayIcon::Context);
        QVERIFY(m_window->isMinimized());
        m_window->onActivated(QSystemTrayIcon::Trigger);
        QVERIFY(!m_window->isMinimized());
        // Hiding into a tray the desktop does not have would lose the window.
        m_window->onMinSystemTray();
        QCOMPARE(m_window->isVisible(), QSystemTrayIcon::isSystemTrayAvailable() ? false : true);
    }

    void linksAndPanels()
    {
        UrlRecorder recorder;
        QDesktopServices::setUrlHandler(QStringLiteral("http"), &recorder, "open");
        QDesktopServices::setUrlHandler(QStringLiteral("https"), &recorder, "open");
        titleButton("helpBtn")->click();
        m_window->clickedHomePageBtn();
        QDesktopServices::unsetUrlHandler(QStringLiteral("http"));
        QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
        QCOMPARE(recorder.urls, QList<QUrl>({QUrl(helpArticleUrl()), QUrl(serviceHttpsBase() + "/")}));

        ModalAnswerer answerer;
        answerer.handle([](QWidget* dialog) {
            dialog->findChild<QPushButton*>("closeBtn")->click();
        });
        titleButton("showAppBtn")->click();
        QCOMPARE(answerer.seen().size(), 1);
        QCOMPARE(answerer.seen().at(0).className, QStringLiteral("ShowAppDialog"));

        auto* panel = m_window->findChild<UserDialog*>();
        QVERIFY(!panel->isVisible());
        widget<QPushButton>("userShowBtn")->click();
        QVERIFY(panel->isVisible());
        QCOMPARE(panel->pos(), QPoint(1920 - 400, 50));
    }
};

MELO_WEBENGINE_TEST_MAIN(TestFrame)
#include "tst_frame.moc"
