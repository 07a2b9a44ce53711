// The scene combo box opens its list from a click anywhere on it, its
// centred read-only text included, and the list then stays open for a
// choice. Clicks go through the window, as the pointer's do, so a list that
// lies over the box receives the release.
#include "GradingPanel.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

class TestSceneBox : public QObject
{
    Q_OBJECT

private slots:
    void clickOpensTheList_data()
    {
        QTest::addColumn<double>("where");   // across the box's width, 0 to 1
        QTest::newRow("text, centre") << 0.5;
        QTest::newRow("text, left end") << 0.05;
        QTest::newRow("arrow") << 0.95;
    }
    void clickOpensTheList()
    {
        QFETCH(double, where);
        GradingPanel panel;
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        QComboBox* box = panel.sceneBox();
        const QPoint point(int(box->width() * where), box->height() / 2);
        QTest::mouseClick(panel.windowHandle(), Qt::LeftButton, Qt::NoModifier, box->mapTo(&panel, point));
        QTRY_VERIFY(box->view()->isVisible());
        QTest::qWait(QApplication::doubleClickInterval() + 50);
        QVERIFY(box->view()->isVisible());
        QCOMPARE(box->currentIndex(), -1);   // opening chose nothing

        // A click on an item of the open list chooses it.
        QSignalSpy chosen(box, QOverload<int>::of(&QComboBox::currentIndexChanged));
        QAbstractItemView* list = box->view();
        const QPoint item = list->visualRect(list->model()->index(2, 0)).center();
        QTest::mouseClick(list->window()->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                          list->viewport()->mapTo(list->window(), item));
        QTRY_COMPARE(box->currentIndex(), 2);
        QVERIFY(!list->isVisible());
    }
};

QTEST_MAIN(TestSceneBox)
#include "tst_scenebox.moc"
