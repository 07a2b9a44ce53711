// The smart recommendation's draw and history, without a window.
#include "SmartDraw.h"

#include <QProcess>
#include <QTest>

#include <cstdlib>

namespace {

// A generator that hands out the given numbers in order.
SmartDraw::Generator scripted(QVector<int> numbers)
{
    auto next = std::make_shared<int>(0);
    return [numbers, next] { return numbers.value((*next)++, 0); };
}

QString pickText(const RandomPick& p)
{
    return QStringLiteral("%1 %2 %3 %4").arg(p.scene).arg(p.top).arg(p.mid).arg(p.down);
}

} // namespace

class TestSmartDraw : public QObject
{
    Q_OBJECT

private slots:
    // The history keeps the newest six; a repeated pick is appended again
    // and stepping starts from its first occurrence.
    void history()
    {
        // Each draw: scene coin 1, scene n % 6, top coin 1, top n % 4, mid and down off.
        QVector<int> numbers;
        for (int n : {0, 1, 2, 3, 4, 5, 1})
            numbers << 1 << n << 1 << n << 0 << 0;
        SmartDraw smart(scripted(numbers));
        for (int i = 0; i < 7; ++i)
            smart.draw();
        QCOMPARE(smart.history().size(), SmartDraw::kHistorySize);
        QCOMPARE(smart.history().first().scene, 1);                    // draw 0 dropped
        QCOMPARE(smart.pick(), (RandomPick{1, 1, -1, -1}));            // equal to history[0]
        QCOMPARE(smart.stepBack(), SmartDraw::Step::AtEnd);            // found at 0, not at 5
        QVERIFY(smart.stepForward() == SmartDraw::Step::Moved && smart.pick().scene == 2);
        QVERIFY(smart.stepBack() == SmartDraw::Step::Moved && smart.pick().scene == 1);
        SmartDraw empty;
        QVERIFY(empty.stepForward() == SmartDraw::Step::NotFound && empty.stepBack() == SmartDraw::Step::NotFound);
    }

    // The generator is the C library's, never seeded: every fresh process
    // draws the same picks, the ones of the default seed.
    void sameDrawsInEveryRun()
    {
        QStringList runs;
        for (int i = 0; i < 2; ++i) {
            QProcess probe;
            probe.start(QStringLiteral(SMARTDRAW_PROBE), QStringList());
            QVERIFY(probe.waitForFinished(10000));
            runs << QString::fromLatin1(probe.readAllStandardOutput());
        }
        QCOMPARE(runs.at(0), runs.at(1));
        std::srand(1);
        SmartDraw smart;
        const QString first = pickText(smart.draw());
        const QString second = pickText(smart.draw());
        QCOMPARE(runs.at(0), first + '\n' + second + '\n');
    }
};

QTEST_GUILESS_MAIN(TestSmartDraw)
#include "tst_smartdraw.moc"
