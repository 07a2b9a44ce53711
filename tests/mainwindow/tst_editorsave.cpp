// Saving from the real main window: the saved pixels are the engine's
// full-resolution grade of what the panel shows (checked against the
// melo-grade program run as a process), with the preview's crops replayed;
// the smart path when no preset is checked; the formats of the record; the
// single delayed write.
#include "EditorSession.h"
#include "GradingTestSupport.h"
#include "GuiTestMain.h"
#include "ImageSaver.h"
#include "ModalAnswerer.h"
#include "MyDrawLabel.h"
#include "MySlider.h"
#include "SmartDraw.h"
#include "UrlRecorder.h"

#include <QAbstractButton>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QTimer>

#include <opencv2/imgcodecs.hpp>

#include <cstdlib>

namespace {

// melo-grade's full-resolution grade of a photograph, decoded.
cv::Mat meloGrade(const QString& input, int scene, const RandomPick& layers, int strength)
{
    const QString outDir = QDir::tempPath() + "/melo-grade";
    QStringList arguments{"preset", "--scene", QString::number(scene), "--strength", QString::number(strength),
                          "--presets", MELO_PRESET_DIR, "--out-dir", outDir};
    const int ids[] = {layers.top, layers.mid, layers.down};
    const char* const options[] = {"--top", "--mid", "--down"};
    for (int i = 0; i < 3; ++i)
        if (ids[i] >= 0)
            arguments << options[i] << QString::number(ids[i]);
    QProcess process;
    process.start(MELO_GRADE_PROGRAM, arguments << input);
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return cv::Mat();
    const QString output = outDir + "/" + QFileInfo(input).completeBaseName() + ".jpg";
    return cv::imread(output.toLocal8Bit().constData(), cv::IMREAD_UNCHANGED);
}

cv::Mat decoded(const QString& path)
{
    return cv::imread(path.toLocal8Bit().constData(), cv::IMREAD_UNCHANGED);
}

} // namespace

class TestEditorSave : public QObject
{
    Q_OBJECT

    std::unique_ptr<EditorSession> m_session;
    EditorSession& s() { return *m_session; }
    QAbstractButton* button(const char* name) { return s().find<QAbstractButton>(name); }
    QString open(const QString& sample, const QString& folder)
    {
        const QString path = placePhoto(sample, folder);
        s().window().openAdjustment(path);
        return path;
    }
    setting record(const char* name, const char* format)
    {
        setting st;
        st.savePath = s().saveFolder().toLocal8Bit().toStdString();
        st.saveName = name;
        st.saveFormat = format;
        st.interactive = 1;
        return st;
    }

private slots:
    void initTestCase() { QVERIFY(installPresets()); }
    void init() { m_session = std::make_unique<EditorSession>(); }
    void cleanup() { m_session.reset(); }

    // The save button's dialog, the notice, the folder opened; the file holds
    // exactly what melo-grade makes of the photograph with the same presets.
    void savedAsTheEngineGrades()
    {
        const QString photo = open(QStringLiteral("rocket.jpg"), QStringLiteral("风光"));
        button("topPreset1")->click();
        button("midPreset2")->click();
        button("downPreset3")->click();
        UrlRecorder folders({QStringLiteral("file")});
        ModalAnswerer answerer;
        answerer.handle([](QWidget* dialog) { QMetaObject::invokeMethod(dialog, "clickedOkBtn"); });
        answerer.answer(QMessageBox::Yes);
        button("m_right_down_saveBtn")->click();
        QVERIFY(answerer.waitAllAnswered(10000));
        QCOMPARE(answerer.seen().at(1).title, QStringLiteral("成功"));
        QCOMPARE(answerer.seen().at(1).text, QStringLiteral("保存文件成功！"));
        const cv::Mat saved = decoded(s().saveFolder() + "/rocket.jpg");
        QVERIFY(!saved.empty());
        QVERIFY(sameImage(saved, meloGrade(photo, 4, RandomPick{4, 1, 2, 3}, 100)));
        QCOMPARE(folders.urls, QList<QUrl>{QUrl::fromLocalFile(s().saveFolder())});
    }

    // With no preset checked the save grades with the smart pick at 50,
    // whatever the smart slider shows.
    void noPresetUsesTheSmartPick()
    {
        const QString photo = open(QStringLiteral("chelsea.png"), QStringLiteral("自然景观"));
        RandomPick pick;
        const unsigned seed = seedForDraws(&pick, 1);
        std::srand(seed);
        button("randBtn")->click();
        s().find<MySlider>("randSlider")->setValue(80);
        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);
        UrlRecorder folders({QStringLiteral("file")});
        setting st = record("smart", "JPG");
        s().window().start_timer_event(st);
        QVERIFY(answerer.waitAllAnswered(10000));
        QVERIFY(sameImage(decoded(s().saveFolder() + "/smart.jpg"), meloGrade(photo, pick.scene, pick, 50)));
    }

    // Two crops made on the preview are replayed in order on the graded full
    // image; lossless formats keep the pixels exactly. The 500 ms delay
    // fires once.
    void cropsAndFormats_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("extension");
        QTest::newRow("PNG") << "PNG" << ".png";
        QTest::newRow("TIFF") << "TIFF" << ".tiff";
    }
    void cropsAndFormats()
    {
        QFETCH(QString, format);
        QFETCH(QString, extension);
        open(QStringLiteral("coffee.png"), QStringLiteral("自然景观"));
        button("downPreset0")->click();
        auto* view = s().find<MyDrawLabel>("imageView");
        for (const QMargins& cut : {QMargins(100, 50, 300, 150), QMargins(10, 20, 200, 100)}) {
            button("cropBtn")->click();
            view->setCropRect(view->imageRect() - cut);
            button("yesShapeBtn")->click();
        }
        QCOMPARE(s().doc().m_cropRects.size(), 2);

        ModalAnswerer answerer;
        QElapsedTimer clock;
        qint64 noticeAfter = -1;
        answerer.handle([&](QWidget* box) {
            noticeAfter = clock.elapsed();
            qobject_cast<QMessageBox*>(box)->button(QMessageBox::Yes)->click();
        });
        UrlRecorder folders({QStringLiteral("file")});
        setting st = record("cut", format.toLatin1().constData());
        clock.start();
        s().window().start_timer_event(st);
        QVERIFY(answerer.waitAllAnswered(10000));
        QVERIFY2(noticeAfter >= 500, qPrintable(QString::number(noticeAfter)));
        QVERIFY(!s().find<QTimer>("saveTimer")->isActive());
        QCOMPARE(answerer.seen().size(), 1);

        const cv::Mat full = gradeLayers(s().doc().m_srcMat, 0, LayerSelection{{-1, -1, 0}, {100, 100, 100}},
                                         QStringLiteral(MELO_PRESET_DIR "/MELO")).image;
        QVERIFY(sameImage(decoded(s().saveFolder() + "/cut" + extension), replayCrops(full, s().doc().m_cropRects)));
    }
};

MELO_WEBENGINE_TEST_MAIN(TestEditorSave)
#include "tst_editorsave.moc"
