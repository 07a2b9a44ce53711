// The installer role: `cmake --install` lays out the install folder, records
// the installation under the product key and installs the menu entry.
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

    static bool runInstall(const QString& prefix, const QString& destDir)
    {
        QProcess install;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.remove(QStringLiteral("DESTDIR"));
        if (!destDir.isEmpty())
            env.insert(QStringLiteral("DESTDIR"), destDir);
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

    void installRecordsTheInstallation()
    {
        QTemporaryDir root;
        const QString prefix = root.path() + QStringLiteral("/prefix");
        QVERIFY(runInstall(prefix, QString()));

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
