#include "GlobalConstants.h"
#include "ModalAnswerer.h"
#include "SaveDialog.h"
#include "SettingsStore.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

namespace {

// The line edits in creation order: folder, then file name.
QLineEdit* folderEdit(SaveDialog& d) { return d.findChildren<QLineEdit*>().value(0); }
QLineEdit* nameEdit(SaveDialog& d) { return d.findChildren<QLineEdit*>().value(1); }

QPushButton* buttonWithText(SaveDialog& d, const QString& text)
{
    for (QPushButton* b : d.findChildren<QPushButton*>())
        if (b->text() == text)
            return b;
    return nullptr;
}

// Every dialog connects its folder button to a slot it does not have.
void expectInertFolderButton()
{
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression("QObject::connect: No such slot SaveDialog::clickedOpenFileBtnBtn\\(\\)"));
    QTest::ignoreMessage(QtWarningMsg, "QObject::connect:  (sender name:   'openFileBtn')");
}

struct Received {
    int count = 0;
    setting last;
};

void listen(SaveDialog& d, Received& r)
{
    QObject::connect(&d, &SaveDialog::onSaveFile, [&r](setting& st) {
        ++r.count;
        r.last = st;
    });
}

} // namespace

class TestSaveDialog : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init() { removeSettingValue(kProductKey, kDownLoadPath); }

    void fieldsFromSettingsAndPath_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("folderText");
        QTest::addColumn<QString>("folderPlaceholder");
        QTest::addColumn<QString>("nameText");
        QTest::addColumn<QString>("namePlaceholder");
        QTest::newRow("nothing stored, no photograph")
            << "" << "" << "" << "下载照片存放在此目录下" << "" << "文件名";
        QTest::newRow("stored folder, open photograph")
            << "/home/u/照片/" << "D:/p/IMG_1.jpg" << "/home/u/照片/" << "" << "IMG_1.jpg" << "";
    }
    void fieldsFromSettingsAndPath()
    {
        QFETCH(QString, stored);
        QFETCH(QString, path);
        if (!stored.isEmpty())
            writeSettingValue(kProductKey, kDownLoadPath, stored);
        expectInertFolderButton();
        SaveDialog d(nullptr, path, true);
        QCOMPARE(d.size(), QSize(500, 380));
        QFETCH(QString, folderText);
        QFETCH(QString, folderPlaceholder);
        QFETCH(QString, nameText);
        QFETCH(QString, namePlaceholder);
        QCOMPARE(folderEdit(d)->text(), folderText);
        QCOMPARE(folderEdit(d)->placeholderText(), folderPlaceholder);
        QCOMPARE(folderEdit(d)->focusPolicy(), Qt::NoFocus);
        QCOMPARE(nameEdit(d)->text(), nameText);
        QCOMPARE(nameEdit(d)->placeholderText(), namePlaceholder);
        auto* combo = d.findChild<QComboBox*>();
        QCOMPARE(combo->currentText(), QStringLiteral("JPG"));
        QCOMPARE(combo->itemData(1).toInt(), 1);
    }

    void okEmitsRecordAndCloses_data()
    {
        QTest::addColumn<QString>("typedName");
        QTest::addColumn<int>("format");
        QTest::addColumn<QByteArray>("saveName");
        QTest::addColumn<QByteArray>("saveFormat");
        QTest::newRow("a.b") << "a.b" << 0 << QByteArray("a") << QByteArray("JPG");
        QTest::newRow("ab") << "ab" << 0 << QByteArray("ab") << QByteArray("JPG");
        QTest::newRow("last dot only") << "a.b.c" << 1 << QByteArray("a.b") << QByteArray("TIFF");
        QTest::newRow("empty gives melo") << "" << 0 << QByteArray("melo") << QByteArray("JPG");
        QTest::newRow("local 8-bit") << "照片.png" << 0 << QStringLiteral("照片").toLocal8Bit() << QByteArray("JPG");
    }
    void okEmitsRecordAndCloses()
    {
        QFETCH(QString, typedName);
        QFETCH(int, format);
        QFETCH(QByteArray, saveName);
        QFETCH(QByteArray, saveFormat);
        expectInertFolderButton();
        SaveDialog d(nullptr, QStringLiteral("D:/p/IMG_1.jpg"), true);
        Received got;
        listen(d, got);
        // No folder was stored when the dialog opened; one stored since is read at OK.
        writeSettingValue(kProductKey, kDownLoadPath, "/srv/photos/");
        nameEdit(d)->setText(typedName);
        d.findChild<QComboBox*>()->setCurrentIndex(format);
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        QTest::mouseClick(buttonWithText(d, QStringLiteral("确定")), Qt::LeftButton);
        QCOMPARE(got.count, 1);
        QCOMPARE(QByteArray::fromStdString(got.last.savePath), QByteArray("/srv/photos/"));
        QCOMPARE(QByteArray::fromStdString(got.last.saveName), saveName);
        QCOMPARE(QByteArray::fromStdString(got.last.saveFormat), saveFormat);
        QCOMPARE(got.last.interactive, 1);
        QVERIFY(got.last.reserveText1.empty() && got.last.reserveText2.empty());
        QVERIFY(!d.isVisible());
        // The progress display is decorative: it is gone with the dialog.
        QVERIFY(!d.findChild<QProgressBar*>()->isVisible());
    }

    void folderButtonAndCancelDoNothing()
    {
        writeSettingValue(kProductKey, kDownLoadPath, "/srv/photos/");
        expectInertFolderButton();
        SaveDialog d(nullptr, QString(), true);
        Received got;
        listen(d, got);
        ModalAnswerer answerer;
        d.show();
        QVERIFY(QTest::qWaitForWindowExposed(&d));
        auto* folderBtn = d.findChild<QPushButton*>("openFileBtn");
        QVERIFY(folderBtn && folderBtn->isVisible());
        QTest::mouseClick(folderBtn, Qt::LeftButton);
        QTest::qWait(50);
        QVERIFY(answerer.seen().isEmpty());
        QCOMPARE(folderEdit(d)->text(), QStringLiteral("/srv/photos/"));
        QVERIFY(d.isVisible());
        QTest::mouseClick(buttonWithText(d, QStringLiteral("取消")), Qt::LeftButton);
        QVERIFY(!d.isVisible());
        QCOMPARE(got.count, 0);
    }

    void runsModallyUntilOk()
    {
        expectInertFolderButton();
        auto* d = new SaveDialog(nullptr, QStringLiteral("/p/IMG_1.jpg"), true);
        Received got;
        listen(*d, got);
        ModalAnswerer answerer;
        answerer.handle([](QWidget* w) {
            QVERIFY(qobject_cast<SaveDialog*>(w));
            QMetaObject::invokeMethod(w, "clickedOkBtn");
        });
        d->exec();
        QCOMPARE(got.count, 1);
        QCOMPARE(QByteArray::fromStdString(got.last.saveName), QByteArray("IMG_1"));
        QCOMPARE(answerer.unexpectedCount(), 0);
        delete d;
    }

    void nonInteractivePressesOkAtConstruction()
    {
        writeSettingValue(kProductKey, kDownLoadPath, "/srv/photos/");
        expectInertFolderButton();
        SaveDialog d(nullptr, QStringLiteral("/p/IMG_2.png"), false);
        // Nobody can listen yet: the record is what OK produced and emitted.
        QCOMPARE(d.lastSetting().interactive, 0);
        QCOMPARE(QByteArray::fromStdString(d.lastSetting().savePath), QByteArray("/srv/photos/"));
        QCOMPARE(QByteArray::fromStdString(d.lastSetting().saveName), QByteArray("IMG_2"));
        QVERIFY(!d.findChild<QProgressBar*>()->isHidden());
        QVERIFY(!d.isVisible());
    }
};

QTEST_MAIN(TestSaveDialog)
#include "tst_savedialog.moc"
