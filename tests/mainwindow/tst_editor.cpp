// The editor in the real main window: opening photographs, grading with the
// preset layers and the smart recommendation, the strength controls, the
// scene switch and the compare. Every expected picture is computed with the
// grading engine called directly.
#include "EditorSession.h"
#include "FileBytes.h"
#include "FitRule.h"
#include "GlobalConstants.h"
#include "GradingTestSupport.h"
#include "GuiTestMain.h"
#include "ModalAnswerer.h"
#include "MyDrawLabel.h"
#include "MyDrawLutButton.h"
#include "MySlider.h"
#include "MySpinBox.h"
#include "SmartDraw.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>


#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdlib>
#include <sys/stat.h>

namespace {

const QString kLibrary = QStringLiteral(MELO_PRESET_DIR "/MELO");

cv::Mat preset(const cv::Mat& image, int scene, int file)
{
    return applyLutFile(image, presetFilePath(kLibrary, scene, file).toLocal8Bit().constData());
}

bool samePicture(const QImage& a, const QImage& b)
{
    return a.convertToFormat(QImage::Format_RGB888) == b.convertToFormat(QImage::Format_RGB888);
}

} // namespace

class TestEditor : public QObject
{
    Q_OBJECT

    std::unique_ptr<EditorSession> m_session;

    EditorSession& s() { return *m_session; }
    MyDrawLabel* view() { return s().find<MyDrawLabel>("imageView"); }
    QAbstractButton* button(const char* name) { return s().find<QAbstractButton>(name); }
    // Whether the view shows the matrix (at its own size: the maximised view
    // fits a preview without scaling).
    bool shows(const cv::Mat& mat) { return samePicture(view()->pixmap(Qt::ReturnByValue).toImage(), matToQImage(mat)); }
    void open(const QString& sample, const QString& folder)
    {
        QVERIFY(s().open(placePhoto(sample, folder)));
    }

private slots:
    void initTestCase() { QVERIFY(installPresets()); }
    void init() { m_session = std::make_unique<EditorSession>(); }
    void cleanup() { m_session.reset(); }

    // What the view shows is what a colour-managed viewer shows of the file:
    // a photograph with alpha in its own colours (no stripes), an Adobe RGB
    // one converted to sRGB, a profile-less one as it is.
    void viewShowsTrueColours_data()
    {
        QTest::addColumn<QString>("sample");
        QTest::addColumn<bool>("converted");
        QTest::newRow("rgba png") << "rgba.png" << false;
        QTest::newRow("adobe rgb jpeg") << "rocket.jpg" << true;
        QTest::newRow("no profile") << "coffee.png" << false;
    }
    void viewShowsTrueColours()
    {
        QFETCH(QString, sample);
        QFETCH(bool, converted);
        if (sample == "rgba.png") {
            cv::Mat colour = cv::imread(MELO_SAMPLES_DIR "/coffee.png", cv::IMREAD_COLOR), rgba;
            cv::cvtColor(colour, rgba, cv::COLOR_BGR2BGRA);
            rgba(cv::Rect(0, 0, colour.cols, colour.rows / 2)).forEach<cv::Vec4b>([](cv::Vec4b& p, const int*) { p[3] = 90; });
            QVERIFY(cv::imwrite((QDir::tempPath() + "/rgba.png").toStdString(), rgba));
            QVERIFY(s().open(QDir::tempPath() + "/rgba.png"));
            QCOMPARE(s().doc().m_showMat.channels(), 4);
        } else {
            open(sample, QStringLiteral("人像"));
        }
        cv::Mat colour = s().doc().m_showMat;
        if (colour.channels() == 4)
            cv::cvtColor(colour, colour, cv::COLOR_BGRA2BGR);
        QImage shown = view()->pixmap(Qt::ReturnByValue).toImage();
        if (s().doc().m_showMat.channels() == 4) {
            // The translucent upper half keeps its alpha; the opaque half is
            // compared below as it is.
            QCOMPARE(qAlpha(shown.pixel(shown.width() / 2, 10)), 90);
            QCOMPARE(qAlpha(shown.pixel(shown.width() / 2, shown.height() - 10)), 255);
            shown = shown.copy(0, shown.height() / 2, shown.width(), shown.height() - shown.height() / 2);
            colour = colour(cv::Rect(0, colour.rows / 2, colour.cols, colour.rows - colour.rows / 2)).clone();
        }
        QCOMPARE(samePicture(shown, matToQImage(colour)), !converted);
        if (converted) {
            QVERIFY(s().doc().m_display);
            QVERIFY(samePicture(shown, matToQImage(s().doc().m_display->toSrgb(colour))));
        }
    }

    // The add button's dialog opens a photograph and takes the scene from its
    // folder; a cancelled dialog and an unreadable file leave everything as
    // it was; a missing preset file leaves its button blank.
    void opening()
    {
        ModalAnswerer answerer;
        answerer.chooseFile(QString());
        answerer.answer(QMessageBox::Ok);
        button("addImageBtn")->click();
        QVERIFY(answerer.waitAllAnswered());
        QCOMPARE(answerer.seen().value(0).title, QStringLiteral("打开文件"));
        QCOMPARE(answerer.seen().value(1).title, QStringLiteral("警告"));
        QCOMPARE(answerer.seen().value(1).text, QStringLiteral("打开图片失败!"));
        QVERIFY(button("addImageBtn")->isVisible());

        QFile::rename(presetFilePath(3, 5), presetFilePath(3, 5) + ".away");
        const QString path = placePhoto(QStringLiteral("coffee.png"), QStringLiteral("黑白影调"));
        answerer.chooseFile(path);
        QSignalSpy opened(&s().window(), &BrisaQT::photographOpenEnded);
        button("addImageBtn")->click();
        QVERIFY(answerer.waitAllAnswered());
        QVERIFY(!opened.isEmpty() || opened.wait(30000));
        QFile::rename(presetFilePath(3, 5) + ".away", presetFilePath(3, 5));
        QCOMPARE(answerer.seen().size(), 3);   // no warning this time
        QCOMPARE(s().doc().m_filePath, path);
        QVERIFY(s().doc().m_sceneIndex == 3 && s().find<QComboBox>("sceneComboBox")->currentIndex() == 3);
        QVERIFY(!button("addImageBtn")->isVisible());
        QVERIFY(shows(s().doc().m_showMat));
        auto* top0 = s().find<MyDrawLutButton>("topPreset0");
        QCOMPARE(top0->caption(), QString::fromUtf8(kTopCaptions[3][0]));
        QVERIFY(samePicture(top0->thumbnail().toImage(), matToQImage(preset(s().doc().m_thumbMat, 3, 0))));
        QVERIFY(s().find<MyDrawLutButton>("midPreset1")->thumbnail().isNull());   // file 5 was away

        // What is no photograph ends its open at once and leaves the shown
        // one: a cut-off JPEG, a FIFO nobody writes to, a link to /dev/zero.
        const qint64 shown = view()->pixmap(Qt::ReturnByValue).cacheKey();
        const QString fifo = QFileInfo(path).dir().filePath(QStringLiteral("fifo.jpg"));
        const QString zero = QFileInfo(path).dir().filePath(QStringLiteral("zero.jpg"));
        QFile::remove(fifo);
        QFile::remove(zero);
        QCOMPARE(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), zero));
        for (const QString& bad : {placePhoto(QStringLiteral("truncated.jpg"), QStringLiteral("人像")), fifo, zero}) {
            QSignalSpy ended(&s().window(), &BrisaQT::photographOpenEnded);
            s().window().openAdjustment(bad);
            QVERIFY2(ended.wait(5000), qPrintable(bad));
            QCOMPARE(ended.constLast().at(1).toBool(), false);
            QVERIFY(s().doc().m_filePath == path && view()->pixmap(Qt::ReturnByValue).cacheKey() == shown);
        }
        QCOMPARE(answerer.unexpectedCount(), 0);

        // A photograph over the pixel cap (its frame claims 65000 x 65000)
        // is refused before decoding, with a notice that says why, also when
        // it came from the gallery.
        QByteArray huge = fileBytes(QStringLiteral(MELO_SAMPLES_DIR "/rocket.jpg"));
        const int frame = huge.indexOf("\xFF\xC0");
        QVERIFY(frame > 0);
        huge.replace(frame + 5, 4, QByteArray("\xFD\xE8\xFD\xE8", 4));
        const QString hugePath = QFileInfo(path).dir().filePath(QStringLiteral("huge.jpg"));
        QVERIFY(writeFileBytes(hugePath, huge));
        answerer.answer(QMessageBox::Yes);
        QSignalSpy ended(&s().window(), &BrisaQT::photographOpenEnded);
        s().window().openAdjustment(hugePath);
        QVERIFY(answerer.waitAllAnswered());
        QVERIFY(!ended.isEmpty() && !ended.constLast().at(1).toBool());
        QCOMPARE(answerer.seen().constLast().text, QStringLiteral("图片太大，无法打开(最多 20000 万像素)。"));
        QVERIFY(s().doc().m_filePath == path && view()->pixmap(Qt::ReturnByValue).cacheKey() == shown);
    }

    // Top 2 and down 5 of scene 1 apply files 2 and 13 in that order, each
    // blended over what lies below at its strength (plus one level).
    void layersInOrder_data()
    {
        QTest::addColumn<int>("downStrength");
        QTest::newRow("100") << 100;
        QTest::newRow("0") << 0;
    }
    void layersInOrder()
    {
        QFETCH(int, downStrength);
        open(QStringLiteral("chelsea.png"), QStringLiteral("纪实人文"));
        QCOMPARE(s().doc().m_sceneIndex, 1);
        button("topPreset2")->click();
        button("downPreset5")->click();
        s().find<MySlider>("downSlider")->setValue(downStrength);
        const cv::Mat show = s().doc().m_showMat;
        const cv::Mat top = blendLayer(show, preset(show, 1, 2), 100);
        const cv::Mat expected = blendLayer(top, preset(top, 1, 13), downStrength);
        QVERIFY(sameImage(s().doc().m_dstMat, expected));
        QVERIFY(shows(expected));
    }

    // The slider regrades and moves the spin box; the spin box only moves the
    // slider. A reset disables the layer's controls, a preset click enables
    // them and leaves the compare.
    void strengthControls()
    {
        open(QStringLiteral("coffee.png"), QStringLiteral("自然景观"));
        auto* slider = s().find<MySlider>("midSlider");
        auto* spin = s().find<MySpinBox>("midSpinBox");
        QVERIFY(!slider->isEnabled() && !spin->isEnabled());
        button("contrastBtn")->click();
        QVERIFY(view()->isOriginalShown());
        button("midPreset1")->click();
        QVERIFY(slider->isEnabled() && spin->isEnabled() && !view()->isOriginalShown());
        QCOMPARE(button("contrastBtn")->toolTip(), QStringLiteral("查看原图"));

        slider->setValue(60);
        QCOMPARE(spin->value(), 60);
        const cv::Mat at60 = s().doc().m_dstMat;
        QVERIFY(!sameImage(at60, s().doc().m_showMat));
        spin->setValue(20);
        QCOMPARE(slider->value(), 20);
        QVERIFY(sameImage(s().doc().m_dstMat, at60));   // no regrade yet
        button("midPreset1")->click();
        const cv::Mat show = s().doc().m_showMat;
        QVERIFY(sameImage(s().doc().m_dstMat, blendLayer(show, preset(show, 0, 5), 20)));

        button("midResetBtn")->click();
        QCOMPARE(slider->value(), 100);
        QVERIFY(!slider->isEnabled() && !spin->isEnabled());
        QVERIFY(sameImage(s().doc().m_dstMat, show));
    }

    // The compare layer covers the view, its picture fitted like the graded
    // one, whatever happened to the window's size while the editor was
    // hidden behind a page.
    void compareLayerAfterHiddenResize()
    {
        open(QStringLiteral("coffee.png"), QStringLiteral("自然景观"));
        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);
        s().window().clickedRepairBtn();           // to the home page: the editor hides
        QVERIFY(answerer.waitAllAnswered());
        for (bool maximise : {false, true, false}) {
            maximise ? s().window().clickedMaxBtn() : s().window().clickedNormalBtn();
            s().window().clickedRefreshBtn();      // back into the editor
            button("contrastBtn")->click();
            QVERIFY(view()->isOriginalShown());
            QCOMPARE(view()->imageLayer()->geometry(), view()->rect());
            QCOMPARE(view()->imageLayer()->pixmap(Qt::ReturnByValue).size(),
                     view()->pixmap(Qt::ReturnByValue).size());
            button("contrastBtn")->click();
            answerer.answer(QMessageBox::Yes);
            s().window().clickedRepairBtn();
            QVERIFY(answerer.waitAllAnswered());
        }
    }

    // The tool strip, and the crop strip while cropping, leave the picture
    // uncovered for every shape of preview in both window sizes, and move
    // when the window's size changes.
    void stripsLeaveThePictureUncovered_data()
    {
        QTest::addColumn<QSize>("photo");
        QTest::addColumn<QSize>("preview");
        QTest::newRow("4:3") << QSize(800, 600) << QSize(1200, 900);
        QTest::newRow("16:9") << QSize(1600, 900) << QSize(1200, 675);
        QTest::newRow("3:4") << QSize(1500, 2000) << QSize(743, 990);
        QTest::newRow("square") << QSize(1000, 1000) << QSize(1200, 1200);
    }
    void stripsLeaveThePictureUncovered()
    {
        QFETCH(QSize, photo);
        QVERIFY(s().open(stretchedPhoto(QStringLiteral("shape.png"), photo)));
        QTEST(QSize(s().doc().m_dstMat.cols, s().doc().m_dstMat.rows), "preview");
        for (bool maximise : {true, false}) {
            maximise ? s().window().clickedMaxBtn() : s().window().clickedNormalBtn();
            QVERIFY(!s().shownPicture().isEmpty());
            QVERIFY(s().find<QWidget>("editorToolStrip")->isVisible());
            QCOMPARE(s().misplacedStrips(), QStringList());
            button("cropBtn")->click();
            QVERIFY(s().find<QWidget>("cropToolStrip")->isVisible());
            QCOMPARE(s().misplacedStrips(), QStringList());
            button("noShapeBtn")->click();
        }
    }

    // Switching the scene asks; No keeps the scene and the picture, Yes
    // resets the layers.
    void sceneSwitch()
    {
        open(QStringLiteral("coffee.png"), QStringLiteral("自然景观"));
        button("topPreset0")->click();
        const cv::Mat graded = s().doc().m_dstMat;
        auto* box = s().find<QComboBox>("sceneComboBox");
        ModalAnswerer answerer;
        answerer.answer(QMessageBox::No);
        answerer.answer(QMessageBox::Yes);
        box->setCurrentIndex(4);
        QVERIFY(box->currentIndex() == 0 && s().doc().m_sceneIndex == 0 && sameImage(s().doc().m_dstMat, graded));
        box->setCurrentIndex(4);
        QVERIFY(s().doc().m_sceneIndex == 4 && !button("topPreset0")->isChecked());
        QVERIFY(sameImage(s().doc().m_dstMat, s().doc().m_showMat));
        QCOMPARE(s().find<MyDrawLutButton>("topPreset0")->caption(), QString::fromUtf8(kTopCaptions[4][0]));
        QCOMPARE(answerer.seen().size(), 2);
        QCOMPARE(answerer.seen().at(0).text, QStringLiteral("切换类别后，当前效果将重置！"));
    }

    // The smart button draws with the C library's generator and grades at 50;
    // the history steps back to an earlier pick, and before the first one
    // returns to the unedited picture.
    void smartRecommendation()
    {
        open(QStringLiteral("chelsea.png"), QStringLiteral("自然景观"));
        button("topPreset1")->click();   // a checked preset is reset first
        RandomPick picks[2];
        const unsigned seed = seedForDraws(picks, 2);
        const cv::Mat show = s().doc().m_showMat;
        auto graded = [&show](const RandomPick& p, int strength) {
            return gradeLayers(show, p.scene, p.selection(strength), kLibrary).image;
        };
        auto* randSlider = s().find<MySlider>("randSlider");
        std::srand(seed);
        button("randBtn")->click();
        QVERIFY(!button("topPreset1")->isChecked());
        QCOMPARE(randSlider->value(), 50);
        QVERIFY(sameImage(s().doc().m_dstMat, graded(picks[0], 50)));
        randSlider->setValue(80);
        QVERIFY(sameImage(s().doc().m_dstMat, graded(picks[0], 80)));
        button("randBtn")->click();
        QVERIFY(sameImage(s().doc().m_dstMat, graded(picks[1], 50)));

        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Ok);
        answerer.answer(QMessageBox::Ok);
        button("randNextBtn")->click();
        QCOMPARE(answerer.seen().value(0).text, QStringLiteral("没有更多的智能推荐历史了，可以尝试点击智能推荐！"));
        button("randPreviousBtn")->click();
        QVERIFY(sameImage(s().doc().m_dstMat, graded(picks[0], 50)));
        button("randPreviousBtn")->click();
        QCOMPARE(answerer.seen().value(1).text, QStringLiteral("没有更多的智能推荐历史了，点击确定会变成原图"));
        QVERIFY(sameImage(s().doc().m_dstMat, show));
    }
};

MELO_WEBENGINE_TEST_MAIN(TestEditor)
#include "tst_editor.moc"
