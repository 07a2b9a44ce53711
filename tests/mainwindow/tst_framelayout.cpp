// Frame geometry at the two window sizes the application uses.
#include "FrameLayout.h"

#include <QTest>

class TestFrameLayout : public QObject
{
    Q_OBJECT
private slots:
    void frame_data()
    {
        QTest::addColumn<QSize>("window");
        QTest::addColumn<QList<QRect>>("expected");  // close, size, min, login, panel, view
        QTest::newRow("maximised") << QSize(1920, 1040)
                                   << QList<QRect>{{1871, 19, 19, 19}, {1822, 19, 19, 19}, {1773, 19, 19, 19},
                                                   {1545, 8, 120, 34}, {1520, 50, 120, 156}, {0, 50, 1920, 990}};
        QTest::newRow("minimum") << QSize(1440, 768)
                                 << QList<QRect>{{1391, 19, 19, 19}, {1342, 19, 19, 19}, {1293, 19, 19, 19},
                                                 {1065, 8, 120, 34}, {1040, 50, 120, 156}, {0, 50, 1440, 718}};
    }
    void frame()
    {
        QFETCH(QSize, window);
        const FrameLayout::Frame f = FrameLayout::frame(window);
        QCOMPARE(f.titleBar, QRect(0, 0, window.width(), 50));
        QTEST((QList<QRect>{f.closeBtn, f.maxBtn, f.minBtn, f.loginBtn, f.userPanel, f.view}), "expected");
    }

    void editor_data()
    {
        QTest::addColumn<QSize>("editor");
        QTest::addColumn<QList<QRect>>("expected");  // image area, add button, right panel, strips
        QTest::newRow("maximised") << QSize(1920, 990)
                                   << QList<QRect>{{0, 0, 1545, 990}, {712, 477, 120, 35}, {1545, 0, 375, 990},
                                                   {0, 0, 0, 928}, {0, 928, 0, 0}};
        QTest::newRow("minimum") << QSize(1440, 718)
                                 << QList<QRect>{{0, 0, 1065, 718}, {472, 341, 120, 35}, {1065, 0, 375, 718},
                                                 {0, 0, 0, 656}, {0, 656, 0, 0}};
    }
    void editor()
    {
        QFETCH(QSize, editor);
        const FrameLayout::Editor e = FrameLayout::editor(editor);
        QCOMPARE(e.contentFrame, QRect(0, 0, 375, editor.height()));
        QTEST((QList<QRect>{e.imageArea, e.addImageBtn, e.rightPanel, e.upperStrip, e.lowerStrip}), "expected");
    }
};

QTEST_APPLESS_MAIN(TestFrameLayout)
#include "tst_framelayout.moc"
