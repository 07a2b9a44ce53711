#include "GlobalConstants.h"
#include "ModalAnswerer.h"
#include "SaveDialog.h"
#include "SettingsStore.h"

#include <QComboBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

namespace {

// The line edits in creation order: folder, then file name.
QLineEdit* edit(SaveDialog& d, int i) { return d.findChildren<QLineEdit*>().value(i); }

QPushButton* button(SaveDialog& d, const char* text)
{
    for (QPushButton* b : d.findChildren<QPushButton*>())
        if (b->text() == QString::fromUtf8(text))
            return b;
    return nullptr;
}

// Builds a dialog; its folder button is connected to a slot it does not have.
SaveDialog* makeDialog(const QString& path, bool interactive, int* emitted = nullptr, setting* last = nullptr)
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("No such slot SaveDialog::clickedOpenFileBtnBtn\\(\\)"));
    QTest::ignoreMessage(QtWarningMsg, "QObject::connect:  (sender name:   'openFileBtn')");
    auto* d = new SaveDialog(nullptr, path, interactive);
    if (emitted)
        QObject::connect(d, &SaveDialog::onSaveFile, [=](setting& st) { ++*emitted; *last = st; });
    return d;
}

} // namespace

class TestSaveDialog : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init() { removeSettingValue(kProductKey, kDownLoadPath); }

    void fieldsFromSettingsAndPath()
    {
        QScopedPointer<SaveDialog> blank(makeDialog(QString(), true));
        QVERIFY(edit(*blank, 0)->text().isEmpty() && edit(*blank, 1)->text().isEmpty());

        writeSettingValue(kProductKey, kDownLoadPath, "/home/u/照片/");
        int emitted = 0;
        setting got;
        QScopedPointer<SaveDialog> d(makeDialog("D:/p/IMG_1.jpg", true, &emitted, &got));
        QCOMPARE(edit(*d, 0)->text(), QStringLiteral("/home/u/照片/"));
        QCOMPARE(edit(*d, 1)->text(), QStringLiteral("IMG_1.jpg"));

        // The folder button does nothing; Cancel closes without a record.
        ModalAnswerer answerer;
        d->show();
        QVERIFY(QTest::qWaitForWindowExposed(d.data()));
        QTest::mouseClick(d->findChild<QPushButton*>("openFileBtn"), Qt::LeftButton);
        QTest::qWait(50);
        QVERIFY(answerer.seen().isEmpty() && d->isVisible());
        QTest::mouseClick(button(*d, "取消"), Qt::LeftButton);
        QVERIFY(!d->isVisible() && emitted == 0);
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
        QFETCH(QString, typedName);
        QFETCH(int, format);
        int emitted = 0;
        setting got;
        QScopedPointer<SaveDialog> d(makeDialog("D:/p/IMG_1.jpg", true, &emitted, &got));
        // No folder was stored when the dialog opened; one stored since is read at OK.
        writeSettingValue(kProductKey, kDownLoadPath, "/srv/photos/");
        edit(*d, 1)->setText(typedName);
        d->findChild<QComboBox*>()->setCurrentIndex(format);
        d->show();
        QVERIFY(QTest::qWaitForWindowExposed(d.data()));
        QTest::mouseClick(button(*d, "确定"), Qt::LeftButton);
        QCOMPARE(emitted, 1);
        QCOMPARE(QByteArray::fromStdString(got.savePath), QByteArray("/srv/photos/"));
        QTEST(QByteArray::fromStdString(got.saveName), "saveName");
        QTEST(QByteArray::fromStdString(got.saveFormat), "saveFormat");
        QVERIFY(got.interactive == 1 && got.reserveText1.empty() && got.reserveText2.empty());
        // Closed at once; the decorative progress bar goes with it.
        QVERIFY(!d->isVisible() && !d->findChild<QProgressBar*>()->isVisible());
    }

    void nonInteractivePressesOkAtConstruction()
    {
        writeSettingValue(kProductKey, kDownLoadPath, "/srv/photos/");
        QScopedPointer<SaveDialog> d(makeDialog("/p/IMG_2.png", false));
        // Nobody can listen yet; the record is what OK built and emitted.
        const setting& st = d->lastSetting();
        QVERIFY(st.interactive == 0 && st.savePath == "/srv/photos/" && st.saveName == "IMG_2");
        QVERIFY(!d->findChild<QProgressBar*>()->isHidden() && !d->isVisible());
    }
};

QTEST_MAIN(TestSaveDialog)
#include "tst_savedialog.moc"
