// Cropping and saving in the real main window: crops beyond the picture are
// refused, the others recorded in order and undone by the reset button. The
// file holds the engine's full-resolution grade of what the panel shows, the
// crops replayed in order on it; with no preset checked, the smart pick at 50
// whatever its slider shows. One write, 500 ms after the request.
#include "CropGeometry.h"
#include "EditorSession.h"
#include "GradingTestSupport.h"
#include "GuiTestMain.h"
#include "ImageSaver.h"
#include "ModalAnswerer.h"
#include "MyDrawLabel.h"
#include "MySlider.h"

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
        setting st;
        st.savePath = s().saveFolder().toLocal8Bit().toStdString();
        st.saveName = "cut";
        st.saveFormat = format.toStdString();
        st.interactive = 1;
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
};

MELO_WEBENGINE_TEST_MAIN(TestEditorSave)
#include "tst_editorsave.moc"
