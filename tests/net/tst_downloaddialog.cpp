// The download dialog against the real stand-in service: batches, progress,
// closing during a transfer, target folders and the messages per kind.
#include "DownLoadDialog.h"
#include "DownLoadTarget.h"
#include "FileBytes.h"
#include "GlobalConstants.h"
#include "ModalAnswerer.h"
#include "SettingsStore.h"
#include "TestService.h"

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QString kBatchDone = QStringLiteral("多文件下载已经全部完成");

QByteArray sampleBytes(const QString& name) { return fileBytes(QStringLiteral(MELO_SAMPLES_DIR "/") + name); }

} // namespace

class TestDownLoadDialog : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY2(m_service.start(), qPrintable(m_service.errorString())); }

    void init()
    {
        m_root.reset(new QTemporaryDir);
        // Two levels deep, so an escaping "../../x" would still land in the root.
        m_folder = m_root->path() + QStringLiteral("/pictures/saved");
        QVERIFY(QDir().mkpath(m_folder));
        writeSettingValue(kProductKey, kDownLoadPath, m_folder);
    }

    // Addresses and names split at "|"; the last name serves the rest.
    void batchIsSplit()
    {
        const auto split = [](const char* urls, const char* names) {
            const DownloadBatch batch = splitDownloadBatch(urls, names);
            return batch.urls.join(',') + " / " + batch.names.join(',');
        };
        QCOMPARE(split("a|b|c", "p"), QStringLiteral("a,b,c / p,p,p"));
        QCOMPARE(split("a|b|c", "x|y"), QStringLiteral("a,b,c / x,y,y"));
    }

    void namesStayInTheirFolder_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("plain");
        QTest::newRow("climbs out") << "../../x.jpg" << "x.jpg";
        QTest::newRow("backslashes") << "..\\..\\win\\y.png" << "y.png";
        QTest::newRow("absolute") << "/etc/passwd" << "passwd";
        QTest::newRow("only dots") << "../.." << "";
        QTest::newRow("empty") << "" << "";
    }
    void namesStayInTheirFolder()
    {
        QFETCH(QString, name);
        QFETCH(QString, plain);
        QCOMPARE(plainFileName(name), plain);
        QCOMPARE(downloadTargetPath("/f", name), plain.isEmpty() ? QString() : "/f//" + plain);
    }

    void progressNeedsALength_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("last");
        QTest::newRow("with length") << "/test/large?bytes=300000&ms=600" << 100;
        QTest::newRow("without length") << "/test/chunked?bytes=300000&ms=600" << 0;
    }
    void progressNeedsALength()
    {
        QFETCH(QString, path);
        QFETCH(int, last);
        auto* dialog = new DownLoadDialog(nullptr, m_service.httpUrl(path), "body.bin", 1);
        auto* bar = dialog->findChild<QProgressBar*>();
        QList<int> values;
        connect(bar, &QProgressBar::valueChanged, this, [&values](int v) { values << v; });
        QSignalSpy finished(dialog, &DownLoadDialog::onOpenDirectory);
        QLabel* label = nullptr;
        for (QLabel* l : dialog->findChildren<QLabel*>())
            label = l->text().startsWith(QStringLiteral("当前进度")) ? l : label;
        QVERIFY(finished.wait(10000));
        QCOMPARE(bar->value(), last);
        QCOMPARE(label->text(), QStringLiteral("当前进度已完成：%1%").arg(last));
        QVERIFY((last == 0 ? values.isEmpty() : values.size() > 2) && std::is_sorted(values.begin(), values.end()));
        QCOMPARE(fileBytes(m_folder + "/body.bin"), TestService::generatedBody(300000));
    }

    void closeDuringTransfer_data()
    {
        QTest::addColumn<int>("answer");
        QTest::newRow("no: stays") << int(QMessageBox::No);
        QTest::newRow("yes: closes") << int(QMessageBox::Yes);
    }
    void closeDuringTransfer()
    {
        QFETCH(int, answer);
        QPointer<DownLoadDialog> dialog =
            new DownLoadDialog(nullptr, m_service.httpUrl("/test/slow?ms=1500&bytes=20000"), "slow.bin", 1);
        QSignalSpy finished(dialog.data(), &DownLoadDialog::onOpenDirectory);
        dialog->show();
        ModalAnswerer answerer;
        answerer.answer(QMessageBox::StandardButton(answer));
        const bool closed = dialog->CloseWindow();
        QCOMPARE(answerer.seen().size(), 1);
        QCOMPARE(answerer.seen().first().title + ": " + answerer.seen().first().text,
                 QStringLiteral("下载进行中: 下载还未完成，你确定要关闭下载窗口吗?"));
        QVERIFY(closed == (answer == QMessageBox::Yes) && dialog->isVisible() == !closed);
        QVERIFY(!QFile::exists(m_folder + "/slow.bin"));
        QVERIFY(finished.wait(10000));
        QCOMPARE(fileBytes(m_folder + "/slow.bin"), TestService::generatedBody(20000));
        QTRY_VERIFY(dialog.isNull());
    }

    // The avatar, whatever bytes a page's address serves, goes to the user's
    // own cache folder (made when missing), never the install folder.
    void avatarGoesToTheUserCache()
    {
        const QString cache = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
        QVERIFY(QDir(cache).removeRecursively());
        writeSettingValue(kProductKey, kInstallLocation, m_folder);
        auto* dialog = new DownLoadDialog(nullptr, m_service.httpUrl("/avatar.jpg"), "avatar_test.jpg", 0);
        QSignalSpy loaded(dialog, &DownLoadDialog::onLoadUserIcon);
        QVERIFY(loaded.wait(10000));
        QCOMPARE(loaded.first().first().toString(), cache + "//avatar_test.jpg");
        QVERIFY(fileBytes(cache + "/avatar_test.jpg").startsWith("\xFF\xD8\xFF"));  // a JPEG
        QVERIFY(!QFile::exists(m_folder + "/avatar_test.jpg"));
        removeSettingValue(kProductKey, kInstallLocation);
    }

    // What each kind fetches and tells the user. A batch names the first
    // picture as a page hands it over, the others percent-encoded; "refused"
    // stands for a port nothing listens on.
    void outcome_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("urls");
        QTest::addColumn<QString>("names");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("files");  // name:sample, in the folder afterwards
        const QString failed = QStringLiteral("下载失败"), done = QStringLiteral("提示");
        const QString batch = QStringLiteral("/gallery/人像_astronaut.png|/gallery/%1|/gallery/%2")
                                  .arg(QString(QUrl::toPercentEncoding("风光_rocket.jpg")),
                                       QString(QUrl::toPercentEncoding("动物鸟类_chelsea.png")));
        const QStringList three{"a.png:astronaut.png", "b.jpg:rocket.jpg", "c.png:chelsea.png"};
        QTest::newRow("batch of three") << 3 << batch << "a.png|b.jpg|c.png" << done << kBatchDone << three;
        QTest::newRow("batch, trailing bar") << 3 << batch.section('|', 0, 1) + "|" << "a.png|b.jpg|" << done
                                             << kBatchDone << QStringList(three.mid(0, 2));
        QTest::newRow("avatar refused") << 0 << "refused" << "a.jpg" << failed << QStringLiteral("下载用户头像失败！")
                                        << QStringList();
        QTest::newRow("keep refused") << 1 << "refused" << "a.jpg" << failed << QStringLiteral("打开存储文件夹路径失败！")
                                      << QStringList();
        QTest::newRow("adjust refused") << 2 << "refused" << "a.jpg" << done << kBatchDone << QStringList();
        QTest::newRow("name without a file") << 1 << "/test/empty" << "../.." << failed
                                             << QStringLiteral("打开存储文件夹路径失败！") << QStringList();
        QTest::newRow("adjust, folder gone") << 2 << "/test/empty" << "a.jpg" << failed
                                             << QStringLiteral("文件保存路径不存在！") << QStringList();
        QTest::newRow("adjust, not writable") << 2 << "/test/empty" << "blocked" << failed
            << QStringLiteral("下载受网络波动影响出错拉，重新下载或者重设保存图片路径可能可以解决该问题！") << QStringList();
    }
    void outcome()
    {
        QFETCH(int, kind);
        QFETCH(QString, urls);
        QFETCH(QString, names);
        QFETCH(QStringList, files);
        QStringList addresses;
        for (const QString& url : urls.split('|'))
            addresses << (url == "refused" ? QStringLiteral("http://127.0.0.1:%1/x").arg(TestService::unusedPort())
                          : url.isEmpty()  ? url
                                           : m_service.httpUrl(url));
        if (QString(QTest::currentDataTag()).contains("gone"))
            writeSettingValue(kProductKey, kDownLoadPath, m_folder + "/missing");
        QVERIFY(QDir(m_folder).mkpath("blocked"));   // a folder where the file should go
        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);
        QPointer<DownLoadDialog> dialog = new DownLoadDialog(nullptr, addresses.join('|'), names, kind);
        QSignalSpy adjusted(dialog.data(), &DownLoadDialog::onAdjustment);
        dialog->show();
        QVERIFY(answerer.waitAllAnswered(20000));
        QTRY_VERIFY(dialog.isNull());
        QTEST(answerer.seen().first().title, "title");
        QTEST(answerer.seen().first().text, "text");
        QCOMPARE(answerer.seen().size(), 1);
        QCOMPARE(adjusted.count(), 0);
        QCOMPARE(QDir(m_folder).entryList(QDir::Files).size(), files.size());
        for (const QString& file : files)
            QVERIFY2(fileBytes(m_folder + "/" + file.section(':', 0, 0)) == sampleBytes(file.section(':', 1)),
                     qPrintable(file));
    }

private:
    TestService m_service;
    QScopedPointer<QTemporaryDir> m_root;
    QString m_folder;
};

QTEST_MAIN(TestDownLoadDialog)
#include "tst_downloaddialog.moc"
