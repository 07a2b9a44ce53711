// The installer role: `cmake --install` lays out the install folder, records
// the installation under the product key and installs a valid menu entry.
#include "FileBytes.h"
#include "GlobalConstants.h"
#include "SettingsStore.h"

#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

class TestInstall : public QObject
{
    Q_OBJECT
private slots:
    void installRecordsTheInstallation()
    {
        for (const char* name : {kInstallLocation, kDisplayVersion, kChannel})
            removeSettingValue(kProductKey, name);
        QTemporaryDir root;
        const QString prefix = root.path() + QStringLiteral("/prefix");
        QProcess install;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.remove(QStringLiteral("DESTDIR"));
        install.setProcessEnvironment(env);
        install.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        install.start(QStringLiteral(CMAKE_COMMAND), {"--install", MELO_BINARY_DIR, "--prefix", prefix});
        QVERIFY(install.waitForFinished(120000) && install.exitCode() == 0);

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
