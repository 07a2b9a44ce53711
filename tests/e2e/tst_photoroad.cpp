// The whole road of one photograph through the real program: the preset
// archive unpacked by start-up's own step, the window with the stand-in
// service's pages, "修图" on a gallery card while no download folder is
// stored (no way on until one is), the download, presets, a strength, a crop
// and the save, whose pixels must be exactly melo-grade's grade of the same
// choices. Runs on the display of xvfb-run.
//
// With MELO_SCREENSHOT_DIR set, the retouched photograph in the editor is
// also written there (docs/screenshots/editor-retouch.png).
#include "FileBytes.h"
#include "GlobalConstants.h"
#include "GuiTestMain.h"
#include "ImageSaver.h"
#include "ModalAnswerer.h"
#include "MyDrawLabel.h"
#include "PageWindow.h"
#include "SettingsStore.h"
#include "StartupSteps.h"
#include "TestService.h"
#include "UrlRecorder.h"

#include <QComboBox>
#include <QDir>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>

#include <opencv2/imgcodecs.hpp>

namespace {

const QString kPhoto = QStringLiteral("人像_astronaut.png");
const int kPortraitScene = 2;

cv::Mat decoded(const QString& path)
{
    return cv::imread(path.toLocal8Bit().constData(), cv::IMREAD_UNCHANGED);
}

bool samePixels(const cv::Mat& a, const cv::Mat& b)
{
    return !a.empty() && a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0;
}

} // namespace

class TestPhotoRoad : public QObject
{
    Q_OBJECT

    TestService m_service;
    QTemporaryDir m_dir;
    PageWindow m_win;

    template <typename T = QWidget>
    T* widget(const char* name) const { return m_win.widget<T>(name); }
    QString folder() const { return m_dir.filePath(QStringLiteral("downloads")); }
    QString archive() const { return m_dir.filePath(QStringLiteral("install/") + QLatin1String(kPresetArchiveName)); }

private slots:
    // Installed as the installer leaves it (preset archive in the install
    // folder, version recorded and already seen), no download folder stored.
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY2(m_service.start(), qPrintable(m_service.errorString()));
        m_service.exportEnvironment();
        QVERIFY(QDir().mkpath(folder()));
        QVERIFY(QDir().mkpath(QFileInfo(archive()).path()));
        QVERIFY(QFile::copy(QStringLiteral(MELO_PRESET_ARCHIVE), archive()));
        writeSettingValue(kProductKey, kInstallLocation, QFileInfo(archive()).path());
        removeSettingValue(kProductKey, kDownLoadPath);
        writeSettingValue(kProductKey, kDisplayVersion, buildVersion());
        writeSettingValue(kProductKey, kLastTimeVersion, buildVersion());
        removeTempPresetFolder();
        QVERIFY(unpackPresetLibrary(this));
    }

    void cleanupTestCase()
    {
        m_win.close();
        removeTempPresetFolder();
    }

    void photoRoad()
    {
        ModalAnswerer answerer;  // any dialog the road does not expect fails the test
        QVERIFY(m_win.open());

        // The home page's link to the gallery, then "修图" on the portrait:
        // asked for a folder, cancelled, asked again, one chosen.
        QSignalSpy galleryLoads(m_win.gallery(), &QWebEngineView::loadFinished);
        m_win.js(m_win.home(), QStringLiteral("document.getElementById('toGallery').click()"));
        QVERIFY(galleryLoads.wait(kPageTimeoutMs) && m_win.gallery()->isVisible());
        const QString card = QStringLiteral("Melo.inClient() && !!document.querySelector('.card[data-name=\"%1\"]')");
        QTRY_VERIFY_WITH_TIMEOUT(m_win.js(m_win.gallery(), card.arg(kPhoto)).toBool(), kPageTimeoutMs);
        answerer.answer(QMessageBox::Yes);
        answerer.handle([](QWidget* dialog) { QMetaObject::invokeMethod(dialog, "clickedCancelBtn"); });
        answerer.answer(QMessageBox::Yes);
        const QString target = folder();
        answerer.handle([&answerer, target](QWidget* dialog) {
            answerer.chooseFile(target);
            dialog->findChild<QPushButton*>("openFileBtn")->click();
            dialog->findChild<QPushButton*>("okBtn")->click();
        });
        m_win.js(m_win.gallery(), PageWindow::clickOnCard(kPhoto, "retouch"));
        QVERIFY(answerer.waitAllAnswered(kPageTimeoutMs));
        QStringList kinds;
        for (const ModalAnswerer::Seen& seen : answerer.seen())
            kinds << seen.className;
        QCOMPARE(kinds, QStringList({"QMessageBox", "SettingDialog", "QMessageBox", "SettingDialog", "QFileDialog"}));
        QCOMPARE(answerer.seen().at(0).text, QStringLiteral("请先设置下文件保存路径!"));
        QCOMPARE(readSettingValue(kProductKey, kDownLoadPath), folder() + QLatin1Char('/'));

        // Downloaded into that folder and opened in the editor, in the
        // portrait scene named by the file.
        const QString downloaded = folder() + QLatin1Char('/') + kPhoto;
        QTRY_VERIFY_WITH_TIMEOUT(m_win.window().document().hasImage(), kPageTimeoutMs);
        const ImageDocument& doc = m_win.window().document();
        QCOMPARE(doc.m_filePath, folder() + QStringLiteral("///") + kPhoto);
        QCOMPARE(fileBytes(downloaded), fileBytes(QStringLiteral(MELO_SAMPLES_DIR "/astronaut.png")));
        QVERIFY(widget("myWidget")->isVisible() && !m_win.gallery()->isVisible() && !m_win.home()->isVisible());
        QCOMPARE(widget<QComboBox>("sceneComboBox")->currentText(), QStringLiteral("写真人像"));

        // Presets in two layers, then both layers' sliders clicked at the
        // same place: one strength for both, as melo-grade takes it.
        QTest::mouseClick(widget("topPreset1"), Qt::LeftButton);
        QTest::mouseClick(widget("downPreset2"), Qt::LeftButton);
        const cv::Mat fullStrength = doc.m_dstMat.clone();
        QVERIFY(!samePixels(fullStrength, doc.m_showMat));
        auto* topSlider = widget<QSlider>("topSlider");
        auto* downSlider = widget<QSlider>("downSlider");
        for (QSlider* slider : {topSlider, downSlider})
            QTest::mouseClick(slider, Qt::LeftButton, {}, QPoint(slider->width() * 6 / 10, slider->height() / 2));
        const int strength = topSlider->value();
        QCOMPARE(downSlider->value(), strength);
        QVERIFY2(strength > 50 && strength < 70, qPrintable(QString::number(strength)));
        QVERIFY(!samePixels(doc.m_dstMat, fullStrength));

        // Crop at "1 : 1", accepted by a double click in the picture.
        const cv::Size uncut = doc.m_showMat.size();
        QTest::mouseClick(widget("cropBtn"), Qt::LeftButton);
        auto* ratios = widget<QComboBox>("cropComboBox");
        QVERIFY(ratios->isVisible());
        QTest::keyClick(ratios, Qt::Key_Down);
        QCOMPARE(ratios->currentText(), QStringLiteral("1 : 1"));
        auto* view = widget<MyDrawLabel>("imageView");
        QTest::mouseDClick(view, Qt::LeftButton, {}, view->cropRect().center());
        QCOMPARE(doc.m_cropRects.size(), 1);
        QVERIFY(doc.m_showMat.size() != uncut);
        QVERIFY(!ratios->isVisible());
        const QString shots = qEnvironmentVariable("MELO_SCREENSHOT_DIR");
        if (!shots.isEmpty())
            QVERIFY(m_win.window().grab().save(shots + QStringLiteral("/editor-retouch.png")));

        // Save with the dialog's defaults; the notice; the folder is opened.
        UrlRecorder folders({QStringLiteral("file")});
        answerer.handle([](QWidget* dialog) {
            for (QPushButton* button : dialog->findChildren<QPushButton*>())
                if (button->text() == QStringLiteral("确定"))
                    QTest::mouseClick(button, Qt::LeftButton);
        });
        answerer.answer(QMessageBox::Yes);
        QTest::mouseClick(widget("m_right_down_saveBtn"), Qt::LeftButton);
        QVERIFY(answerer.waitAllAnswered(kPageTimeoutMs));
        QTRY_COMPARE(folders.urls.size(), 1);
        QCOMPARE(QFileInfo(folders.urls.at(0).toLocalFile()).canonicalFilePath(), QFileInfo(folder()).canonicalFilePath());
        QVERIFY(answerer.unexpectedCount() == 0 && answerer.seen().size() == 7);
        QCOMPARE(answerer.seen().at(5).className, QStringLiteral("SaveDialog"));
        QCOMPARE(answerer.seen().at(6).text, QStringLiteral("保存文件成功！"));

        // Grading works pixel by pixel, so grading the crop of the photograph
        // equals cropping its grade: melo-grade, given the crop replayed on the
        // downloaded file, encodes the very matrix the save encoded.
        const QString cut = m_dir.filePath(QStringLiteral("cut/")) + kPhoto;
        QVERIFY(QDir().mkpath(QFileInfo(cut).path()));
        const cv::Mat photo = decoded(downloaded);
        QVERIFY(cv::imwrite(cut.toLocal8Bit().constData(), replayCrops(photo, doc.m_cropRects)));
        const QString gradeDir = m_dir.filePath(QStringLiteral("grade"));
        QProcess grade;
        grade.setProcessChannelMode(QProcess::ForwardedChannels);
        grade.start(QStringLiteral(MELO_GRADE_PROGRAM),
                    {"preset", "--scene", QString::number(kPortraitScene), "--top", "1", "--down", "2", "--strength",
                     QString::number(strength), "--presets", archive(), "--out-dir", gradeDir, cut});
        QVERIFY(grade.waitForFinished(60000));
        QCOMPARE(grade.exitCode(), 0);

        const cv::Mat saved = decoded(folder() + QStringLiteral("/人像_astronaut.jpg"));
        QVERIFY(saved.rows < photo.rows || saved.cols < photo.cols);
        QVERIFY(samePixels(saved, decoded(gradeDir + QStringLiteral("/人像_astronaut.jpg"))));
    }
};

MELO_WEBENGINE_TEST_MAIN(TestPhotoRoad)
#include "tst_photoroad.moc"
