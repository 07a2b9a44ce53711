// The real main window on the test's display: close behaviour, view
// switching with its warnings, the way into the editor, window sizes and
// layout, dragging, tray and delayed close, and the title-bar links.
#include "BrisaQT.h"
#include "GlobalConstants.h"
#include "GuiTestMain.h"
#include "ModalAnswerer.h"
#include "SettingsStore.h"
#include "UrlRecorder.h"
#include "UserDialog.h"
#include "WindowState.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <memory>

class TestFrame : public QObject
{
    Q_OBJECT

    std::unique_ptr<BrisaQT> m_window;
    QTemporaryDir m_folder;

    QWidget* widget(const char* name) const { return m_window->findChild<QWidget*>(QLatin1String(name)); }
    QPushButton* titleButton(const char* name, int index = 0) const
    {
        return widget("titleframe")->findChildren<QPushButton*>(QLatin1String(name)).value(index);
    }
    // Both size buttons are named "maxBtn": restore first, then maximise.
    QPushButton* restoreBtn() const { return titleButton("maxBtn", 0); }
    QPushButton* maximiseBtn() const { return titleButton("maxBtn", 1); }

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
        QCOMPARE(answerer.seen().size(), asks ? 1 : 0);
        QCOMPARE(asked, asks ? QStringLiteral("最小化到系统托盘，不退出程序") : QString());
        QTEST(m_window->isVisible(), "visible");
        QTEST(m_window->isMinimized(), "minimized");
        QCOMPARE(readSettingValue(kProductKey, kDirectClose), directClose == "-" ? QString() : directClose);
    }

    // Leaving the editor asks first; only Yes switches. The return button
    // hides the add-image button whatever the answer.
    void leaveEditor_data()
    {
        QTest::addColumn<QByteArray>("action");  // title button clicked, or "return"
        QTest::addColumn<bool>("yes");
        QTest::addColumn<QString>("warning");
        QTest::addColumn<QByteArray>("shown");
        QTest::addColumn<QByteArray>("checked");
        const QString toGallery = QStringLiteral("返回云图库后，当前图片不会被保存！");
        const QString toHome = QStringLiteral("返回首页后，当前图片不会被保存！");
        const QString back = QStringLiteral("返回后，当前页面将刷新！");
        QTest::newRow("gallery, no") << QByteArray("cloudBtn") << false << toGallery << QByteArray("myWidget") << QByteArray("repairBtn");
        QTest::newRow("gallery, yes") << QByteArray("cloudBtn") << true << toGallery << QByteArray("webEngineView") << QByteArray("cloudBtn");
        QTest::newRow("home, yes") << QByteArray("repairBtn") << true << toHome << QByteArray("webEngineView2") << QByteArray("repairBtn");
        QTest::newRow("return, no") << QByteArray("return") << false << back << QByteArray("myWidget") << QByteArray("repairBtn");
        QTest::newRow("return, yes") << QByteArray("return") << true << back << QByteArray("webEngineView") << QByteArray("repairBtn");
    }
    void leaveEditor()
    {
        QFETCH(QByteArray, action);
        QFETCH(bool, yes);
        QFETCH(QByteArray, shown);
        QFETCH(QByteArray, checked);
        // Come from the other view, so that the click toggles the buttons.
        if (action == "repairBtn")
            m_window->clickedCloudBtn();
        enterEditor();
        ModalAnswerer answerer;
        answerer.answer(yes ? QMessageBox::Yes : QMessageBox::No);
        if (action == "return")
            m_window->clickedReturnCloudBtn();
        else
            titleButton(action)->click();
        QCOMPARE(answerer.seen().size(), 1);
        QTEST(answerer.seen().at(0).text, "warning");
        for (const char* view : {"myWidget", "webEngineView", "webEngineView2"})
            QVERIFY2(widget(view)->isVisible() == (shown == view), view);
        QCOMPARE(widget("addImageBtn")->isVisible(), shown == "myWidget" && action != "return");
        const char* other = checked == "cloudBtn" ? "repairBtn" : "cloudBtn";
        QVERIFY(titleButton(checked)->isChecked() && !titleButton(other)->isChecked());
    }

    // Opens maximised on the home page; restore (then maximise) lay out the
    // real widgets, and whatever the editor puts into the image area fills it.
    void windowSizes_data()
    {
        QTest::addColumn<bool>("maximise");
        QTest::addColumn<QSize>("size");
        // The user panel is a fixed-size dialog: only its position follows.
        QTest::addColumn<QList<QRect>>("frame");   // close, size, min, login, user panel, view
        QTest::addColumn<QList<QRect>>("editor");  // image view, add button, right panel
        QTest::newRow("1440 x 768") << false << QSize(1440, 768)
            << QList<QRect>{{1391, 19, 19, 19}, {1342, 19, 19, 19}, {1293, 19, 19, 19}, {1065, 8, 120, 34},
                            {1040, 50, 356, 215}, {0, 50, 1440, 718}}
            << QList<QRect>{{0, 0, 1065, 718}, {472, 341, 120, 35}, {1065, 0, 375, 718}};
        QTest::newRow("1920 x 1040") << true << QSize(1920, 1040)
            << QList<QRect>{{1871, 19, 19, 19}, {1822, 19, 19, 19}, {1773, 19, 19, 19}, {1545, 8, 120, 34},
                            {1520, 50, 356, 215}, {0, 50, 1920, 990}}
            << QList<QRect>{{0, 0, 1545, 990}, {712, 477, 120, 35}, {1545, 0, 375, 990}};
    }
    void windowSizes()
    {
        QFETCH(bool, maximise);
        QCOMPARE(m_window->size(), QSize(1920, 1040));
        QVERIFY(isMainWindowMaximized() && restoreBtn()->isVisible());
        QVERIFY(widget("webEngineView2")->isVisible() && !widget("myWidget")->isVisible());
        QVERIFY(titleButton("repairBtn")->isChecked());
        enterEditor();
        auto* imageView = new QLabel(widget("imageArea"));
        QSignalSpy refits(m_window.get(), &BrisaQT::imageViewRefitRequested);
        restoreBtn()->click();
        if (maximise)
            maximiseBtn()->click();
        QTEST(m_window->size(), "size");
        QCOMPARE(isMainWindowMaximized(), maximise);
        QCOMPARE(restoreBtn()->isVisible(), maximise);
        QCOMPARE(maximiseBtn()->isVisible(), !maximise);
        QCOMPARE(refits.count(), maximise ? 2 : 1);
        QCOMPARE(maximiseBtn()->geometry(), restoreBtn()->geometry());
        QTEST((QList<QRect>{titleButton("closeBtn")->geometry(), restoreBtn()->geometry(),
                            titleButton("minBtn")->geometry(), widget("loginBtn")->geometry(),
                            m_window->findChild<UserDialog*>()->geometry(), widget("myWidget")->geometry()}),
              "frame");
        QTEST((QList<QRect>{imageView->geometry(), widget("addImageBtn")->geometry(), widget("rightPanel")->geometry()}),
              "editor");
    }

    void dragging_data()
    {
        QTest::addColumn<int>("pressY");
        QTest::addColumn<bool>("moves");
        QTest::newRow("title bar") << 20 << true;
        QTest::newRow("first row below") << 50 << false;
    }
    void dragging()
    {
        QFETCH(int, pressY);
        const QPoint start = m_window->pos();
        const QPoint press(1200, pressY);
        const QPoint to = press + QPoint(30, 40);
        QTest::mousePress(m_window.get(), Qt::LeftButton, Qt::NoModifier, press);
        QMouseEvent move(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_window.get(), &move);
        QTest::mouseRelease(m_window.get(), Qt::LeftButton, Qt::NoModifier, to);
        QFETCH(bool, moves);
        QCOMPARE(m_window->pos(), moves ? start + QPoint(30, 40) : start);
    }

    void trayAndDelayedClose()
    {
        m_window->showMinimized();
        m_window->onActivated(QSystemTrayIcon::Context);
        QVERIFY(m_window->isMinimized());
        m_window->onActivated(QSystemTrayIcon::Trigger);
        QVERIFY(!m_window->isMinimized());
        m_window->closeToWindows();
        QVERIFY(m_window->isVisible());  // hidden a moment later
        QTRY_VERIFY_WITH_TIMEOUT(!m_window->isVisible(), 2000);
    }

    void linksAndPanels()
    {
        UrlRecorder recorder;
        titleButton("helpBtn")->click();
        m_window->clickedHomePageBtn();
        QCOMPARE(recorder.urls, QList<QUrl>({QUrl(helpArticleUrl()), QUrl(serviceHttpsBase() + "/")}));
        ModalAnswerer answerer;
        answerer.handle([](QWidget* dialog) { dialog->findChild<QPushButton*>("closeBtn")->click(); });
        titleButton("showAppBtn")->click();
        QCOMPARE(answerer.seen().value(0).className, QStringLiteral("ShowAppDialog"));

        auto* panel = m_window->findChild<UserDialog*>();
        QVERIFY(!panel->isVisible());
        widget("userFrame")->findChild<QPushButton*>("userShowBtn")->click();
        QVERIFY(panel->isVisible());
    }
};

MELO_WEBENGINE_TEST_MAIN(TestFrame)
#include "tst_frame.moc"
