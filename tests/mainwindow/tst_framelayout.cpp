// Frame geometry at the two window sizes the application uses and one in
// between, and which presses start a title-bar drag.
#include "FrameLayout.h"

#include <QTest>

Q_DECLARE_METATYPE(Qt::MouseButton)

class TestFrameLayout : public QObject
{
    Q_OBJECT
private slots:
    void frame_data()
    {
        QTest::addColumn<QSize>("window");
        QTest::addColumn<QRect>("closeBtn");
        QTest::addColumn<QRect>("maxBtn");
        QTest::addColumn<QRect>("minBtn");
        QTest::addColumn<QRect>("loginBtn");
        QTest::addColumn<QRect>("userPanel");
        QTest::addColumn<QRect>("view");
        QTest::newRow("maximised") << QSize(1920, 1040) << QRect(1871, 19, 19, 19) << QRect(1822, 19, 19, 19)
                                   << QRect(1773, 19, 19, 19) << QRect(1545, 8, 120, 34)
                                   << QRect(1520, 50, 120, 156) << QRect(0, 50, 1920, 990);
        QTest::newRow("minimum") << QSize(1440, 768) << QRect(1391, 19, 19, 19) << QRect(1342, 19, 19, 19)
                                 << QRect(1293, 19, 19, 19) << QRect(1065, 8, 120, 34)
                                 << QRect(1040, 50, 120, 156) << QRect(0, 50, 1440, 718);
        QTest::newRow("between") << QSize(1600, 900) << QRect(1551, 19, 19, 19) << QRect(1502, 19, 19, 19)
                                 << QRect(1453, 19, 19, 19) << QRect(1225, 8, 120, 34)
                                 << QRect(1200, 50, 120, 156) << QRect(0, 50, 1600, 850);
    }
    void frame()
    {
        QFETCH(QSize, window);
        const FrameLayout::Frame f = FrameLayout::frame(window);
        QCOMPARE(f.titleBar, QRect(0, 0, window.width(), 50));
        QTEST(f.closeBtn, "closeBtn");
        QTEST(f.maxBtn, "maxBtn");
        QTEST(f.minBtn, "minBtn");
        QTEST(f.loginBtn, "loginBtn");
        QTEST(f.userPanel, "userPanel");
        QTEST(f.view, "view");
    }

    void editor_data()
    {
        QTest::addColumn<QSize>("editor");
        QTest::addColumn<QRect>("imageArea");
        QTest::addColumn<QRect>("addImageBtn");
        QTest::addColumn<QRect>("rightPanel");
        QTest::addColumn<QRect>("upperStrip");
        QTest::addColumn<QRect>("lowerStrip");
        QTest::newRow("maximised") << QSize(1920, 990) << QRect(0, 0, 1545, 990) << QRect(712, 477, 120, 35)
                                   << QRect(1545, 0, 375, 990) << QRect(0, 0, 0, 928) << QRect(0, 928, 0, 0);
        QTest::newRow("minimum") << QSize(1440, 718) << QRect(0, 0, 1065, 718) << QRect(472, 341, 120, 35)
                                 << QRect(1065, 0, 375, 718) << QRect(0, 0, 0, 656) << QRect(0, 656, 0, 0);
    }
    void editor()
    {
        QFETCH(QSize, editor);
        const FrameLayout::Editor e = FrameLayout::editor(editor);
        QTEST(e.imageArea, "imageArea");
        QTEST(e.addImageBtn, "addImageBtn");
        QTEST(e.rightPanel, "rightPanel");
        QCOMPARE(e.contentFrame, QRect(0, 0, 375, editor.height()));
        QTEST(e.upperStrip, "upperStrip");
        QTEST(e.lowerStrip, "lowerStrip");
    }

    void drag_data()
    {
        QTest::addColumn<QPoint>("pos");
        QTest::addColumn<Qt::MouseButton>("button");
        QTest::addColumn<bool>("systemMaximized");
        QTest::addColumn<bool>("drags");
        QTest::newRow("title bar") << QPoint(900, 20) << Qt::LeftButton << false << true;
        QTest::newRow("last title row") << QPoint(900, 49) << Qt::LeftButton << false << true;
        QTest::newRow("first row below") << QPoint(900, 50) << Qt::LeftButton << false << false;
        QTest::newRow("editor") << QPoint(900, 600) << Qt::LeftButton << false << false;
        QTest::newRow("right button") << QPoint(900, 20) << Qt::RightButton << false << false;
        QTest::newRow("system maximised") << QPoint(900, 20) << Qt::LeftButton << true << false;
    }
    void drag()
    {
        QFETCH(QPoint, pos);
        QFETCH(Qt::MouseButton, button);
        QFETCH(bool, systemMaximized);
        QTEST(FrameLayout::pressStartsDrag(pos, button, systemMaximized), "drags");
    }
};

QTEST_APPLESS_MAIN(TestFrameLayout)
#include "tst_framelayout.moc"
