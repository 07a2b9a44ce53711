// Qt's own texts in Chinese: the standard buttons of a notice box and the
// buttons of Qt's file dialog, after the start-up loads Qt's translation.
#include "QtTranslation.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

class TestQtTranslation : public QObject
{
    Q_OBJECT

    static QString noticeButtonText(QMessageBox::StandardButton which)
    {
        QMessageBox box(QMessageBox::NoIcon, QStringLiteral("提示"), QStringLiteral("?"),
                        QMessageBox::Yes | QMessageBox::No);
        return box.button(which)->text();
    }

    // The accept button of Qt's own (not the desktop's) file dialog.
    static QString fileDialogAcceptText(QFileDialog::AcceptMode mode)
    {
        QFileDialog dialog;
        dialog.setOption(QFileDialog::DontUseNativeDialog);
        dialog.setAcceptMode(mode);
        if (mode == QFileDialog::AcceptOpen)
            dialog.setFileMode(QFileDialog::ExistingFile);
        const auto* buttons = dialog.findChild<QDialogButtonBox*>();
        const QPushButton* accept = buttons ? buttons->button(mode == QFileDialog::AcceptOpen ? QDialogButtonBox::Open
                                                                                              : QDialogButtonBox::Save)
                                            : nullptr;
        return accept ? accept->text() : QString();
    }

private slots:
    // Before loading, the texts are Qt's English ones: this is what the
    // comparisons below tell apart.
    void englishWithoutTheTranslation()
    {
        QCOMPARE(noticeButtonText(QMessageBox::Yes), QStringLiteral("&Yes"));
        QCOMPARE(fileDialogAcceptText(QFileDialog::AcceptOpen), QStringLiteral("&Open"));
    }

    void chineseOnceLoaded_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QVERIFY(installQtTranslation(qApp));
        QTest::newRow("notice Yes") << noticeButtonText(QMessageBox::Yes) << QStringLiteral("是");
        QTest::newRow("notice No") << noticeButtonText(QMessageBox::No) << QStringLiteral("否");
        QTest::newRow("open dialog") << fileDialogAcceptText(QFileDialog::AcceptOpen) << QStringLiteral("打开");
        QTest::newRow("save dialog") << fileDialogAcceptText(QFileDialog::AcceptSave) << QStringLiteral("保存");
    }
    void chineseOnceLoaded()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QVERIFY2(text.startsWith(expected), qPrintable(text));
    }
};

QTEST_MAIN(TestQtTranslation)
#include "tst_qttranslation.moc"
