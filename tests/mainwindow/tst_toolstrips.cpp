// Where the floating tool strips go: never over the shown photograph, for
// the preview sizes a photograph can have in either window size, and always
// inside the image area; in the large window the view keeps its full size.
#include "FitRule.h"
#include "FrameLayout.h"

#include <QPixmap>
#include <QTest>

namespace {

const QSize kLargeArea(1545, 990);   // image area of the maximised window
const QSize kSmallArea(1065, 718);   // and of the normal one

// The photo as the view shows it, in image-area coordinates.
QRect photoIn(const FrameLayout::ToolStrips& place, const QSize& photo)
{
    return FrameLayout::shownPhotoRect(place.view.size(), photo).translated(place.view.topLeft());
}

} // namespace

class TestToolStrips : public QObject
{
    Q_OBJECT

private slots:
    void clearOfThePhoto_data()
    {
        QTest::addColumn<QSize>("area");
        QTest::addColumn<QSize>("photo");
        QTest::addColumn<bool>("column");
        QTest::addColumn<bool>("viewNarrowed");
        const QList<QSize> previews{{1200, 900}, {1200, 675}, {743, 990}, {1200, 1200}};
        // Which arrangement each takes, the same in both windows; only the
        // small window ever narrows the view.
        const QList<bool> column{true, false, true, true}, smallNarrowed{true, false, false, false};
        for (int i = 0; i < previews.size(); ++i) {
            const QSize p = previews[i];
            const QByteArray name = QByteArray::number(p.width()) + "x" + QByteArray::number(p.height());
            QTest::newRow("large " + name) << kLargeArea << p << column[i] << false;
            QTest::newRow("small " + name) << kSmallArea << p << column[i] << smallNarrowed[i];
        }
        QTest::newRow("large, short and wide") << kLargeArea << QSize(1200, 300) << false << false;
        QTest::newRow("small, the view's own shape") << kSmallArea << QSize(1200, 809) << true << true;
        QTest::newRow("no photo") << kSmallArea << QSize() << false << false;
    }
    void clearOfThePhoto()
    {
        QFETCH(QSize, area);
        QFETCH(QSize, photo);
        const FrameLayout::ToolStrips place = FrameLayout::toolStrips(area, photo);
        const QRect shown = photoIn(place, photo);
        QVERIFY(!shown.intersects(place.toolStrip) && !shown.intersects(place.cropStrip));
        QVERIFY(!place.toolStrip.intersects(place.cropStrip));
        const QRect whole(QPoint(0, 0), area);
        QVERIFY(whole.contains(place.toolStrip) && whole.contains(place.cropStrip) && whole.contains(place.view));
        QTEST(place.column, "column");
        QTEST(place.view != whole, "viewNarrowed");
        if (place.view != whole)   // the view lies beside the strips
            QVERIFY(!place.view.intersects(place.toolStrip) && !place.view.intersects(place.cropStrip));
    }

    // Whatever the photograph's shape, the large window keeps the view at the
    // size the crop tool lays out for, and no strip covers the photo.
    void largeViewNeverNarrows()
    {
        for (int side = 60; side <= 1200; side += 7) {
            for (const QSize photo : {QSize(1200, side), QSize(std::min(side, 990), 990)}) {
                const FrameLayout::ToolStrips place = FrameLayout::toolStrips(kLargeArea, photo);
                QCOMPARE(place.view, QRect(QPoint(0, 0), kLargeArea));
                const QRect shown = photoIn(place, photo);
                QVERIFY(!shown.intersects(place.toolStrip) && !shown.intersects(place.cropStrip));
            }
        }
    }

    // The rectangle the layout keeps clear holds the pixmap the view really
    // shows, at most one pixel larger.
    void shownRectHoldsTheFittedPixmap_data()
    {
        QTest::addColumn<QSize>("view");
        QTest::addColumn<QSize>("photo");
        for (const QSize view : {kLargeArea, kSmallArea, QSize(917, 718)}) {
            for (const QSize photo : {QSize(1200, 900), QSize(1200, 675), QSize(743, 990), QSize(1200, 1200),
                                      QSize(1200, 809), QSize(333, 990)}) {
                QTest::addRow("%dx%d in %dx%d", photo.width(), photo.height(), view.width(), view.height())
                    << view << photo;
            }
        }
    }
    void shownRectHoldsTheFittedPixmap()
    {
        QFETCH(QSize, view);
        QFETCH(QSize, photo);
        QPixmap pixmap(photo);
        pixmap.fill(Qt::gray);
        const QSize fitted = fitPixmap(pixmap, view).size();
        const QSize kept = FrameLayout::shownPhotoRect(view, photo).size();
        QVERIFY2(kept.width() >= fitted.width() && kept.width() <= fitted.width() + 1
                     && kept.height() >= fitted.height() && kept.height() <= fitted.height() + 1,
                 qPrintable(QStringLiteral("%1x%2 kept for %3x%4 shown")
                                .arg(kept.width()).arg(kept.height()).arg(fitted.width()).arg(fitted.height())));
    }
};

QTEST_MAIN(TestToolStrips)
#include "tst_toolstrips.moc"
