// The settings dialog against the real settings store.
#include "DesktopEntry.h"
#include "FileBytes.h"
#include "GlobalConstants.h"
#include "ModalAnswerer.h"
#include "SettingDialog.h"
#include "SettingsStore.h"

#include <QCheckBox>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {
const QString kFolderMessage = QStringLiteral("文件存储地址不能为空，请重新输入！");
}

class TestSettingDialog : public QObject
{
    Q_OBJECT

    std::unique_ptr<SettingDialog> m_dialog;

    template <typename T = QWidget>
    T* child(const char* name) const { return m_dialog->findChild<T*>(QLatin1String(name)); }
    void open(int mode, int twoButtons)
    {
        m_dialog = std::make_unique<SettingDialog>();
        m_dialog->setMode(mode, twoButtons);
        m_dialog->show();
    }
    void pressOk() { child<QPushButton>("okBtn")->click(); }
    bool accepted() const { return !m_dialog->isVisible() && m_dialog->result() == QDialog::Accepted; }

private slots:
    void init()
    {
        for (const char* name : {kDirectClose, kDownLoadPath})
            removeSettingValue(kProductKey, name);
        removeSettingValue(kAutostartKey, kProductName);
        QFile::remove(autostartEntryPath());
    }

    void storedCloseChoice_data()
    {
        QTest::addColumn<QString>("stored");  // "-": absent
        QTest::addColumn<int>("page");
        QTest::addColumn<bool>("exitChecked");
        QTest::newRow("absent") << "-" << int(SettingDialog::SettingsPage) << false;
        QTest::newRow("1, close choice") << "1" << int(SettingDialog::CloseChoicePage) << true;
        QTest::newRow("other value") << "2" << int(SettingDialog::CloseChoicePage) << false;
    }
    void storedCloseChoice()
    {
        QFETCH(QString, stored);
        QFETCH(int, page);
        QFETCH(bool, exitChecked);
        if (stored != QLatin1String("-"))
            writeSettingValue(kProductKey, kDirectClose, stored);
        open(page, 1);
        QCOMPARE(child<QRadioButton>("exitRadio")->isChecked(), exitChecked);
        QCOMPARE(child<QRadioButton>("minRadio")->isChecked(), !exitChecked);
    }

    // OK checks the chosen folder, else the stored one (the placeholder),
    // else refuses; the close choice is written before the folder check.
    void okFolderRule_data()
    {
        QTest::addColumn<QString>("stored");  // "", "exists" or "deleted"
        QTest::addColumn<bool>("choose");
        QTest::addColumn<bool>("accepted");
        QTest::newRow("fresh install") << "" << false << false;
        QTest::newRow("folder chosen") << "" << true << true;
        QTest::newRow("stored folder") << "exists" << false << true;
        QTest::newRow("stored folder deleted since") << "deleted" << false << false;
    }
    void okFolderRule()
    {
        QFETCH(QString, stored);
        QFETCH(bool, choose);
        QFETCH(bool, accepted);
        QTemporaryDir chosen;
        auto storedDir = std::make_unique<QTemporaryDir>();
        const QString storedPath = storedDir->path() + QLatin1Char('/');
        if (!stored.isEmpty())
            writeSettingValue(kProductKey, kDownLoadPath, storedPath);
        if (stored == QLatin1String("deleted"))
            storedDir.reset();

        open(SettingDialog::SettingsPage, 1);
        QVERIFY(!child<QCheckBox>("autostartBox")->isChecked());
        auto* edit = child<QLineEdit>("folderEdit");
        QCOMPARE(edit->placeholderText(), stored.isEmpty() ? QStringLiteral("下载照片存放在此目录下") : storedPath);
        ModalAnswerer answerer;
        if (choose) {
            answerer.chooseFile(chosen.path());
            child<QPushButton>("openFileBtn")->click();
            QCOMPARE(edit->text(), chosen.path() + QLatin1Char('/'));
        }
        if (!accepted)
            answerer.answer(QMessageBox::Yes);
        pressOk();
        QCOMPARE(accepted, this->accepted());
        const QString lastSeen = answerer.seen().isEmpty() ? QString() : answerer.seen().last().text;
        QCOMPARE(lastSeen, accepted ? QString() : kFolderMessage);
        QCOMPARE(readSettingValue(kProductKey, kDirectClose), QStringLiteral("0"));
        const QString expected = choose ? chosen.path() + QLatin1Char('/') : stored.isEmpty() ? QString() : storedPath;
        QCOMPARE(readSettingValue(kProductKey, kDownLoadPath), expected);
    }

    void closeChoicePageStoresOnlyTheChoice()
    {
        open(SettingDialog::CloseChoicePage, 0);
        QVERIFY(!child("folderEdit") && !child("autostartBox")->isVisible() && !child("cancelBtn")->isVisible());
        child<QRadioButton>("exitRadio")->click();
        pressOk();
        QVERIFY(accepted());
        QCOMPARE(readSettingValue(kProductKey, kDirectClose), QStringLiteral("1"));
        QVERIFY(readSettingValue(kProductKey, kDownLoadPath).isEmpty());
        QVERIFY(readSettingValue(kAutostartKey, kProductName).isEmpty());
    }

    void autostartEntry()
    {
        QTemporaryDir folder;
        writeSettingValue(kProductKey, kDownLoadPath, folder.path() + QLatin1Char('/'));
        open(SettingDialog::SettingsPage, 1);
        child<QCheckBox>("autostartBox")->click();
        pressOk();
        QVERIFY(accepted());
        QCOMPARE(readSettingValue(kAutostartKey, kProductName),
                 QCoreApplication::applicationDirPath() + QStringLiteral("//MELO.exe"));
        const QStringList lines = QString::fromUtf8(fileBytes(autostartEntryPath())).split(QLatin1Char('\n'));
        QVERIFY(lines.contains(QStringLiteral("Exec=") + QCoreApplication::applicationFilePath()));
    }
};

QTEST_MAIN(TestSettingDialog)
#include "tst_settingdialog.moc"
