// The settings dialog against the real settings store: pre-checked close
// choice, the folder rule of OK, the close-choice page, the empty page and
// the autostart entry.
#include "DesktopEntry.h"
#include "GlobalConstants.h"
#include "ModalAnswerer.h"
#include "SettingDialog.h"
#include "SettingsStore.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFrame>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>

#include <memory>
#include <QTest>

namespace {
const QString kHint = QStringLiteral("下载照片存放在此目录下");
const QString kFolderMessage = QStringLiteral("文件存储地址不能为空，请重新输入！");
}

class TestSettingDialog : public QObject
{
    Q_OBJECT

    template <typename T>
    static T* child(SettingDialog& dialog, const char* name)
    {
        return dialog.findChild<T*>(QLatin1String(name));
    }

private slots:
    void init()
    {
        for (const char* name : {kDirectClose, kDownLoadPath})
            removeSettingValue(kProductKey, name);
        removeSettingValue(kAutostartKey, kProductName);
        QFile::remove(autostartEntryPath());
    }

    void freshInstall()
    {
        SettingDialog dialog;
        dialog.setMode(SettingDialog::SettingsPage, 1);
        dialog.show();
        QVERIFY(child<QRadioButton>(dialog, "minRadio")->isChecked());
        QVERIFY(!child<QRadioButton>(dialog, "exitRadio")->isChecked());
        QVERIFY(!child<QCheckBox>(dialog, "autostartBox")->isChecked());
        auto* folder = child<QLineEdit>(dialog, "folderEdit");
        QCOMPARE(folder->placeholderText(), kHint);
        QVERIFY(folder->text().isEmpty());
        QCOMPARE(child<QPushButton>(dialog, "cancelBtn")->geometry(), QRect(75, 430, 200, 56));

        // OK is refused without a folder, yet the close choice is written.
        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);
        child<QPushButton>(dialog, "okBtn")->click();
        QCOMPARE(answerer.seen().size(), 1);
        QCOMPARE(answerer.seen().at(0).text, kFolderMessage);
        QVERIFY(dialog.isVisible());
        QCOMPARE(readSettingValue(kProductKey, kDirectClose), QStringLiteral("0"));
        QVERIFY(readSettingValue(kProductKey, kDownLoadPath).isEmpty());
    }

    void storedCloseChoice_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<int>("page");
        QTest::addColumn<bool>("exitChecked");
        QTest::newRow("1, settings") << "1" << int(SettingDialog::SettingsPage) << true;
        QTest::newRow("1, close choice") << "1" << int(SettingDialog::CloseChoicePage) << true;
        QTest::newRow("0") << "0" << int(SettingDialog::SettingsPage) << false;
        QTest::newRow("other number") << "2" << int(SettingDialog::CloseChoicePage) << false;
        QTest::newRow("text") << "yes" << int(SettingDialog::SettingsPage) << false;
    }
    void storedCloseChoice()
    {
        QFETCH(QString, stored);
        QFETCH(int, page);
        QFETCH(bool, exitChecked);
        writeSettingValue(kProductKey, kDirectClose, stored);
        SettingDialog dialog;
        dialog.setMode(page, 1);
        QCOMPARE(child<QRadioButton>(dialog, "exitRadio")->isChecked(), exitChecked);
        QCOMPARE(child<QRadioButton>(dialog, "minRadio")->isChecked(), !exitChecked);
    }

    void folderChoice()
    {
        QTemporaryDir folder;
        SettingDialog dialog;
        dialog.setMode(SettingDialog::SettingsPage, 1);
        dialog.show();
        auto* edit = child<QLineEdit>(dialog, "folderEdit");
        auto* open = child<QPushButton>(dialog, "openFileBtn");

        ModalAnswerer answerer;
        answerer.chooseFile(folder.path());
        open->click();
        QCOMPARE(edit->text(), folder.path() + QLatin1Char('/'));

        // A cancelled choice tells the user and keeps the field.
        answerer.chooseFile(QString());
        answerer.answer(QMessageBox::Yes);
        open->click();
        QCOMPARE(answerer.seen().last().text, kFolderMessage);
        QCOMPARE(edit->text(), folder.path() + QLatin1Char('/'));

        child<QPushButton>(dialog, "okBtn")->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(readSettingValue(kProductKey, kDownLoadPath), folder.path() + QLatin1Char('/'));
        QCOMPARE(answerer.unexpectedCount(), 0);
    }

    // Without a new choice OK checks the stored folder again.
    void storedFolderRechecked_data()
    {
        QTest::addColumn<bool>("stillExists");
        QTest::newRow("exists") << true;
        QTest::newRow("deleted since") << false;
    }
    void storedFolderRechecked()
    {
        QFETCH(bool, stillExists);
        auto folder = std::make_unique<QTemporaryDir>();
        const QString stored = folder->path() + QLatin1Char('/');
        writeSettingValue(kProductKey, kDownLoadPath, stored);
        if (!stillExists)
            folder.reset();
        SettingDialog dialog;
        dialog.setMode(SettingDialog::SettingsPage, 1);
        QCOMPARE(child<QLineEdit>(dialog, "folderEdit")->placeholderText(), stored);
        dialog.show();
        ModalAnswerer answerer;
        if (!stillExists)
            answerer.answer(QMessageBox::Yes);
        child<QPushButton>(dialog, "okBtn")->click();
        QCOMPARE(answerer.seen().size(), stillExists ? 0 : 1);
        QCOMPARE(dialog.isVisible(), !stillExists);
    }

    void closeChoicePageStoresOnlyTheChoice()
    {
        SettingDialog dialog;
        dialog.setMode(SettingDialog::CloseChoicePage, 0);
        dialog.show();
        QVERIFY(!child<QLineEdit>(dialog, "folderEdit"));
        QVERIFY(!child<QCheckBox>(dialog, "autostartBox")->isVisible());
        QVERIFY(!child<QPushButton>(dialog, "cancelBtn")->isVisible());
        QCOMPARE(child<QFrame>(dialog, "topframe")->geometry(), QRect(0, 0, 540, 187));
        child<QRadioButton>(dialog, "exitRadio")->click();
        child<QPushButton>(dialog, "okBtn")->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(readSettingValue(kProductKey, kDirectClose), QStringLiteral("1"));
        QVERIFY(readSettingValue(kAutostartKey, kProductName).isEmpty());
        QVERIFY(readSettingValue(kProductKey, kDownLoadPath).isEmpty());
    }

    void unknownPageLaysOutNothing()
    {
        SettingDialog dialog;
        dialog.setMode(9, 0);
        dialog.show();
        QVERIFY(child<QFrame>(dialog, "topframe")->styleSheet().isEmpty());
        QVERIFY(!child<QLineEdit>(dialog, "folderEdit"));
        for (const char* name : {"autostartBox", "exitRadio", "minRadio", "cancelBtn"})
            QVERIFY2(!child<QWidget>(dialog, name)->isVisible(), name);
        QCOMPARE(child<QPushButton>(dialog, "okBtn")->geometry(), QRect(75, 430, 415, 56));
        child<QPushButton>(dialog, "okBtn")->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QVERIFY(readSettingValue(kProductKey, kDirectClose).isEmpty());
    }

    void autostartEntry()
    {
        QTemporaryDir folder;
        writeSettingValue(kProductKey, kDownLoadPath, folder.path() + QLatin1Char('/'));
        SettingDialog dialog;
        dialog.setMode(SettingDialog::SettingsPage, 1);
        dialog.show();
        child<QCheckBox>(dialog, "autostartBox")->click();
        child<QPushButton>(dialog, "okBtn")->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));

        QCOMPARE(readSettingValue(kAutostartKey, kProductName),
                 QCoreApplication::applicationDirPath() + QStringLiteral("//MELO.exe"));
        QFile entry(autostartEntryPath());
        QVERIFY(entry.open(QIODevice::ReadOnly));
        const QStringList lines = QString::fromUtf8(entry.readAll()).split(QLatin1Char('\n'));
        QVERIFY(lines.contains(QStringLiteral("Exec=") + QCoreApplication::applicationFilePath()));
        QVERIFY(lines.contains(QStringLiteral("Type=Application")));
    }
};

QTEST_MAIN(TestSettingDialog)
#include "tst_settingdialog.moc"
