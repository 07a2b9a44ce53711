#include "GlobalConstants.h"
#include "SaveDialog.h"
#include "SettingsStore.h"

#include <QComboBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>

namespace {

// The line edits in creation order: folder, then file name.
QLineEdit* edit(SaveDialog& d, int i) { return d.findChildren<QLineEdit*>().value(i); }

void click(SaveDialog& d, const char* text)
{
    for (QPushButton* b : d.findChildren<QPushButton*>())
        if (b->text() == QString::fromUtf8(text))
            QTest::mouseClick(b, Qt::LeftButton);
}

// Builds a dialog; its folder button is connected to a slot it does not have.
SaveDialog* makeDialog(const QString& path, bool interactive)
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("No such slot SaveDialog::clickedOpenFileBtnBtn\\(\\)"));
    QTest::ignoreMessage(QtWarningMsg, "QObject::connect:  (sender name:   'openFileBtn')");
    return new SaveDialog(nullptr, path, interactive);
}

} // namespace

class TestSaveDialog : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init() { removeSettingValue(kProductKey, kDownLoadPath); }

    // Folder and name come from the settings and the photo's path; Cancel
    // closes without a record.
    void fieldsAndCancel()
    {
        writeSettingValue(kProductKey, kDownLoadPath, "/home/u/照片/");
        QScopedPointer<SaveDialog> d(makeDialog("D:/p/IMG_1.jpg", true));
        QSignalSpy records(d.data(), &SaveDialog::onSaveFile);
        QCOMPARE(edit(*d, 0)->text() + " " + edit(*d, 1)->text(), QStringLiteral("/home/u/照片/ IMG_1.jpg"));
        d->show();
        click(*d, "取消");
        QVERIFY(!d->isVisible() && records.isEmpty());
    }

    void okEmitsRecordAndCloses_data()
    {
        QTest::addColumn<QString>("typedName");
        QTest::addColumn<int>("format");
        QTest::addColumn<QByteArray>("saveName");
        QTest::addColumn<QByteArray>("saveFormat");
        QTest::newRow("a.b") << "a.b" << 0 << QByteArray("a") << QByteArray("JPG");
        QTest::newRow("ab") << "ab" << 0 << QByteArray("ab") << QByteArray("JPG");
        QTest::newRow("last dot only, tiff") << "a.b.c" << 1 << QByteArray("a.b") << QByteArray("TIFF");
        QTest::newRow("empty gives melo") << "" << 0 << QByteArray("melo") << QByteArray("JPG");
        QTest::newRow("local 8-bit") << "照片.png" << 0 << QStringLiteral("照片").toLocal8Bit() << QByteArray("JPG");
    }
    void okEmitsRecordAndCloses()
    {
        QScopedPointer<SaveDialog> d(makeDialog("D:/p/IMG_1.jpg", true));
        setting got;
        int emitted = 0;
        connect(d.data(), &SaveDialog::onSaveFile, this, [&](setting& st) { ++emitted; got = st; });
        // No folder was stored when the dialog opened; one stored since is read at OK.
        writeSettingValue(kProductKey, kDownLoadPath, "/srv/photos/");
        QFETCH(QString, typedName);
        edit(*d, 1)->setText(typedName);
        QFETCH(int, format);
        d->findChild<QComboBox*>()->setCurrentIndex(format);
        d->show();
        click(*d, "确定");
        QCOMPARE(emitted, 1);
        QCOMPARE(QByteArray::fromStdString(got.savePath), QByteArray("/srv/photos/"));
        QTEST(QByteArray::fromStdString(got.saveName), "saveName");
        QTEST(QByteArray::fromStdString(got.saveFormat), "saveFormat");
        QVERIFY(got.interactive == 1 && got.reserveText1.empty() && got.reserveText2.empty());
        QVERIFY(!d->isVisible() && !d->findChild<QProgressBar*>()->isVisible());
    }
};

QTEST_MAIN(TestSaveDialog)
#include "tst_savedialog.moc"
