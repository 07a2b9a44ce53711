// The installer role: `cmake --install` lays out the install folder, records
// the installation under the product key and installs the menu entry; the
// paths and texts start-up and installation derive from settings.
#include "DesktopEntry.h"
#include "FileBytes.h"
#include "GlobalConstants.h"
#include "SettingsStore.h"
#include "StartupSteps.h"

#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

class TestInstall : public QObject
{
    Q_OBJECT

    static bool runInstall(const QString& prefix)
    {
        QProcess install;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.remove(QStringLiteral("DESTDIR"));
        install.setProcessEnvironment(env);
        install.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        install.start(QStringLiteral(CMAKE_COMMAND),
                      {QStringLiteral("--install"), QStringLiteral(MELO_BINARY_DIR), QStringLiteral("--prefix"), prefix});
        return install.waitForFinished(120000) && install.exitCode() == 0;
    }

private slots:
    void init()
    {
        for (const char* name : {kInstallLocation, kDisplayVersion, kChannel})
            removeSettingValue(kProductKey, name);
    }

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

    void installRecordsTheInstallation()
    {
        QTemporaryDir root;
        const QString prefix = root.path() + QStringLiteral("/prefix");
        QVERIFY(runInstall(prefix));

        const QString folder = prefix + QStringLiteral("/lib/melo");
        QVERIFY(QFileInfo(folder + QStringLiteral("/MELO")).isExecutable());
        QCOMPARE(readSettingValue(kProductKey, kInstallLocation), folder);
        QCOMPARE(readSettingValue(kProductKey, kDisplayVersion), buildVersion());
        QCOMPARE(readSettingValue(kProductKey, kChannel), QStringLiteral(MELO_CHANNEL));

        const QString entry = prefix + QStringLiteral("/share/applications/melo.desktop");
        const QStringList lines = QString::fromUtf8(fileBytes(entry)).split(QLatin1Char('\n'));
        QVERIFY(lines.contains(QStringLiteral("Exec=") + folder + QStringLiteral("/MELO")));
        QProcess validate;
        validate.start(QStringLiteral("desktop-file-validate"), {entry});
        QVERIFY(validate.waitForFinished(30000));
        QVERIFY2(validate.exitCode() == 0, validate.readAllStandardOutput().constData());
    }
};

QTEST_GUILESS_MAIN(TestInstall)
#include "tst_install.moc"
