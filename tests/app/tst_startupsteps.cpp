// Paths and texts start-up and the installer role derive from settings.
#include "DesktopEntry.h"
#include "StartupSteps.h"

#include <QTest>

class TestStartupSteps : public QObject
{
    Q_OBJECT
private slots:
    void perUserFolder_data()
    {
        QTest::addColumn<QString>("appData");
        QTest::addColumn<QString>("deleted");
        QTest::newRow("own folder") << "/home/u/.local/share/MELO" << "/home/u/.local/share/MELO";
        QTest::newRow("with organisation") << "/home/u/.local/share/Org/MELO" << "/home/u/.local/share/Org/MELO";
        QTest::newRow("other program name") << "/home/u/.local/share/tst" << "/home/u/.local/share/MELO";
        // Never a folder at the root or a relative one.
        QTest::newRow("top level") << "/MELO" << "";
        QTest::newRow("no slash") << "MELO" << "";
        QTest::newRow("empty") << "" << "";
    }
    void perUserFolder()
    {
        QFETCH(QString, appData);
        QTEST(perUserFolderToDelete(appData), "deleted");
    }

    void desktopEntryExec_data()
    {
        QTest::addColumn<QString>("program");
        QTest::addColumn<QString>("execLine");
        QTest::newRow("plain") << "/opt/melo/MELO" << "Exec=/opt/melo/MELO";
        QTest::newRow("blank") << "/opt/my apps/MELO" << "Exec=\"/opt/my apps/MELO\"";
        QTest::newRow("dollar and quote") << "/o/$x\"y/MELO" << "Exec=\"/o/\\\\$x\\\\\"y/MELO\"";
        QTest::newRow("backslash") << "/o/a\\b/MELO" << "Exec=\"/o/a\\\\\\\\b/MELO\"";
    }
    void desktopEntryExec()
    {
        QFETCH(QString, program);
        QFETCH(QString, execLine);
        const QStringList lines = desktopEntryText(program).split(QLatin1Char('\n'));
        QVERIFY(lines.contains(execLine));
        QCOMPARE(lines.first(), QStringLiteral("[Desktop Entry]"));
    }
};

QTEST_GUILESS_MAIN(TestStartupSteps)
#include "tst_startupsteps.moc"
