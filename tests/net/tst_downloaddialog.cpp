// The download dialog against the real stand-in service: batches, progress,
// closing during a transfer, target folders and the messages per kind.
#include "DownLoadDialog.h"
#include "DownLoadTarget.h"
#include "Network.h"
#include "FileBytes.h"
#include "GlobalConstants.h"
#include "ModalAnswerer.h"
#include "PeakMemory.h"
#include "SettingsStore.h"
#include "TestService.h"

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <unistd.h>

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

    // The body streams to disk instead of being held, so a large download
    // barely moves the peak.
    void largeBodyKeepsMemoryFlat()
    {
        const qint64 bytes = 160 << 20;
        QVERIFY(resetPeakResident());
        const qint64 before = peakResidentKiB();
        auto* dialog = new DownLoadDialog(nullptr, m_service.httpUrl(QStringLiteral("/test/large?bytes=%1").arg(bytes)),
                                          "large.bin", 1);
        QSignalSpy finished(dialog, &DownLoadDialog::onOpenDirectory);
        QVERIFY(finished.wait(120000));
        QCOMPARE(QFileInfo(m_folder + "/large.bin").size(), bytes);
        QVERIFY2(peakResidentKiB() - before < 32 * 1024, qPrintable(QString::number(peakResidentKiB() - before)));
        QCOMPARE(QDir(m_folder).entryList(QDir::Files), QStringList("large.bin"));  // no temporary file left
    }

    // Stalled transfers neither hold up a new one nor last for ever: the
    // third download completes at once, the stalled ones end by the
    // low-speed rule with the kind's failure box and leave no file.
    void stalledTransfers()
    {
        filedownload::setStallSeconds(3);
        ModalAnswerer answerer;
        // More than the threads the download pool keeps ready (4), so a
        // pool that does not grow would hold the next one back.
        const int stalled = qMax(5, QThread::idealThreadCount() + 1);
        for (int i = 0; i < stalled; ++i)
            answerer.answer(QMessageBox::Yes);
        for (int i = 0; i < stalled; ++i)
            new DownLoadDialog(nullptr, m_service.httpUrl("/test/stall?ms=20000"), QStringLiteral("stalled%1").arg(i), 1);
        QTest::qWait(300);
        QElapsedTimer clock;
        clock.start();
        auto* third = new DownLoadDialog(nullptr, m_service.httpUrl("/test/large?bytes=5000"), "third.bin", 1);
        QSignalSpy finished(third, &DownLoadDialog::onOpenDirectory);
        QVERIFY(finished.wait(10000));
        QVERIFY2(clock.elapsed() < 2000, qPrintable(QString::number(clock.elapsed())));
        QTRY_COMPARE_WITH_TIMEOUT(answerer.seen().size(), stalled, 15000);
        filedownload::setStallSeconds(60);
        QVERIFY2(clock.elapsed() < 10000, qPrintable(QString::number(clock.elapsed())));
        for (const auto& box : answerer.seen())
            QCOMPARE(box.title + ": " + box.text, QStringLiteral("下载失败: 打开存储文件夹路径失败！"));
        QCOMPARE(QDir(m_folder).entryList(QDir::Files), QStringList("third.bin"));
    }

    // A file that cannot be written is reported instead of passing silently;
    // whatever the target held before stays.
    void unwritableTargetIsReported_data()
    {
        QTest::addColumn<QString>("folder");  // empty: the download folder
        QTest::addColumn<QString>("name");
        QTest::newRow("300-character name") << QString() << QString(296, 'n') + ".jpg";
        // Root writes anywhere but into /proc.
        QTest::newRow("unwritable folder") << (::geteuid() == 0 ? QStringLiteral("/proc") : QStringLiteral("locked"))
                                           << "a.jpg";
    }
    void unwritableTargetIsReported()
    {
        QFETCH(QString, folder);
        QFETCH(QString, name);
        if (folder == "locked") {
            folder = m_folder + "/locked";
            QVERIFY(QDir().mkpath(folder) && QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
        }
        if (!folder.isEmpty())
            writeSettingValue(kProductKey, kDownLoadPath, folder);
        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);
        QPointer<DownLoadDialog> dialog = new DownLoadDialog(nullptr, m_service.httpUrl("/avatar.jpg"), name, 1);
        QSignalSpy opened(dialog.data(), &DownLoadDialog::onOpenDirectory);
        QVERIFY(answerer.waitAllAnswered(20000));
        QTRY_VERIFY(dialog.isNull());
        QCOMPARE(answerer.seen().size(), 1);
        QCOMPARE(answerer.seen().first().title, QStringLiteral("下载失败"));
        QCOMPARE(answerer.seen().first().text,
                 QStringLiteral("文件无法保存到下载文件夹：%1//%2").arg(folder.isEmpty() ? m_folder : folder, name));
        QCOMPARE(opened.count(), 0);
    }

    // An error page is a success, its body what lands in the file.
    void errorBodyIsKept()
    {
        QVERIFY(writeFileBytes(m_folder + "/page.html", "before"));
        auto* dialog = new DownLoadDialog(nullptr, m_service.httpUrl("/test/status/404"), "page.html", 1);
        QSignalSpy finished(dialog, &DownLoadDialog::onOpenDirectory);
        QVERIFY(finished.wait(10000));
        QCOMPARE(fileBytes(m_folder + "/page.html"), QByteArray("status 404 body"));
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

    // The page chooses the avatar's address: a body over the bound, its
    // length announced or not, ends as a failed avatar download at once and
    // leaves nothing in the cache.
    void avatarBodyIsBounded_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("length announced") << QStringLiteral("/test/large?bytes=%1").arg(64 << 20);
        QTest::newRow("chunked") << QStringLiteral("/test/chunked?bytes=%1").arg(64 << 20);
    }
    void avatarBodyIsBounded()
    {
        QFETCH(QString, path);
        const QString cache = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
        QVERIFY(QDir(cache).removeRecursively());
        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);
        auto* dialog = new DownLoadDialog(nullptr, m_service.httpUrl(path), "avatar_big.jpg", 0);
        QSignalSpy loaded(dialog, &DownLoadDialog::onLoadUserIcon);
        QVERIFY(answerer.waitAllAnswered(20000));
        QCOMPARE(answerer.seen().first().text, QStringLiteral("下载用户头像失败！"));
        QCOMPARE(loaded.count(), 0);
        QCOMPARE(QDir(cache).entryList(QDir::Files), QStringList());
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
