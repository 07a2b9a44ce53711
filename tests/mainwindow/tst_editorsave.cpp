// Cropping and saving in the real main window: crops beyond the picture are
// refused, the others recorded in order and undone by the reset button. The
// file holds the engine's full-resolution grade of what the panel shows, the
// crops replayed in order on it; with no preset checked, the smart pick at 50
// whatever its slider shows. One write, 500 ms after the request; a write
// that fails is reported as such.
#include "CropGeometry.h"
#include "EditorSession.h"
#include "GradingTestSupport.h"
#include "GuiTestMain.h"
#include "ImageSaver.h"
#include "ModalAnswerer.h"
#include "MyDrawLabel.h"
#include "MySlider.h"
#include "SmallDisk.h"

#include <QAbstractButton>
#include <QElapsedTimer>
#include <QTimer>

#include <opencv2/imgcodecs.hpp>

#include <cstdlib>

const QString kLibrary = QStringLiteral(MELO_PRESET_DIR "/MELO");

class TestEditorSave : public QObject
{
    Q_OBJECT

    std::unique_ptr<EditorSession> m_session;
    EditorSession& s() { return *m_session; }
    QAbstractButton* button(const char* name) { return s().find<QAbstractButton>(name); }

private slots:
    void initTestCase() { QVERIFY(installPresets()); }
    void init() { m_session = std::make_unique<EditorSession>(); }
    void cleanup() { m_session.reset(); }

    void savedAsGraded_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<bool>("smart");
        QTest::newRow("PNG, down preset 0") << "PNG" << false;
        QTest::newRow("TIFF, no preset: smart pick") << "TIFF" << true;
    }
    void savedAsGraded()
    {
        QFETCH(QString, format);
        QFETCH(bool, smart);
        QVERIFY(s().open(placePhoto(QStringLiteral("coffee.png"), QStringLiteral("自然景观"))));
        RandomPick pick{0, -1, -1, 0};
        if (smart) {
            std::srand(seedForDraws(&pick, 1));
            button("randBtn")->click();
            s().find<MySlider>("randSlider")->setValue(80);
        } else {
            button("downPreset0")->click();
        }

        // A rectangle beyond the picture is refused with a notice; two crops
        // cut the preview in turn and are recorded in order.
        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Ok);
        auto* view = s().find<MyDrawLabel>("imageView");
        const QRect whole = view->imageRect();
        for (const QRect& rect : {QRect(1500, 100, 40, 40), whole.adjusted(100, 50, -300, -150), QRect()}) {
            button("cropBtn")->click();
            view->setCropRect(rect.isNull() ? view->imageRect().adjusted(10, 20, -200, -100) : rect);
            button("yesShapeBtn")->click();
        }
        QCOMPARE(answerer.seen().value(0).text, QString::fromUtf8(crop::kRefusedText));
        QCOMPARE(s().doc().m_cropRects, (QVector<QRect>{QRect(100, 50, 800, 600), QRect(10, 20, 590, 480)}));

        QElapsedTimer clock;
        qint64 noticeAfter = -1;
        answerer.handle([&](QWidget* box) {
            noticeAfter = clock.elapsed();
            qobject_cast<QMessageBox*>(box)->button(QMessageBox::Yes)->click();
        });
        setting st = interactiveSave(s().saveFolder(), "cut", format);
        clock.start();
        s().window().start_timer_event(st);
        QVERIFY(answerer.waitAllAnswered(10000));
        QVERIFY2(noticeAfter >= 500, qPrintable(QString::number(noticeAfter)));
        QVERIFY(!s().find<QTimer>("saveTimer")->isActive() && answerer.seen().size() == 2);
        const cv::Mat full =
            gradeLayers(s().doc().m_srcMat, pick.scene, pick.selection(smart ? 50 : 100), kLibrary).image;
        const QString saved = s().saveFolder() + "/cut." + format.toLower();
        QVERIFY(sameImage(cv::imread(saved.toLocal8Bit().constData(), cv::IMREAD_UNCHANGED),
                          replayCrops(full, s().doc().m_cropRects)));
        // Nothing of the full-resolution work is kept once it is written.
        QVERIFY(s().doc().m_orgMat.data == s().doc().m_srcMat.data);

        // Undoing the crops returns to the whole preview with the checked
        // presets applied again (none after a smart pick).
        QVERIFY(button("cropResetBtn")->isEnabled());
        button("cropResetBtn")->click();
        QVERIFY(!button("cropResetBtn")->isEnabled() && s().doc().m_cropRects.isEmpty());
        const cv::Mat show = s().doc().m_showMat;
        QCOMPARE(show.cols, 1200);
        const LayerSelection checked = smart ? LayerSelection() : pick.selection(100);
        QVERIFY(sameImage(s().doc().m_dstMat, gradeLayers(show, 0, checked, kLibrary).image));
    }

    // A save that cannot be written says so and why, and the earlier file of
    // that name stays as it was; with nothing open the save button says so
    // and opens no dialog.
    void failedSaveTellsTheTruth_data()
    {
        QTest::addColumn<QString>("where");
        QTest::addColumn<QString>("says");
        QTest::newRow("folder gone") << "gone" << QStringLiteral("保存文件失败！保存的文件夹不存在");
        QTest::newRow("full disk") << "full" << QStringLiteral("保存文件失败！写入文件时出错");
        QTest::newRow("nothing open") << "" << QStringLiteral("保存文件失败！还没有打开图片。");
    }
    void failedSaveTellsTheTruth()
    {
        QFETCH(QString, where);
        QFETCH(QString, says);
        SmallDisk disk("size=64k");
        if (where == "full" && !disk.mounted())
            QSKIP("mounting a tmpfs is not permitted here");
        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);
        if (where.isEmpty()) {
            button("m_right_down_saveBtn")->click();
            QVERIFY(answerer.waitAllAnswered(10000));
            QCOMPARE(answerer.seen().value(0).text, says);
            QCOMPARE(answerer.seen().size(), 1);
            return;
        }
        QVERIFY(s().open(placePhoto(QStringLiteral("astronaut.png"), QStringLiteral("人像"))));
        const QString folder = where == "full" ? disk.path() : s().saveFolder() + "/gone";
        QVERIFY(where != "full" || writeFileBytes(folder + "/a.tiff", "earlier"));
        setting st = interactiveSave(folder, "a", "TIFF");
        s().window().start_timer_event(st);
        QVERIFY(answerer.waitAllAnswered(10000));
        QVERIFY2(answerer.seen().value(0).text.startsWith(says), qPrintable(answerer.seen().value(0).text));
        QCOMPARE(fileBytes(folder + "/a.tiff"), where == "full" ? QByteArray("earlier") : QByteArray());
        // The full-resolution work is not kept.
        QVERIFY(s().doc().m_orgMat.data == s().doc().m_srcMat.data);
    }
};

MELO_WEBENGINE_TEST_MAIN(TestEditorSave)
#include "tst_editorsave.moc"
