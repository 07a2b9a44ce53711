// Replays the fuzzer's regression corpus through the readers and the fast
// paths (the inputs that once crashed or reached new code).
#include "FileBytes.h"
#include "FuzzReaderInput.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

class TestFuzzCorpus : public QObject
{
    Q_OBJECT
private slots:
    void replay()
    {
        const QDir corpus(MELO_SOURCE_DIR "/fuzz/corpus");
        const QStringList names = corpus.entryList(QDir::Files);
        QVERIFY(names.size() >= 4);
        QTemporaryDir dir;
        const std::string scratch = (dir.path() + "/input").toStdString();
        int read = 0;
        for (const QString& name : names) {
            const QByteArray bytes = fileBytes(corpus.filePath(name));
            const FuzzVerdict verdict =
                runFuzzInput(reinterpret_cast<const uint8_t*>(bytes.constData()), size_t(bytes.size()), scratch);
            QVERIFY2(verdict != FuzzVerdict::Disagreed, qPrintable(name));
            read += verdict == FuzzVerdict::Read;
        }
        QVERIFY(read >= 4);
    }
};

QTEST_APPLESS_MAIN(TestFuzzCorpus)
#include "tst_fuzzcorpus.moc"
