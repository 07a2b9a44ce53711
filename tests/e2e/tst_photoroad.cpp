// The whole road of one photograph through the real program: the preset
// archive unpacked the way start-up does it, the real window with the
// stand-in service's pages, a login on the home page, "修图" on a gallery
// card, the download into the stored folder, presets, a strength, a crop and
// the save, whose pixels must be exactly melo-grade's grade of the same
// choices. Runs on the display of xvfb-run.
//
// With MELO_SCREENSHOT_DIR set, the retouched photograph in the editor is
// also written there (docs/screenshots/editor-retouch.png).
#include "BrisaQT.h"
#include "FileBytes.h"
#include "GlobalConstants.h"
#include "GuiTestMain.h"
#include "ImageSaver.h"
#include "ModalAnswerer.h"
#include "MyDrawLabel.h"
#include "MyDrawLutButton.h"
#include "PageScript.h"
#include "SettingsStore.h"
#include "StartupSteps.h"
#include "TestService.h"
#include "UrlRecorder.h"

#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QSet>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>
#include <QWebEngineProfile>
#include <QWebEngineView>

#include <opencv2/imgcodecs.hpp>

#include <memory>

namespace {

const int kPageTimeoutMs = 20000;
const char kPhoto[] = "人像_astronaut.png";
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
    std::unique_ptr<BrisaQT> m_window;

    template <typename T = QWidget>
    T* widget(const char* name) const
    {
        return m_window->findChild<T*>(QLatin1String(name));
    }
    QWebEngineView* gallery() const { return widget<QWebEngineView>("webEngineView"); }
    QWebEngineView* home() const { return widget<QWebEngineView>("webEngineView2"); }
    QVariant js(QWebEngineView* view, const QString& script) { return runPageScript(view->page(), script); }
    QString folder() const { return m_dir.filePath(QStringLiteral("downloads")); }
    QString archive() const { return m_dir.filePath(QStringLiteral("install/") + QLatin1String(kPresetArchiveName)); }

    void shoot(const char* name)
    {
        const QString dir = qEnvironmentVariable("MELO_SCREENSHOT_DIR");
        if (!dir.isEmpty())
            QVERIFY(m_window->grab().save(dir + QLatin1Char('/') + QLatin1String(name)));
    }

private slots:
    // Installed as the installer leaves it (preset archive in the install
    // folder, version recorded and already seen), a download folder stored,
    // the presets unpacked by start-up's own step.
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        // Page storage of this run only: nobody is logged in at the start.
        QWebEngineProfile::defaultProfile()->setPersistentStoragePath(m_dir.filePath(QStringLiteral("web")));
        QVERIFY2(m_service.start(), qPrintable(m_service.errorString()));
        m_service.exportEnvironment();
        QVERIFY(QDir().mkpath(folder()));
        QVERIFY(QDir().mkpath(QFileInfo(archive()).path()));
        QVERIFY(QFile::copy(QStringLiteral(MELO_PRESET_ARCHIVE), archive()));
        writeSettingValue(kProductKey, kInstallLocation, QFileInfo(archive()).path());
        writeSettingValue(kProductKey, kDownLoadPath, folder());
        writeSettingValue(kProductKey, kDisplayVersion, buildVersion());
        writeSettingValue(kProductKey, kLastTimeVersion, buildVersion());
        removeTempPresetFolder();
        QVERIFY(unpackPresetLibrary(this));
        QCOMPARE(QDir(tempPresetFolder() + QLatin1Char('/') + QString::number(kPortraitScene))
                     .entryList({QStringLiteral("*.CUBE")}, QDir::Files).size(), 20);
    }

    void cleanupTestCase()
    {
        m_window.reset();
        removeTempPresetFolder();
    }

    void photoRoad()
    {
        ModalAnswerer answerer;  // any dialog the road does not expect fails the test
        m_window = std::make_unique<BrisaQT>();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QTRY_VERIFY_WITH_TIMEOUT(js(home(), QStringLiteral("!!(window.Melo && Melo.inClient())")).toBool(),
                                 kPageTimeoutMs);
        QVERIFY(widget("loginBtn")->isVisible());

        // Log in with the home page's own button and form.
        js(home(), QStringLiteral("document.querySelector('button[data-action=login]').click();"
                                  "document.getElementById('loginName').value = '小明';"
                                  "document.getElementById('loginPassword').value = 'secret';"
                                  "document.getElementById('loginSubmit').click()"));
        QTRY_VERIFY(widget("userFrame")->isVisible());
        QCOMPARE(widget<QLabel>("userNameLabel")->text(), QStringLiteral("小明"));

        // The home page's link to the gallery, then "修图" on the portrait.
        QSignalSpy galleryLoads(gallery(), &QWebEngineView::loadFinished);
        js(home(), QStringLiteral("document.getElementById('toGallery').click()"));
        QVERIFY(galleryLoads.wait(kPageTimeoutMs));
        QVERIFY(gallery()->isVisible());
        const QString retouch =
            QStringLiteral("document.querySelector('.card[data-name=\"%1\"] [data-op=retouch]')").arg(kPhoto);
        QTRY_VERIFY_WITH_TIMEOUT(js(gallery(), QStringLiteral("Melo.inClient() && !!") + retouch).toBool(),
                                 kPageTimeoutMs);
        js(gallery(), retouch + QStringLiteral(".click()"));

        // Downloaded into the stored folder and opened in the editor, in the
        // portrait scene named by the file, every preset's thumbnail graded.
        const QString downloaded = folder() + QLatin1Char('/') + QString::fromUtf8(kPhoto);
        QTRY_VERIFY_WITH_TIMEOUT(m_window->document().hasImage(), kPageTimeoutMs);
        const ImageDocument& doc = m_window->document();
        QCOMPARE(QFileInfo(doc.m_filePath).canonicalFilePath(), QFileInfo(downloaded).canonicalFilePath());
        QCOMPARE(fileBytes(downloaded), fileBytes(QStringLiteral(MELO_SAMPLES_DIR "/astronaut.png")));
        QVERIFY(widget("myWidget")->isVisible());
        QVERIFY(!gallery()->isVisible());
        QCOMPARE(widget<QComboBox>("sceneComboBox")->currentIndex(), kPortraitScene);
        QCOMPARE(widget<QComboBox>("sceneComboBox")->currentText(), QStringLiteral("写真人像"));
        QSet<QByteArray> faces;
        const QList<MyDrawLutButton*> presets = m_window->findChildren<MyDrawLutButton*>();
        for (MyDrawLutButton* preset : presets) {
            const QImage face = preset->thumbnail().toImage();
            QCOMPARE(face.width(), 82);
            faces.insert(QByteArray(reinterpret_cast<const char*>(face.constBits()), int(face.sizeInBytes())));
        }
        QCOMPARE(presets.size(), 20);
        QCOMPARE(faces.size(), 20);

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
        shoot("editor-retouch.png");

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
        QCOMPARE(answerer.unexpectedCount(), 0);
        QCOMPARE(answerer.seen().size(), 2);
        QCOMPARE(answerer.seen().at(0).className, QStringLiteral("SaveDialog"));
        QCOMPARE(answerer.seen().at(1).text, QStringLiteral("保存文件成功！"));

        // Grading works pixel by pixel, so grading the crop of the photograph
        // equals cropping its grade: melo-grade, given the crop replayed on the
        // downloaded file, encodes the very matrix the save encoded.
        const QString cut = m_dir.filePath(QStringLiteral("cut/")) + QString::fromUtf8(kPhoto);
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
        QVERIFY(!saved.empty());
        QVERIFY(saved.rows < photo.rows || saved.cols < photo.cols);
        QVERIFY(samePixels(saved, decoded(gradeDir + QStringLiteral("/人像_astronaut.jpg"))));
    }
};

MELO_WEBENGINE_TEST_MAIN(TestPhotoRoad)
#include "tst_photoroad.moc"
