#include "MyDrawLabel.h"
#include "WindowState.h"

#include <QSignalSpy>
#include <QTest>

namespace {

void moveTo(QWidget* w, QPoint p, Qt::MouseButtons buttons)
{
    QMouseEvent move(QEvent::MouseMove, p, w->mapToGlobal(p), Qt::NoButton, buttons, Qt::NoModifier);
    QApplication::sendEvent(w, &move);
}

// Press at from, drag through the points, release at the last one.
void drag(QWidget* w, QPoint from, const QVector<QPoint>& through)
{
    moveTo(w, from, Qt::NoButton);
    QTest::mousePress(w, Qt::LeftButton, {}, from);
    for (const QPoint& p : through)
        moveTo(w, p, Qt::LeftButton);
    QTest::mouseRelease(w, Qt::LeftButton, {}, through.isEmpty() ? from : through.last());
}

// A point of the handle band: fractions 0, 1/2, 1 of the rectangle's extent,
// pulled 10 px outwards on the sides it lies on.
QPoint handlePoint(const QRect& r, int fx, int fy)
{
    const int x = r.x() + r.width() * fx / 2 + (fx == 0 ? -10 : fx == 2 ? 10 : 0);
    const int y = r.y() + r.height() * fy / 2 + (fy == 0 ? -10 : fy == 2 ? 10 : 0);
    return QPoint(x, y);
}

} // namespace

class TestDrawLabel : public QObject
{
    Q_OBJECT
    MyDrawLabel* m_view = nullptr;

private slots:
    void init()
    {
        setMainWindowMaximized(true);
        m_view = new MyDrawLabel;
        m_view->resize(crop::viewSize(true));
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view));
        m_view->setImage(cv::Mat(900, 1200, CV_8UC3, cv::Scalar(40, 80, 120)));
        m_view->setCropMode(true);
    }
    void cleanup() { delete m_view; }

    void hoverCursors_data()
    {
        QTest::addColumn<int>("ratio");
        QTest::addColumn<int>("fx");
        QTest::addColumn<int>("fy");
        QTest::addColumn<int>("cursor");
        QTest::newRow("free inside") << 0 << 1 << 1 << int(Qt::SizeAllCursor);
        QTest::newRow("free top-left") << 0 << 0 << 0 << int(Qt::SizeFDiagCursor);
        QTest::newRow("free right") << 0 << 2 << 1 << int(Qt::SizeHorCursor);
        QTest::newRow("16:9 bottom-right") << 5 << 2 << 2 << int(Qt::SizeFDiagCursor);
        QTest::newRow("16:9 bottom") << 5 << 1 << 2 << int(Qt::ArrowCursor);
    }
    void hoverCursors()
    {
        QFETCH(int, ratio);
        QFETCH(int, fx);
        QFETCH(int, fy);
        m_view->setRatioIndex(ratio);
        moveTo(m_view, handlePoint(m_view->cropRect(), fx, fy), Qt::NoButton);
        QTEST(int(m_view->cursor().shape()), "cursor");
        moveTo(m_view, QPoint(5, 5), Qt::NoButton);
        QCOMPARE(m_view->cursor().shape(), Qt::ArrowCursor);
    }

    // Steps of 40 px to the left: the square at x 322 reaches 202, the next
    // step would leave the image (x 172), so it stops one step short.
    void moveStopsAtImageBorder()
    {
        m_view->setRatioIndex(1);
        QCOMPARE(m_view->cropRect(), QRect(322, 45, 900, 900));
        QVector<QPoint> steps;
        for (int i = 1; i <= 6; ++i)
            steps << QPoint(700 - 40 * i, 500);
        drag(m_view, QPoint(700, 500), steps);
        QCOMPARE(m_view->cropRect(), QRect(202, 45, 900, 900));
        // Back to the right: the pointer position, not the frame, is followed.
        drag(m_view, QPoint(700, 500), {QPoint(740, 500)});
        QCOMPARE(m_view->cropRect(), QRect(242, 45, 900, 900));
        QCOMPARE(m_view->cursor().shape(), Qt::ArrowCursor);
    }

    void lockedResizeKeepsRatio_data()
    {
        QTest::addColumn<int>("ratio");
        QTest::addColumn<int>("fx");
        QTest::addColumn<int>("fy");
        QTest::addColumn<QPoint>("delta");
        QTest::newRow("16:9 bottom-right in") << 5 << 2 << 2 << QPoint(-150, -100);
        QTest::newRow("3:2 top-right in") << 4 << 2 << 0 << QPoint(-80, 61);
    }
    void lockedResizeKeepsRatio()
    {
        QFETCH(int, ratio);
        QFETCH(int, fx);
        QFETCH(int, fy);
        QFETCH(QPoint, delta);
        m_view->setRatioIndex(ratio);
        const QRect before = m_view->cropRect();
        const QPoint from = handlePoint(before, fx, fy);
        drag(m_view, from, {from + delta / 2, from + delta});
        const QRect after = m_view->cropRect();
        QVERIFY(after.width() < before.width());
        // Whole ratio units come off both sides (the default rectangle itself
        // may be a truncated pixel off the exact ratio).
        const auto parts = crop::ratioParts(ratio);
        QCOMPARE((before.width() - after.width()) * parts[1], (before.height() - after.height()) * parts[0]);
        QVERIFY(m_view->imageRect().contains(after));
        QCOMPARE(m_view->frameLabel()->geometry(), after);
        // Growing past the image is refused: the rectangle stays.
        drag(m_view, handlePoint(after, fx, fy), {handlePoint(after, fx, fy) - delta * 3});
        QCOMPARE(m_view->cropRect(), after);
    }

    void freeResizeClampsToBound()
    {
        QCOMPARE(m_view->boundRect(), QRect(172, 45, 1200, 900));
        drag(m_view, QPoint(1380, 950), {QPoint(900, 600)});
        QCOMPARE(m_view->cropRect(), QRect(172, 45, 728, 555));
        drag(m_view, QPoint(900, 300), {QPoint(1500, 300), QPoint(3000, 20)});
        QCOMPARE(m_view->cropRect(), QRect(172, 45, 1200, 555));   // right edge clamped
        drag(m_view, QPoint(165, 40), {QPoint(-50, -50)});
        QCOMPARE(m_view->cropRect(), QRect(172, 45, 1200, 555));
    }
};

QTEST_MAIN(TestDrawLabel)
#include "tst_drawlabel.moc"
