#include "GlobalConstants.h"
#include "SettingsStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

// The settings store writes through to disk, so values outlive the process.
class TestSettingsStore : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)).removeRecursively();
    }

    void roundTrip_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        QTest::newRow("folder") << kProductKey << kDownLoadPath << "/home/u/照片/";
        QTest::newRow("empty value") << kProductKey << kChannel << "";
        QTest::newRow("equals and semicolon") << kProductKey << "odd" << "a=b;c \"d\"";
    }
    void roundTrip()
    {
        QFETCH(QString, key);
        QFETCH(QString, name);
        QFETCH(QString, value);
        writeSettingValue(key, name, value);
        QCOMPARE(readSettingValue(key, name), value);
    }

    void absentReadsEmpty()
    {
        const QString nobody = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Nobody\\Here";
        QCOMPARE(readSettingValue(kProductKey, "neverWritten"), QString());
        QCOMPARE(readSettingValue(nobody, kDisplayVersion), QString());
        QVERIFY(!QFileInfo::exists(settingsFileForKey(nobody)));  // reading creates nothing
    }

    void keysAreSeparateFiles()
    {
        writeSettingValue(kProductKey, "MELO", "product");
        writeSettingValue(kAutostartKey, "MELO", "autostart");
        removeSettingValue(kProductKey, "MELO");
        QCOMPARE(readSettingValue(kProductKey, "MELO"), QString());
        QCOMPARE(readSettingValue(kAutostartKey, "MELO"), QString("autostart"));
        // A hostile key path cannot climb out of the store.
        QVERIFY(!settingsFileForKey("HKEY_LOCAL_MACHINE\\..\\..\\x").contains("/../"));
    }

    void survivesProcessRestart()
    {
        const QString self = QCoreApplication::applicationFilePath();
        QCOMPARE(QProcess::execute(self, {"--child", "restartValue", "写入 42"}), 0);
        QCOMPARE(readSettingValue(kProductKey, "restartValue"), QString("写入 42"));
        writeSettingValue(kProductKey, "restartValue", "second");
        QProcess reader;
        reader.start(self, {"--child", "restartValue"});
        QVERIFY(reader.waitForFinished(10000));
        QCOMPARE(QString::fromUtf8(reader.readAllStandardOutput()), QString("second"));
    }
};

// "--child <name> [value]": writes the value if given, prints the stored one.
int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc >= 3 && QByteArray(argv[1]) == "--child") {
        QStandardPaths::setTestModeEnabled(true);
        const QString name = QString::fromUtf8(argv[2]);
        if (argc == 4)
            writeSettingValue(kProductKey, name, QString::fromUtf8(argv[3]));
        else
            fputs(readSettingValue(kProductKey, name).toUtf8().constData(), stdout);
        return 0;
    }
    TestSettingsStore test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_settingsstore.moc"
