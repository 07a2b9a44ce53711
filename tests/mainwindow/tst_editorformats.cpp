// HEIC, AVIF, WebP and a camera's DNG in the real window: each opens upright
// at its size and saves; the add button offers them after its own first
// filter; a photograph dropped on the window opens (entering the editor from
// a page), anything else dropped changes nothing.
#include "EditorSession.h"
#include "FileBytes.h"
#include "FormatSamples.h"
#include "GlobalConstants.h"
#include "GuiTestMain.h"
#include "ImageHeaders.h"
#include "ModalAnswerer.h"
#include "PhotoFormats.h"
#include "SettingsStore.h"

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QWebEngineView>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace {

const char* const kOriginalFilter = "Image files(*.bmp *.jpg *.tiff *.png *JEPG);";

const QString kAdobeRgb = QStringLiteral("/usr/share/color/icc/compatibleWithAdobeRGB1998.icc");

cv::Mat coffee()
{
    return cv::imread(MELO_SAMPLES_DIR "/coffee.png", cv::IMREAD_COLOR);
}

// coffee.png (600 x 400) in the format named, stored with orientation 6 where
// the format has one (not BMP): upright it is 600 x 400 again. A HEIC or AVIF
// carries the Adobe RGB profile.
QString makePhoto(const QString& format)
{
    const QString dir = QDir::tempPath() + QStringLiteral("/photos/风光");
    QDir().mkpath(dir);
    const QString path = dir + QStringLiteral("/coffee.") + format;
    if (format == QLatin1String("heic") || format == QLatin1String("avif")) {
        HeifSample sample;
        sample.avif = format == QLatin1String("avif");
        sample.orientation = 6;
        sample.iccProfile = fileBytes(kAdobeRgb);
        return writeHeif(path, coffee(), sample) ? path : QString();
    }
    if (format == QLatin1String("bmp"))  // no orientation to store
        return cv::imwrite(path.toStdString(), coffee()) ? path : QString();
    return writeFormatSample(path, coffee(), 6) ? path : QString();
}

// Drags `urls` over `target` and drops them; true when the drop was taken.
bool dropOn(QWidget* target, const QList<QUrl>& urls)
{
    QMimeData mime;
    mime.setUrls(urls);
    const QPoint at = target->rect().center();
    QDragEnterEvent enter(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent drop(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(target, &drop);
    return drop.isAccepted();
}

// The formats whose decoders are slow or fussy: a phone's HEIC, a camera's RAW.
void slowFormatRows()
{
    QTest::addColumn<QString>("format");
    QTest::newRow("HEIC") << "heic";
    QTest::newRow("DNG") << "dng";
}

} // namespace

class TestEditorFormats : public QObject
{
    Q_OBJECT

    std::unique_ptr<EditorSession> m_session;
    EditorSession& s() { return *m_session; }

private slots:
    void initTestCase() { QVERIFY(installPresets()); }
    void init() { m_session = std::make_unique<EditorSession>(); }
    void cleanup() { m_session.reset(); }

    // Opened upright at its size and depth, saved as chosen: the profile,
    // the camera's details and 16 bits go along where the format holds them.
    void opensAndSaves_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<int>("depth");
        QTest::addColumn<QString>("saveFormat");
        QTest::addColumn<int>("savedDepth");
        QTest::newRow("HEIC") << "heic" << CV_8U << "JPG" << CV_8U;
        QTest::newRow("AVIF") << "avif" << CV_8U << "JPG" << CV_8U;
        QTest::newRow("WebP") << "webp" << CV_8U << "JPG" << CV_8U;
        QTest::newRow("BMP") << "bmp" << CV_8U << "JPG" << CV_8U;
        QTest::newRow("DNG") << "dng" << CV_16U << "JPG" << CV_8U;
        QTest::newRow("DNG as TIFF") << "dng" << CV_16U << "TIFF" << CV_16U;
    }
    void opensAndSaves()
    {
        QFETCH(QString, format);
        QFETCH(int, depth);
        QFETCH(QString, saveFormat);
        QFETCH(int, savedDepth);
        const QString path = makePhoto(format);
        QVERIFY(!path.isEmpty());
        QSignalSpy quick(&s().window(), &BrisaQT::photographPreviewShown);
        QVERIFY(s().open(path));
        // A RAW shows its half-size development while the whole is developed.
        QCOMPARE(quick.size(), format == "dng" ? 1 : 0);
        QCOMPARE(s().doc().m_filePath, path);
        QCOMPARE(s().doc().m_srcMat.cols, 600);
        QCOMPARE(s().doc().m_srcMat.rows, 400);
        QCOMPARE(s().doc().m_srcMat.depth(), depth);
        QCOMPARE(s().doc().m_showMat.cols, 1200);
        QCOMPARE(s().doc().m_sceneIndex, 4);  // "风光" in the path

        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);
        setting st = interactiveSave(s().saveFolder(), "coffee", saveFormat);
        s().window().start_timer_event(st);
        QVERIFY(answerer.waitAllAnswered(20000));
        QCOMPARE(answerer.seen().value(0).text, QStringLiteral("保存文件成功！"));
        const QString savedPath = s().saveFolder() + (saveFormat == "JPG" ? "/coffee.jpg" : "/coffee.tiff");
        const cv::Mat saved = cv::imread(savedPath.toStdString(), cv::IMREAD_UNCHANGED);
        QCOMPARE(saved.cols, 600);
        QCOMPARE(saved.rows, 400);
        QCOMPARE(saved.depth(), savedDepth);
        const double difference = meanColourDifference(saved, coffee());
        QVERIFY2(difference < 3.0, qPrintable(QString::number(difference)));
        const std::optional<ImageHeader> header = probeImageHeader(fileBytes(savedPath));
        QVERIFY(header);
        if (format == "heic" || format == "avif")
            QCOMPARE(header->iccProfile, fileBytes(kAdobeRgb));
        if (format == "dng" && saveFormat == "JPG")
            QVERIFY(header->exifSegment.contains("Test Body 24") && header->exifSegment.contains("Melo Optics"));
    }

    // Developing a camera's RAW file or decoding a HEIC takes a while: the
    // window's timers keep running meanwhile, and the editor says what it is
    // opening, with a busy cursor.
    void slowOpenKeepsTheWindowAlive_data() { slowFormatRows(); }
    void slowOpenKeepsTheWindowAlive()
    {
        QFETCH(QString, format);
        const QString dir = QDir::tempPath() + QStringLiteral("/photos/风光");
        const QString path = dir + QStringLiteral("/large.") + format;
        cv::Mat large;
        cv::resize(coffee(), large, cv::Size(3000, 2000), 0, 0, cv::INTER_CUBIC);
        QVERIFY(writeFormatSample(path, large, 1));

        BrisaQT& window = s().window();
        BusyWatch watch(s(), [&] { return window.isOpening(); }, "large." + format);
        QSignalSpy ended(&window, &BrisaQT::photographOpenEnded);
        window.openAdjustment(path);
        QVERIFY(ended.wait(60000));
        QCOMPARE(ended.constLast().at(1).toBool(), true);
        QVERIFY2(watch.ticks() >= 5, qPrintable(QString::number(watch.ticks())));
        QVERIFY(watch.shownBusy());
        QCOMPARE(s().doc().m_srcMat.cols, 3000);
        QVERIFY(s().find<QWidget>("myWidget")->cursor().shape() != Qt::BusyCursor);
    }

    // A cut-off HEIC or RAW chosen with the add button: the warning of an
    // unreadable file, and the photograph already open stays.
    void unreadable_data() { slowFormatRows(); }
    void unreadable()
    {
        QFETCH(QString, format);
        const QString webp = makePhoto(QStringLiteral("webp"));
        QVERIFY(s().open(webp));
        const qint64 shown = s().find<QLabel>("imageView")->pixmap(Qt::ReturnByValue).cacheKey();
        const QString cut = makePhoto(format);
        QVERIFY(QFile::resize(cut, QFileInfo(cut).size() / 2));

        ModalAnswerer answerer;
        answerer.chooseFile(cut);
        answerer.answer(QMessageBox::Ok);
        QSignalSpy ended(&s().window(), &BrisaQT::photographOpenEnded);
        s().window().clickedAddBtn();
        QVERIFY(answerer.waitAllAnswered(30000));
        QCOMPARE(ended.size(), 1);
        QCOMPARE(ended.at(0).at(1).toBool(), false);
        QCOMPARE(answerer.seen().value(1).text, QStringLiteral("打开图片失败!"));
        QCOMPARE(s().doc().m_filePath, webp);
        QCOMPARE(s().doc().m_srcMat.cols, 600);
        QCOMPARE(s().find<QLabel>("imageView")->pixmap(Qt::ReturnByValue).cacheKey(), shown);
    }

    // The product's own filter stays first and selected, exactly; the
    // photographs and all files follow.
    void addButtonFilters()
    {
        const QString heic = makePhoto(QStringLiteral("heic"));
        ModalAnswerer answerer;
        QStringList filters;
        QString selected;
        answerer.handle([&](QWidget* widget) {
            auto* dialog = qobject_cast<QFileDialog*>(widget);
            filters = dialog->nameFilters();
            selected = dialog->selectedNameFilter();
            if (QWidget* focus = dialog->focusWidget())
                focus->clearFocus();  // else the name field keeps its text
            dialog->selectFile(heic);
            QMetaObject::invokeMethod(dialog, "accept");
        });
        s().window().clickedAddBtn();
        QVERIFY(answerer.waitAllAnswered());
        QCOMPARE(filters, QStringList{QString::fromUtf8(kOriginalFilter)} + photoFileFilters());
        QCOMPARE(selected, QString::fromUtf8(kOriginalFilter));
        for (const char* pattern : {"*.heic", "*.HEIC", "*.avif", "*.webp", "*.jpeg", "*.tif", "*.dng", "*.NEF", "*.cr3"})
            QVERIFY2(filters.value(1).contains(QLatin1String(pattern) + QLatin1Char(' ')) ||
                     filters.value(1).contains(QLatin1String(pattern) + QLatin1Char(')')), pattern);
        QCOMPARE(filters.value(2), QStringLiteral("所有文件 (*)"));
        QTRY_COMPARE(s().doc().m_filePath, heic);  // opened in the background
    }

    // Dropped on the home page, a photograph enters the editor (a download
    // folder asked for first when none is stored) and opens;
    // a text file, two photographs or a folder are refused with no trace.
    void drop()
    {
        const QString dng = makePhoto(QStringLiteral("dng"));
        const QString webp = makePhoto(QStringLiteral("webp"));
        const QString text = QDir::tempPath() + QStringLiteral("/notes.jpg");
        QFile file(text);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("just some words\n") > 0);
        file.close();

        ModalAnswerer answerer;
        answerer.answer(QMessageBox::Yes);  // leaving the editor for the home page
        s().find<QAbstractButton>("repairBtn")->click();
        QVERIFY(answerer.waitAllAnswered());
        QWidget* homeView = nullptr;
        for (QWebEngineView* view : s().window().findChildren<QWebEngineView*>()) {
            if (view->isVisible())
                homeView = view;
        }
        QVERIFY(homeView && !s().find<QWidget>("myWidget")->isVisible());

        const QUrl dngUrl = QUrl::fromLocalFile(dng);
        for (const QList<QUrl>& refused : {QList<QUrl>{QUrl::fromLocalFile(text)}, QList<QUrl>{dngUrl, QUrl::fromLocalFile(webp)},
                                           QList<QUrl>{QUrl::fromLocalFile(QDir::tempPath())}, QList<QUrl>{QUrl("https://example.org/a.jpg")}}) {
            QVERIFY(!dropOn(homeView, refused));
            QVERIFY(!dropOn(&s().window(), refused));
        }
        QTest::qWait(50);
        QVERIFY(s().doc().m_filePath.isEmpty() && !s().find<QWidget>("myWidget")->isVisible());

        // With no download folder stored, entering the editor asks for one first.
        removeSettingValue(kProductKey, kDownLoadPath);
        answerer.answer(QMessageBox::Yes);
        const QString folder = s().saveFolder();
        answerer.handle([&answerer, folder](QWidget* dialog) {
            answerer.chooseFile(folder);
            dialog->findChild<QPushButton*>("openFileBtn")->click();
            dialog->findChild<QPushButton*>("okBtn")->click();
        });
        QVERIFY(dropOn(homeView, {dngUrl}));
        QVERIFY(answerer.waitAllAnswered());
        QCOMPARE(answerer.seen().value(1).text, QStringLiteral("请先设置下文件保存路径!"));
        QCOMPARE(answerer.seen().value(2).className, QStringLiteral("SettingDialog"));
        QCOMPARE(QDir(readSettingValue(kProductKey, kDownLoadPath)).canonicalPath(), QDir(folder).canonicalPath());
        QTRY_COMPARE(s().doc().m_filePath, dng);
        QVERIFY(s().find<QWidget>("myWidget")->isVisible());
        QCOMPARE(s().doc().m_srcMat.cols, 600);

        QVERIFY(dropOn(s().find<QWidget>("imageView"), {QUrl::fromLocalFile(webp)}));
        QTRY_COMPARE(s().doc().m_filePath, webp);
        QCOMPARE(answerer.unexpectedCount(), 0);
    }
};

MELO_WEBENGINE_TEST_MAIN(TestEditorFormats)
#include "tst_editorformats.moc"
